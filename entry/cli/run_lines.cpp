#include "entry/cli/run_lines.h"

#include <algorithm>
#include <array>
#include <exception>

#include "history/restore_point.h"
#include "history/written_log.h"
#include "text/language.h"
#include "transfer/pair_sides.h"

namespace vlout::entry::cli {
namespace {

using history::RunRecord;

// In the order of transfer::Mode and transfer::Range, whose words the records keep.
constexpr std::array<text::Words, 3> kModes{
    {{"가져오기", "import"}, {"내보내기", "export"}, {"상호갱신", "sync"}}};
constexpr std::array<text::Words, 3> kRanges{
    {{"선택한 명함", "selected"}, {"그룹", "group"}, {"전체", "all"}}};
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

// A recorded word as it is said to the user; any other as it stands.
std::string sayWord(std::string_view word, const std::array<std::string_view, 3>& recorded,
                    const std::array<text::Words, 3>& said) {
  const auto found = std::find(recorded.begin(), recorded.end(), word);
  if (found == recorded.end()) return std::string(word);
  return text::say(said.at(static_cast<std::size_t>(found - recorded.begin())));
}

std::string modeOf(const RunRecord& run) {
  if (run.mode == history::kUndoMode) return text::say("되돌리기", "undo");
  return sayWord(run.mode, transfer::kModeWords, kModes);
}

// The transfer and its range; a group's range has its name behind the word.
std::string transferOf(const RunRecord& run) {
  if (run.range.empty()) return modeOf(run);
  const std::string_view range = run.range;
  const std::size_t end = std::min(range.find(' '), range.size());
  return modeOf(run)
      .append(" ")
      .append(sayWord(range.substr(0, end), transfer::kRangeWords, kRanges))
      .append(range.substr(end));
}

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
    // A run that was killed could not say what it had done.
    if (run.state == history::RunState::Unfinished && run.wrote) {
      try {
        run.text = history::RestorePoint(runs.folderOf(run.number)).written(run.state).counts();
      } catch (const std::exception&) {
        run.text.clear();  // an undo says what is wrong with it
      }
    }
    lines.push_back({.number = run.number,
                     .started = run.started,
                     .transfer = transferOf(run),
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
  return text::say("작업 %1(%2, %3) 전으로 되돌립니다.",
                   "Goes back to the state before run %1 (%2, %3).",
                   {std::to_string(undo.run().number), undo.run().started, modeOf(undo.run())});
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
                        "left alone (the kept file has been changed in place)"));
  }
  return lines;
}

}  // namespace vlout::entry::cli
