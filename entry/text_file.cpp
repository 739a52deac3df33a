#include "entry/text_file.h"

#include "text/code_page.h"
#include "text/file_path.h"
#include "text/language.h"
#include "text/regular_file.h"
#include "text/utf8.h"

namespace vlout::entry {

std::string readTextFile(const std::filesystem::path& file) {
  std::string bytes = text::readRegularFile(file);
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  const bool marked = bytes.starts_with(kMark);
  if (marked) bytes.erase(0, kMark.size());
  // A short Korean text may look like UTF-8; hardly any UTF-8 text of Korean is in the code page.
  auto korean = marked ? std::nullopt : text::fromCodePage949(bytes);
  if (korean) return *std::move(korean);
  if (text::isValidUtf8(bytes)) return bytes;
  throw EncodingError(text::say("%1: 코드 페이지 949도 UTF-8도 아닌 파일입니다",
                                "%1: neither code page 949 nor UTF-8", {text::pathText(file)}));
}

}  // namespace vlout::entry
