#include "text/regular_file.h"

#include <cerrno>
#include <system_error>

#ifdef _WIN32
#include <fstream>
#include <iterator>
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "posix/file_descriptor.h"
#endif

#include "text/file_path.h"

namespace vlout::text {
namespace {

constexpr std::size_t kLargest = std::size_t{8} << 20;

class NotRegular : public std::error_category {
 public:
  [[nodiscard]] const char* name() const noexcept override { return "file"; }
  [[nodiscard]] std::string message(int) const override { return "보통 파일이 아닙니다"; }
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

std::string readRegularFile(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  const int code = errno;
  std::error_code none;
  if (std::filesystem::exists(file, none) && !std::filesystem::is_regular_file(file, none)) {
    failAsNotRegular(file);
  }
  if (!stream) fail(file, code != 0 ? code : EIO);
  if (std::filesystem::file_size(file) > kLargest) fail(file, EFBIG);
  return {std::istreambuf_iterator<char>(stream), {}};
}

#else

std::string readRegularFile(const std::filesystem::path& file) {
  const posix::FileDescriptor opened(
      ::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat status {};
  if (opened.get() < 0 || ::fstat(opened.get(), &status) != 0) fail(file, errno);
  if (!S_ISREG(status.st_mode)) failAsNotRegular(file);
  std::string bytes;
  constexpr std::size_t kPiece = std::size_t{64} << 10;
  while (true) {  // the size that is told may be wrong
    const std::size_t filled = bytes.size();
    bytes.resize(filled + kPiece);
    const ssize_t count = ::read(opened.get(), bytes.data() + filled, kPiece);
    if (count < 0) fail(file, errno);
    bytes.resize(filled + static_cast<std::size_t>(count));
    if (count == 0) return bytes;
    if (bytes.size() > kLargest) fail(file, EFBIG);
  }
}

#endif

}  // namespace vlout::text
