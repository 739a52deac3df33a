#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>

#include "entry/cli/command.h"
#include "entry/cli/component_folder.h"
#include "entry/cli/convert_jet.h"
#include "entry/cli/terminal.h"
#include "text/language.h"
#include "text/shown_text.h"

namespace vlout::entry::cli {
namespace {

struct Arguments {
  std::string file;
  std::string folder;
};

}  // namespace

void addConvertCommand(CLI::App& app, int& status) {
  CLI::App* const command = app.add_subcommand(
      "convert-jet", text::say("Jet(Access) 데이터베이스를 읽어 새 구성 요소 폴더를 만듭니다.",
                               "Makes a new component folder from a Jet (Access) database."));
  const auto arguments = std::make_shared<Arguments>();
  command
      ->add_option("file", arguments->file,
                   text::say("Jet 파일. 읽기만 합니다.", "The Jet file. It is only read."))
      ->required();
  addFolderOption(*command, arguments->folder);
  onGiven(*command, status, [arguments](std::ostream& out) {
    const auto folder = componentFolder(arguments->folder);
    convertJet(arguments->file, folder, out, handleInterrupts());
    out << text::onOneLine(folder.string()) << '\n';
  });
}

}  // namespace vlout::entry::cli
