#include "tests/scenarios/records.h"

#include <algorithm>
#include <fstream>

#include "text/ascii.h"

namespace vlout::tests {
namespace {

constexpr std::pair<std::string_view, std::string_view> kEscapes[] = {
    {"\\", "\\\\"}, {"\t", "\\t"}, {"\n", "\\n"}, {"\r", "\\r"}, {{"\0", 1}, "\\0"}};

std::string unescape(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool escaped = text[i] == '\\' && i + 1 < text.size();
    const char c = escaped ? text[++i] : text[i];
    const std::size_t which = escaped ? std::string_view("tnr0").find(c) : std::string_view::npos;
    result += which < 4 ? "\t\n\r"[which] : c;
  }
  return result;
}

}  // namespace

Record::Record(std::string_view line) {
  while (!line.empty()) {
    const std::string_view pair = line.substr(0, line.find('\t'));
    line.remove_prefix(std::min(pair.size() + 1, line.size()));
    const std::size_t equals = pair.find('=');
    if (equals != std::string_view::npos) {
      add(pair.substr(0, equals), unescape(pair.substr(equals + 1)));
    }
  }
}

std::string Record::line() const {
  std::string result;
  for (const auto& [key, value] : pairs) {
    std::string escaped = value;
    for (const auto& [plain, written] : kEscapes)
      escaped = text::replaceAll(escaped, plain, written);
    result.append(result.empty() ? "" : "\t").append(key).append("=").append(escaped);
  }
  return result;
}

std::string Record::get(std::string_view key) const {
  const auto found =
      std::find_if(pairs.begin(), pairs.end(), [&](const Pair& pair) { return pair.first == key; });
  return found == pairs.end() ? "" : found->second;
}

void Record::set(std::string_view key, std::string_view value) {
  const auto found =
      std::find_if(pairs.begin(), pairs.end(), [&](const Pair& pair) { return pair.first == key; });
  if (found == pairs.end()) {
    add(key, value);
  } else {
    found->second = value;
  }
}

std::vector<Record> readRecords(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::vector<Record> records;
  for (std::string line; std::getline(stream, line);) {
    if (!line.empty()) records.emplace_back(line);
  }
  return records;
}

void writeRecords(const std::filesystem::path& file, const std::vector<Record>& records) {
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  for (const Record& record : records) stream << record.line() << '\n';
}

}  // namespace vlout::tests
