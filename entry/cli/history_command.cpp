#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <string>

#include "entry/cli/command.h"
#include "entry/cli/component_folder.h"
#include "entry/cli/run_lines.h"
#include "text/shown_text.h"

namespace vlout::entry::cli {
namespace {

// A line for each run, the newest last.
void printHistory(const std::filesystem::path& folder, std::ostream& out, std::ostream& errors) {
  const auto lines = runLines(history::Runs(folder));
  if (lines.empty()) errors << text::onOneLine(folder.string()) << ": 아직 작업이 없습니다.\n";
  for (const RunLine& run : lines) {
    out << run.number << '\t' << text::onOneLine(run.started) << '\t'
        << text::onOneLine(run.transfer) << '\t' << run.state << '\t' << text::onOneLine(run.counts)
        << '\t' << run.wayBack << '\n';
  }
}

}  // namespace

void addHistoryCommand(CLI::App& app, int& status) {
  CLI::App* const command = app.add_subcommand("history", "지금까지의 작업을 보여 줍니다.");
  const auto folder = std::make_shared<std::string>();
  addFolderOption(*command, *folder);
  command->callback([folder, &status] {
    printHistory(componentFolder(*folder), std::cout, std::cerr);
    status = kDone;
  });
}

}  // namespace vlout::entry::cli
