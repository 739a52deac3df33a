#include "text/regular_file.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#ifdef _WIN32
#include <fstream>
#include <iterator>
#else
#include "posix/file_descriptor.h"
#endif

#include "text/file_path.h"
#include "text/language.h"

namespace vlout::text {
namespace {

class NotRegular : public std::error_category {
 public:
  [[nodiscard]] const char* name() const noexcept override { return "file"; }
  [[nodiscard]] std::string message(int) const override {
    return say("보통 파일이 아닙니다", "not a regular file");
  }
};

[[noreturn]] void fail(const std::filesystem::path& file, int code) {
  throw std::system_error(code, std::generic_category(), pathText(file));
}

[[noreturn]] void failAsNotRegular(const std::filesystem::path& file) {
  static const NotRegular category;
  throw std::system_error(1, category, pathText(file));
}

}  // namespace

#ifdef _WIN32

std::string readRegularFile(const std::filesystem::path& file, std::size_t largest) {
  std::ifstream stream(file, std::ios::binary);
  const int code = errno;
  std::error_code none;
  if (std::filesystem::exists(file, none) && !std::filesystem::is_regular_file(file, none)) {
    failAsNotRegular(file);
  }
  if (!stream) fail(file, code != 0 ? code : EIO);
  if (std::filesystem::file_size(file) > largest) fail(file, EFBIG);
  return {std::istreambuf_iterator<char>(stream), {}};
}

#else

std::string readRegularFile(const std::filesystem::path& file, std::size_t largest) {
  const posix::FileDescriptor opened(posix::openRegular(file.c_str()));
  struct stat status {};
  if (opened.get() < 0 && errno == posix::kNotRegular) failAsNotRegular(file);
  if (opened.get() < 0 || ::fstat(opened.get(), &status) != 0) fail(file, errno);
  std::string bytes;
  constexpr std::size_t kPiece = std::size_t{64} << 10;
  std::size_t next = std::min(static_cast<std::size_t>(status.st_size), largest) + 1;
  bytes.reserve(next + kPiece);
  while (true) {  // the size that is told may be wrong
    const std::size_t filled = bytes.size();
    bytes.resize(filled + next);
    const ssize_t count = ::read(opened.get(), bytes.data() + filled, next);
    if (count < 0) fail(file, errno);
    bytes.resize(filled + static_cast<std::size_t>(count));
    if (count == 0) return bytes;
    if (bytes.size() > largest) fail(file, EFBIG);
    next = kPiece;
  }
}

#endif

}  // namespace vlout::text
