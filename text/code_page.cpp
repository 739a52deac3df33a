#include "text/code_page.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <iconv.h>
#include <memory>
#include <stdexcept>
#endif

namespace vlout::text {

#ifdef _WIN32

namespace {

constexpr UINT kKorean = 949;

// From one narrow code page to another by way of UTF-16, strictly.
std::optional<std::string> convert(std::string_view text, UINT from, UINT to) {
  if (text.empty()) return std::string();
  const int length = static_cast<int>(text.size());
  const int wideLength =
      MultiByteToWideChar(from, MB_ERR_INVALID_CHARS, text.data(), length, nullptr, 0);
  if (wideLength == 0) return std::nullopt;
  std::wstring wide(static_cast<std::size_t>(wideLength), L'\0');
  MultiByteToWideChar(from, MB_ERR_INVALID_CHARS, text.data(), length, wide.data(), wideLength);
  const bool toKorean = to == kKorean;
  const DWORD flags = toKorean ? WC_NO_BEST_FIT_CHARS : WC_ERR_INVALID_CHARS;
  BOOL replaced = FALSE;
  BOOL* const replacedOut = toKorean ? &replaced : nullptr;
  const int size =
      WideCharToMultiByte(to, flags, wide.data(), wideLength, nullptr, 0, nullptr, nullptr);
  std::string result(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(to, flags, wide.data(), wideLength, result.data(), size, nullptr,
                      replacedOut);
  if (size == 0 || replaced != FALSE) return std::nullopt;
  return result;
}

}  // namespace

std::optional<std::string> fromCodePage949(std::string_view text) {
  return convert(text, kKorean, CP_UTF8);
}

std::optional<std::string> toCodePage949(std::string_view text) {
  return convert(text, CP_UTF8, kKorean);
}

#else

namespace {

class Converter {
 public:
  Converter(const char* to, const char* from) : handle_(iconv_open(to, from)) {
    if (handle_ == kFailed) throw std::runtime_error("iconv knows no code page 949");
  }
  ~Converter() { iconv_close(handle_); }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  std::optional<std::string> convert(std::string_view text) {
    iconv(handle_, nullptr, nullptr, nullptr, nullptr);
    std::string source(text);
    std::string result(text.size() * 4 + 4, '\0');
    char* in = source.data();
    char* out = result.data();
    std::size_t inLeft = source.size();
    std::size_t outLeft = result.size();
    if (iconv(handle_, &in, &inLeft, &out, &outLeft) != 0) return std::nullopt;
    result.resize(result.size() - outLeft);
    return result;
  }

 private:
  inline static const iconv_t kFailed = reinterpret_cast<iconv_t>(-1);  // NOLINT: POSIX says so
  iconv_t handle_;
};

}  // namespace

std::optional<std::string> fromCodePage949(std::string_view text) {
  thread_local Converter converter("UTF-8", "CP949");
  return converter.convert(text);
}

std::optional<std::string> toCodePage949(std::string_view text) {
  thread_local Converter converter("CP949", "UTF-8");
  return converter.convert(text);
}

#endif

}  // namespace vlout::text
