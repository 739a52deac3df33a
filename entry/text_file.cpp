#include "entry/text_file.h"

#include <cerrno>
#include <fstream>
#include <iterator>
#include <system_error>

#include "text/code_page.h"
#include "text/file_path.h"
#include "text/utf8.h"

namespace vlout::entry {

std::string readBytes(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream || std::filesystem::is_directory(file)) {
    const int code = stream ? EISDIR : errno != 0 ? errno : EIO;
    throw std::system_error(code, std::generic_category(), text::pathText(file));
  }
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::string readTextFile(const std::filesystem::path& file) {
  std::string bytes = readBytes(file);
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  const bool marked = bytes.starts_with(kMark);
  if (marked) bytes.erase(0, kMark.size());
  // A short Korean text may look like UTF-8; hardly any UTF-8 text of Korean is in the code page.
  auto korean = marked ? std::nullopt : text::fromCodePage949(bytes);
  if (korean) return *std::move(korean);
  if (text::isValidUtf8(bytes)) return bytes;
  throw EncodingError(text::pathText(file) + ": 코드 페이지 949도 UTF-8도 아닌 파일입니다");
}

}  // namespace vlout::entry
