#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>

#include "entry/cli/command.h"
#include "entry/cli/component_folder.h"
#include "text/language.h"
#include "text/shown_text.h"

namespace vlout::entry::cli {

void addInitCommand(CLI::App& app, int& status) {
  CLI::App* const command =
      app.add_subcommand("init", text::say("빈 데이터베이스로 새 구성 요소 폴더를 만듭니다.",
                                           "Makes a new component folder with an empty database."));
  const auto given = std::make_shared<std::string>();
  addFolderOption(*command, *given);
  onGiven(*command, status, [given](std::ostream& out) {
    const auto folder = componentFolder(*given);
    initializeFolder(folder);
    out << text::onOneLine(folder.string()) << '\n';
  });
}

}  // namespace vlout::entry::cli
