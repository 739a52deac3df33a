#include "entry/cli/window_command.h"

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <unistd.h>

#include "entry/cli/command.h"
#include "entry/cli/component_folder.h"
#include "entry/cli/contacts_place.h"
#include "text/language.h"

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
  throw std::runtime_error(text::say("%1: 창을 보여 주는 프로그램이 없습니다",
                                     "%1: the program that shows the window is not installed",
                                     {kProgram}));
}

void openWindow(const std::string& given, const std::string& contacts) {
  if (!hasDisplay()) {
    throw std::runtime_error(
        text::say("창을 보여 줄 화면이 없습니다. 터미널의 명령은 vloutsync --help 에 있습니다.",
                  "There is no display to show a window on. vloutsync --help lists the commands "
                  "for a terminal."));
  }
  const auto folder = given.empty() ? componentFolder(given) : existingFolder(given);
  if (given.empty() && !std::filesystem::exists(folder)) initializeFolder(folder);
  showWindow(folder, contactsPlace(contacts, folder));
}

void addWindowCommand(CLI::App& app, int& status) {
  CLI::App* const command = app.add_subcommand(
      "window", text::say("창을 엽니다. 명령이 없을 때도 그렇습니다.",
                          "Opens the window. The same happens without a command."));
  struct Arguments {
    std::string folder;
    std::string contacts;
  };
  const auto arguments = std::make_shared<Arguments>();
  addFolderOption(*command, arguments->folder);
  addContactsOption(*command, arguments->contacts);
  command->callback([arguments, &status] {
    openWindow(arguments->folder, arguments->contacts);
    status = kDone;
  });
}

}  // namespace vlout::entry::cli
