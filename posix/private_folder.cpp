#include "posix/private_folder.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <unistd.h>

#include "text/ascii.h"
#include "text/language.h"

namespace vlout::posix {
namespace {

constexpr std::string_view kPrefix = "vloutsync-";

// A preview that was killed may have left somebody's cards behind.
void removeLeftovers(const std::filesystem::path& where) {
  std::error_code next;
  for (const auto& entry : std::filesystem::directory_iterator(where, next)) {
    const std::string name = entry.path().filename().string();
    if (!name.starts_with(kPrefix)) continue;
    const std::string id = name.substr(kPrefix.size(), name.rfind('-') - kPrefix.size());
    const auto process = text::parseInteger(id);
    const bool isGone =
        process && *process > 0 && ::kill(static_cast<pid_t>(*process), 0) != 0 && errno == ESRCH;
    if (isGone) std::filesystem::remove_all(entry.path(), next);  // only this user's own will go
  }
}

}  // namespace

PrivateFolder::PrivateFolder() {
  std::error_code error;
  const auto where = std::filesystem::temp_directory_path(error);
  if (!error) removeLeftovers(where);
  std::string name =
      (where / (std::string(kPrefix) + std::to_string(::getpid()) + "-XXXXXX")).string();
  if (error || ::mkdtemp(name.data()) == nullptr) {
    throw std::runtime_error(text::say("임시 폴더를 만들 수 없습니다: %1: %2",
                                       "cannot make a temporary folder: %1: %2",
                                       {name, error ? error.message() : std::strerror(errno)}));
  }
  path_ = name;
}

PrivateFolder::~PrivateFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace vlout::posix
