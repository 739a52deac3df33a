#include "entry/cli/command.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <utility>

#include "text/language.h"

namespace vlout::entry::cli {

void addFolderOption(CLI::App& command, std::string& folder) {
  command.add_option(
      "--folder", folder,
      text::say("구성 요소 폴더 (기본값: $VELMORA_FOLDER, 없으면 ~/.local/share/velmora)",
                "Component folder (default: $VELMORA_FOLDER, or else ~/.local/share/velmora)"));
}

void addContactsOption(CLI::App& command, std::string& contacts) {
  command.add_option(
      "--contacts", contacts,
      text::say(
          "vCard 연락처 폴더, 또는 데스크톱 주소록: book: 은 기본 주소록, book:이름, book:UID "
          "(기본값: 지난 작업 때의 것, 처음에는 구성 요소 폴더의 contacts)",
          "Folder of vCards, or an address book of the desktop: book: for the default one, "
          "book:NAME, book:UID "
          "(default: those of the last run, at first contacts in the component folder)"));
}

void addJsonFlag(CLI::App& command, bool& json) {
  command.add_flag(
      "--json", json,
      text::say("프로그램이 읽을 수 있게 JSON으로 씁니다.", "Prints JSON for scripts."));
}

void onGiven(CLI::App& command, int& status, std::function<void(std::ostream&)> print) {
  command.callback([print = std::move(print), &status] {
    print(std::cout);
    std::cout.flush();
    status = std::cout ? kDone : kRefused;
  });
}

}  // namespace vlout::entry::cli
