#include <CLI/CLI.hpp>
#include <iostream>
#include <limits>
#include <memory>
#include <string>

#include "entry/cli/command.h"
#include "entry/cli/component_folder.h"
#include "entry/cli/run_lines.h"
#include "text/language.h"
#include "text/shown_text.h"

namespace vlout::entry::cli {
namespace {

void print(const RunLine& run, std::ostream& out) {
  out << run.number << '\t' << text::onOneLine(run.started) << '\t' << text::onOneLine(run.transfer)
      << '\t' << run.state << '\t' << text::onOneLine(run.counts) << '\t' << run.wayBack << '\n';
}

// A line for each run, the newest last.
void printHistory(const std::filesystem::path& folder, std::ostream& out, std::ostream& errors) {
  const auto lines = runLines(history::Runs(folder));
  if (lines.empty()) {
    errors << text::say("%1: 아직 작업이 없습니다.\n", "%1: no runs yet.\n",
                        {text::onOneLine(folder.string())});
  }
  for (const RunLine& run : lines) print(run, out);
}

// What one run has shown and changed.
void printRun(const std::filesystem::path& folder, int number, std::ostream& out) {
  const auto report = history::reportOf(folder, number);
  for (const RunLine& run : runLines(history::Runs(folder))) {
    if (run.number == number) print(run, out);
  }
  for (const auto& line : report.lines) {
    out << line[0] << '\t' << line[1] << '\t' << line[2] << '\n';
  }
  for (const ChangeLine& line : changeLines(report)) {
    out << text::onOneLine(line.who) << '\t' << line.how;
    if (!line.what.empty()) out << '\t' << text::onOneLine(line.what);
    out << '\n';
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
      printHistory(componentFolder(*folder), std::cout, std::cerr);
    } else {
      printRun(componentFolder(*folder), *run, std::cout);
    }
    status = kDone;
  });
}

}  // namespace vlout::entry::cli
