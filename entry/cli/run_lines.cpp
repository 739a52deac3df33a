#include "entry/cli/run_lines.h"

#include <array>
#include <exception>

#include "history/restore_point.h"
#include "history/written_log.h"
#include "text/language.h"
#include "transfer/pair_sides.h"

namespace vlout::entry::cli {
namespace {

using history::RunRecord;

// In the order of history::RunState.
constexpr std::array<text::Words, 5> kStates{{{"끝나지 않음", "not finished"},
                                              {"완료", "completed"},
                                              {"중지", "stopped"},
                                              {"자료 없음", "no data"},
                                              {"실패", "failed"}}};
// In the order of history::Change.
constexpr std::array<text::Words, 3> kPutBack{
    {{"되돌림", "put back"}, {"삭제", "deleted"}, {"되살림", "restored"}}};
constexpr std::array<text::Words, 3> kDone{
    {{"변경", "changed"}, {"추가", "added"}, {"삭제", "deleted"}}};

std::string wayBack(const history::Runs& runs, const RunRecord& run) {
  if (run.undoneBy != 0)
    return text::say("작업 %1에서 되돌림", "undone by run %1", {std::to_string(run.undoneBy)});
  if (!run.wrote) return text::say("바뀐 것 없음", "changed nothing");
  const bool kept = history::RestorePoint(runs.folderOf(run.number)).exists();
  return kept ? text::say("되돌릴 수 있음", "can be undone")
              : text::say("복원 지점 지워짐", "restore point dropped");
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
                     .state = text::say(kStates.at(static_cast<std::size_t>(run.state))),
                     .counts = run.text,
                     .wayBack = wayBack(runs, run)});
  }
  return lines;
}

std::vector<ChangeLine> changeLines(const history::RunReport& report) {
  std::vector<ChangeLine> lines;
  for (const auto& change : report.changes) {
    ChangeLine line{.who = change.kind + " " + change.who,
                    .how = text::say(kDone.at(static_cast<std::size_t>(change.change)))};
    if (!change.caption.empty()) {
      line.what = change.caption + ": " + transfer::shownValue(change.before) + " → " +
                  transfer::shownValue(change.after);
    }
    lines.push_back(std::move(line));
  }
  return lines;
}

std::string wordOf(history::Change change) {
  return text::say(kPutBack.at(static_cast<std::size_t>(change)));
}

std::string headingOf(const history::Undo& undo) {
  return text::say("작업 %1(%2, %3) 전으로 되돌립니다.", "Goes back to before run %1 (%2, %3).",
                   {std::to_string(undo.run().number), undo.run().started, undo.run().mode});
}

std::vector<UndoLine> undoLines(const history::Undo& undo) {
  std::vector<UndoLine> lines;
  for (const auto& row : undo.rows()) {
    lines.push_back({.kind = nounOf(row.key), .how = wordOf(row.change), .person = row.name});
  }
  const auto add = [&](const history::FileChange& file, const std::string& how) {
    lines.push_back({.kind = text::say("연락처", "contact"),
                     .how = how,
                     .person = file.person,
                     .file = file.name});
  };
  for (const auto& row : undo.lostRows()) {
    lines.push_back({.kind = nounOf(row.key),
                     .how = text::say("그대로 둠(그 뒤에 지워졌음)", "left alone (deleted since)"),
                     .person = std::to_string(row.key.row)});
  }
  for (const auto& file : undo.files()) add(file, wordOf(file.change));
  for (const auto& file : undo.lost()) {
    add(file, text::say("그대로 둠(보관한 파일이 제자리에서 바뀌었음)",
                        "left alone (the file that was kept has been changed in place)"));
  }
  return lines;
}

}  // namespace vlout::entry::cli
