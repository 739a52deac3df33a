#include <CLI/CLI.hpp>
#include <array>
#include <iostream>
#include <memory>
#include <string>

#include "entry/cli/command.h"
#include "entry/cli/component_folder.h"
#include "history/restore_point.h"
#include "history/runs.h"
#include "history/written_log.h"
#include "text/shown_text.h"

namespace vlout::entry::cli {
namespace {

using history::RunRecord;

// In the order of history::RunState.
constexpr std::array<const char*, 5> kStates{"끝나지 않음", "완료", "중지", "자료 없음", "실패"};

std::string wayBack(const history::Runs& runs, const RunRecord& run) {
  if (run.undoneBy != 0) return "작업 " + std::to_string(run.undoneBy) + "에서 되돌림";
  if (!run.wrote) return "바뀐 것 없음";
  const bool kept = history::RestorePoint(runs.folderOf(run.number)).exists();
  return kept ? "되돌릴 수 있음" : "복원 지점 지워짐";
}

// A line for each run, the newest last.
void printHistory(const std::filesystem::path& folder, std::ostream& out, std::ostream& errors) {
  const history::Runs runs(folder);
  const auto list = runs.list();
  if (list.empty()) errors << text::onOneLine(folder.string()) << ": 아직 작업이 없습니다.\n";
  for (RunRecord run : list) {
    // One that was killed could not say what it had done.
    if (run.state == history::RunState::Unfinished && run.wrote) {
      const history::RestorePoint point(runs.folderOf(run.number));
      run.text = history::Written::read(point.writtenLog()).counts();
    }
    out << run.number << '\t' << text::onOneLine(run.started) << '\t' << text::onOneLine(run.mode);
    if (!run.range.empty()) out << ' ' << text::onOneLine(run.range);
    out << '\t' << kStates.at(static_cast<std::size_t>(run.state)) << '\t'
        << text::onOneLine(run.text) << '\t' << wayBack(runs, run) << '\n';
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
