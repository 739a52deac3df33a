#include "entry/cli/window_command.h"

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <unistd.h>

namespace vlout::entry::cli {
namespace {

constexpr const char* kProgram = "vloutsync-window";

bool isSet(const char* variable) {
  const char* const value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

}  // namespace

bool hasDisplay() {
  return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY") || isSet("QT_QPA_PLATFORM");
}

void showWindow(const std::filesystem::path& folder, const std::filesystem::path& contacts) {
  const auto here = std::filesystem::read_symlink("/proc/self/exe").parent_path();
  for (const auto& place : {here / kProgram, here.parent_path() / "lib/vloutsync" / kProgram}) {
    execl(place.c_str(), place.c_str(), folder.c_str(), contacts.c_str(), nullptr);
  }
  throw std::runtime_error(std::string(kProgram) + ": 창을 보여 주는 프로그램이 없습니다");
}

}  // namespace vlout::entry::cli
