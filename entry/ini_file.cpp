#include "entry/ini_file.h"

#define SI_NO_CONVERSION  // the narrow parser is all that is needed
#include <SimpleIni.h>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <system_error>

#include "text/ascii.h"
#include "text/code_page.h"
#include "text/utf8.h"

namespace vlout::entry {
namespace {

constexpr std::size_t kBufferCharacters = 254;

// Key names are ASCII, so the parser may work on UTF-8 bytes.
void parse(CSimpleIniA& ini, const std::filesystem::path& file) {
  ini.SetUnicode(true);
  ini.SetSpaces(false);
  ini.SetQuotes(true);
  std::string text;
  try {
    text = readTextFile(file);
  } catch (const std::system_error&) {
    return;  // a missing or unreadable file holds no keys, which is no error
  }
  ini.LoadData(text);
}

bool replaceFile(const std::filesystem::path& file, const std::string& content) {
  std::filesystem::path temporary = file;
  temporary += ".tmp";
  std::error_code error;
  std::ofstream stream(temporary, std::ios::binary | std::ios::trunc);
  stream << content;
  stream.close();
  if (stream) std::filesystem::rename(temporary, file, error);
  if (stream && !error) return true;
  std::filesystem::remove(temporary, error);
  return false;
}

}  // namespace

std::string readTextFile(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::string bytes;
  if (stream && !std::filesystem::is_directory(file)) {
    bytes.assign(std::istreambuf_iterator<char>(stream), {});
  } else {
    const int code = errno != 0 ? errno : EISDIR;
    throw std::system_error(code, std::generic_category(), file.string());
  }
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  const bool marked = bytes.starts_with(kMark);
  if (marked) bytes.erase(0, kMark.size());
  // A short Korean text may look like UTF-8; hardly any UTF-8 text of Korean is in the code page.
  auto korean = marked ? std::nullopt : text::fromCodePage949(bytes);
  if (korean) return *std::move(korean);
  if (text::isValidUtf8(bytes)) return bytes;
  throw EncodingError(file.string() + ": 코드 페이지 949도 UTF-8도 아닌 파일입니다");
}

std::string IniFile::read(std::string_view section, std::string_view key) const {
  CSimpleIniA ini;
  parse(ini, file_);
  const char* const value =
      ini.GetValue(std::string(section).c_str(), std::string(key).c_str(), "");
  return std::string(value).substr(0, kBufferCharacters);
}

bool IniFile::write(std::string_view section, const std::vector<Entry>& entries) const {
  CSimpleIniA ini;
  parse(ini, file_);
  for (const Entry& entry : entries) {
    ini.SetValue(std::string(section).c_str(), entry.key.c_str(), entry.value.c_str());
  }
  std::string text;
  ini.Save(text, false);
  text = text::replaceAll(text::replaceAll(text, "\r\n", "\n"), "\n", "\r\n");
  const auto korean = text::toCodePage949(text);
  return korean && replaceFile(file_, *korean);
}

}  // namespace vlout::entry
