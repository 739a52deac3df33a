#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>

#include "entry/cli/command.h"
#include "entry/cli/component_folder.h"
#include "sample/cards.h"
#include "text/language.h"
#include "text/shown_text.h"

namespace vlout::entry::cli {
namespace {

struct Arguments {
  std::string folder;
  int cards = 200;
  std::uint64_t seed = 1;
};

std::string exportList(const sample::SampleSelection& selection) {
  std::string list = std::to_string(selection.folder) + "\r\n";
  for (const std::int64_t card : selection.cards) list += std::to_string(card) + "\r\n";
  return list;
}

void makeSampleFolder(const std::filesystem::path& folder, const Arguments& arguments) {
  initializeFolder(folder, [&](store::Connection& connection) {
    return exportList(sample::fillWithSampleCards(
        connection, {.cards = arguments.cards, .seed = arguments.seed}));
  });
}

}  // namespace

void addSampleCommand(CLI::App& app, int& status) {
  CLI::App* const command =
      app.add_subcommand("sample", text::say("예제 명함이 든 새 구성 요소 폴더를 만듭니다.",
                                             "Makes a new component folder with sample cards."));
  const auto arguments = std::make_shared<Arguments>();
  addFolderOption(*command, arguments->folder);
  command->add_option("--cards", arguments->cards, text::say("명함 수", "Number of cards"))
      ->check(CLI::Range(0, 32767))
      ->required();
  command
      ->add_option(
          "--seed", arguments->seed,
          text::say("같은 값은 같은 명함을 만듭니다.", "The same seed makes the same cards."))
      ->capture_default_str();
  onGiven(*command, status, [arguments](std::ostream& out) {
    const auto folder = componentFolder(arguments->folder);
    makeSampleFolder(folder, *arguments);
    out << text::onOneLine(folder.string()) << '\n';
  });
}

}  // namespace vlout::entry::cli
