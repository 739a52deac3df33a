#include "entry/ini_file.h"

#include <algorithm>
#include <fstream>
#include <optional>
#include <system_error>

#include "entry/text_file.h"
#include "text/ascii.h"
#include "text/regular_file.h"
#include "text/trim.h"

namespace vlout::entry {
namespace {

constexpr std::size_t kBufferCharacters = 254;

using Lines = std::vector<std::string>;  // with their ends

Lines splitLines(std::string_view text) {
  Lines lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
    lines.emplace_back(text.substr(0, end));
    text.remove_prefix(end);
  }
  return lines;
}

std::string_view endOf(std::string_view line) {
  return line.ends_with("\r\n") ? "\r\n" : line.ends_with('\n') ? "\n" : "";
}

// The line without its end, and without the mark that an editor may put before the first one.
std::string_view contentOf(std::string_view line) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  line.remove_suffix(endOf(line).size());
  if (line.starts_with(kMark)) line.remove_prefix(kMark.size());
  return line;
}

std::string_view trimWhite(std::string_view text) {
  const auto isWhite = [](char c) { return c == ' ' || c == '\t'; };
  while (!text.empty() && isWhite(text.front())) text.remove_prefix(1);
  while (!text.empty() && isWhite(text.back())) text.remove_suffix(1);
  return text;
}

bool isSection(std::string_view line) {
  return trimWhite(contentOf(line)).starts_with('[');
}

// The first line after the section's heading; nothing if there is no such section.
std::optional<std::size_t> findSection(const Lines& lines, std::string_view section) {
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (!isSection(lines[i])) continue;
    const std::string_view line = trimWhite(contentOf(lines[i]));
    const std::string_view name = trimWhite(line.substr(1, line.find(']') - 1));
    if (text::equalsIgnoringAsciiCase(name, section)) return i + 1;
  }
  return std::nullopt;
}

// The line of a key in the section that begins at `start`.
std::optional<std::size_t> findKey(const Lines& lines, std::size_t start, std::string_view key) {
  for (std::size_t i = start; i < lines.size() && !isSection(lines[i]); ++i) {
    const std::size_t equals = lines[i].find('=');
    if (equals == std::string::npos) continue;
    const std::string_view name = trimWhite(std::string_view(lines[i]).substr(0, equals));
    if (text::equalsIgnoringAsciiCase(name, key)) return i;
  }
  return std::nullopt;
}

// Where a new key of the section goes: after its last line that is not blank.
std::size_t endOfSection(const Lines& lines, std::size_t start) {
  std::size_t end = start;
  for (std::size_t i = start; i < lines.size() && !isSection(lines[i]); ++i) {
    if (!trimWhite(contentOf(lines[i])).empty()) end = i + 1;
  }
  return end;
}

// A new line ends as the one before it, which gets a line end if it has none.
void insertLine(Lines& lines, std::size_t at, const std::string& content) {
  std::string_view end = "\r\n";
  if (at > 0) {
    std::string& before = lines[at - 1];
    if (endOf(before).empty()) before += end;
    end = endOf(before);
  }
  lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(at), content + std::string(end));
}

void setKey(Lines& lines, std::string_view section, const IniFile::Entry& entry) {
  auto start = findSection(lines, section);
  if (!start) {
    insertLine(lines, lines.size(), "[" + std::string(section) + "]");
    start = lines.size();
  }
  const std::string content = entry.key + "=" + entry.value;
  if (const auto place = findKey(lines, *start, entry.key)) {
    std::string& line = lines[*place];
    line = content + std::string(endOf(line));
  } else {
    insertLine(lines, endOfSection(lines, *start), content);
  }
}

bool replaceFile(const std::filesystem::path& file, const std::string& content) {
  std::filesystem::path temporary = file;
  temporary += ".tmp";
  std::error_code error;
  std::filesystem::remove(temporary, error);  // whatever it is
  std::ofstream stream(temporary, std::ios::binary | std::ios::trunc);
  stream << content;
  stream.close();
  const auto status = std::filesystem::status(file, error);
  if (std::filesystem::exists(status)) {
    std::filesystem::permissions(temporary, status.permissions(), error);
  }
  error.clear();
  if (stream) std::filesystem::rename(temporary, file, error);
  if (stream && !error) return true;
  std::filesystem::remove(temporary, error);
  return false;
}

}  // namespace

std::string IniFile::read(std::string_view section, std::string_view key) const {
  Lines lines;
  try {
    lines = splitLines(readTextFile(file_));
  } catch (const std::system_error&) {
    return {};  // a missing or unreadable file holds no keys, which is no error
  } catch (const EncodingError&) {
    return {};
  }
  const auto start = findSection(lines, section);
  const auto place = start ? findKey(lines, *start, key) : std::nullopt;
  if (!place) return {};
  const std::string_view line = contentOf(lines[*place]);
  std::string_view value = trimWhite(line.substr(line.find('=') + 1));
  const bool quoted = value.size() >= 2 && (value.front() == '"' || value.front() == '\'') &&
                      value.back() == value.front();
  if (quoted) value = value.substr(1, value.size() - 2);
  return std::string(value.substr(0, kBufferCharacters));
}

bool IniFile::write(std::string_view section, const std::vector<Entry>& entries) const {
  Lines lines;
  try {
    // Edited as bytes: names and values are ASCII in every encoding of such a file, and text in no
    // known encoding stays as it is.
    lines = splitLines(text::readRegularFile(file_));
  } catch (const std::system_error& error) {
    // A new file may be made only if there is none: an unreadable one has content.
    if (error.code() != std::errc::no_such_file_or_directory) return false;
  }
  std::ofstream writable;  // a file that is protected from writing keeps its values
  if (std::filesystem::exists(file_)) writable.open(file_, std::ios::binary | std::ios::app);
  if (!writable) return false;
  for (const Entry& entry : entries) setKey(lines, section, entry);
  std::string text;
  for (const std::string& line : lines) text += line;
  return replaceFile(file_, text);
}

}  // namespace vlout::entry
