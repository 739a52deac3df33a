#include "entry/cli/run_lines.h"

#include <array>
#include <exception>

#include "history/restore_point.h"
#include "history/written_log.h"
#include "transfer/pair_sides.h"

namespace vlout::entry::cli {
namespace {

using history::RunRecord;

// In the order of history::RunState.
constexpr std::array<const char*, 5> kStates{"끝나지 않음", "완료", "중지", "자료 없음", "실패"};
// In the order of history::Change.
constexpr std::array<const char*, 3> kPutBack{"되돌림", "삭제", "되살림"};
constexpr std::array<const char*, 3> kDone{"변경", "추가", "삭제"};

std::string wayBack(const history::Runs& runs, const RunRecord& run) {
  if (run.undoneBy != 0) return "작업 " + std::to_string(run.undoneBy) + "에서 되돌림";
  if (!run.wrote) return "바뀐 것 없음";
  const bool kept = history::RestorePoint(runs.folderOf(run.number)).exists();
  return kept ? "되돌릴 수 있음" : "복원 지점 지워짐";
}

}  // namespace

std::vector<RunLine> runLines(const history::Runs& runs) {
  std::vector<RunLine> lines;
  for (RunRecord run : runs.list()) {
    // One that was killed could not say what it had done.
    if (run.state == history::RunState::Unfinished && run.wrote) {
      try {
        run.text = history::RestorePoint(runs.folderOf(run.number)).written(run.state).counts();
      } catch (const std::exception&) {
        run.text.clear();  // an undo says what is wrong with it
      }
    }
    lines.push_back({.number = run.number,
                     .started = run.started,
                     .transfer = run.mode + (run.range.empty() ? "" : " " + run.range),
                     .state = kStates.at(static_cast<std::size_t>(run.state)),
                     .counts = run.text,
                     .wayBack = wayBack(runs, run)});
  }
  return lines;
}

std::vector<ChangeLine> changeLines(const history::RunReport& report) {
  std::vector<ChangeLine> lines;
  for (const auto& change : report.changes) {
    ChangeLine line{.who = change.kind + " " + change.who,
                    .how = kDone.at(static_cast<std::size_t>(change.change))};
    if (!change.caption.empty()) {
      line.what = change.caption + ": " + transfer::shownValue(change.before) + " → " +
                  transfer::shownValue(change.after);
    }
    lines.push_back(std::move(line));
  }
  return lines;
}

std::string wordOf(history::Change change) {
  return kPutBack.at(static_cast<std::size_t>(change));
}

std::string headingOf(const history::Undo& undo) {
  return "작업 " + std::to_string(undo.run().number) + "(" + undo.run().started + ", " +
         undo.run().mode + ") 전으로 되돌립니다.";
}

std::vector<UndoLine> undoLines(const history::Undo& undo) {
  std::vector<UndoLine> lines;
  for (const auto& row : undo.rows()) {
    lines.push_back(
        {.kind = std::string(nounOf(row.key)), .how = wordOf(row.change), .person = row.name});
  }
  const auto add = [&](const history::FileChange& file, const std::string& how) {
    lines.push_back({.kind = "연락처", .how = how, .person = file.person, .file = file.name});
  };
  for (const auto& row : undo.lostRows()) {
    lines.push_back({.kind = std::string(nounOf(row.key)),
                     .how = "그대로 둠(그 뒤에 지워졌음)",
                     .person = std::to_string(row.key.row)});
  }
  for (const auto& file : undo.files()) add(file, wordOf(file.change));
  for (const auto& file : undo.lost()) add(file, "그대로 둠(보관한 파일이 제자리에서 바뀌었음)");
  return lines;
}

}  // namespace vlout::entry::cli
