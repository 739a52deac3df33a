#include <CLI/CLI.hpp>
#include <iostream>
#include <limits>
#include <memory>
#include <string>

#include "entry/cli/columns.h"
#include "entry/cli/command.h"
#include "entry/cli/component_folder.h"
#include "entry/cli/run_lines.h"
#include "text/language.h"
#include "text/shown_text.h"

namespace vlout::entry::cli {
namespace {

std::vector<std::string> cellsOf(const RunLine& run) {
  return {
      std::to_string(run.number), run.started, run.transfer, run.state, run.counts, run.wayBack};
}

// A line for each run, the newest last.
void printHistory(const std::filesystem::path& folder, std::ostream& out, std::ostream& errors) {
  const auto lines = runLines(history::Runs(folder));
  if (lines.empty()) {
    errors << text::say("%1: 아직 작업이 없습니다.\n", "%1: no runs yet.\n",
                        {text::onOneLine(folder.string())});
  }
  Columns columns(out);
  for (const RunLine& run : lines) columns.add(cellsOf(run));
}

// What one run has shown and changed.
void printRun(const std::filesystem::path& folder, int number, std::ostream& out) {
  const auto report = history::reportOf(folder, number);
  for (const RunLine& run : runLines(history::Runs(folder))) {
    if (run.number == number) Columns(out).add(cellsOf(run));
  }
  Columns lines(out);
  for (const auto& line : report.lines) lines.add({line.begin(), line.end()});
  for (const ChangeLine& line : changeLines(report)) {
    std::vector<std::string> cells{line.who, line.how};
    if (!line.what.empty()) cells.push_back(line.what);
    lines.add(std::move(cells));
  }
}

}  // namespace

void addHistoryCommand(CLI::App& app, int& status) {
  CLI::App* const command = app.add_subcommand(
      "history", text::say("지금까지의 작업을 보여 줍니다.", "Lists the runs so far."));
  const auto folder = std::make_shared<std::string>();
  const auto run = std::make_shared<int>(0);
  command
      ->add_option(
          "run", *run,
          text::say("작업 번호: 그 작업이 보여 준 줄과 바꾼 값",
                    "Number of a run, to see the lines it showed and the values it changed"))
      ->check(CLI::Range(1, std::numeric_limits<int>::max()));
  addFolderOption(*command, *folder);
  command->callback([folder, run, &status] {
    if (*run == 0) {
      printHistory(existingFolder(*folder), std::cout, std::cerr);
    } else {
      printRun(existingFolder(*folder), *run, std::cout);
    }
    status = kDone;
  });
}

}  // namespace vlout::entry::cli
