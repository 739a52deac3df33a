#include "entry/cli/notification.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vlout::entry::cli {

void notifyDesktop(const std::string& text) {
  std::string program = "notify-send";
  std::string name = "--app-name=VLOUTSync";
  std::string icon = "--icon=vloutsync";
  std::string title = "벨모라 - 아웃룩 연락처 교환";
  std::string body = text;
  char* arguments[]{program.data(), name.data(), icon.data(), title.data(), body.data(), nullptr};
  pid_t child = 0;
  if (posix_spawnp(&child, program.c_str(), nullptr, nullptr, arguments, environ) == 0) {
    waitpid(child, nullptr, 0);
  }
}

}  // namespace vlout::entry::cli
