#include "entry/cli/history_command.h"

#include <array>
#include <string>

#include "history/restore_point.h"
#include "history/runs.h"
#include "history/undo.h"
#include "text/shown_text.h"

namespace vlout::entry::cli {
namespace {

using history::RunRecord;

// In the order of history::RunState and history::Change.
constexpr std::array<const char*, 5> kStates{"끝나지 않음", "완료", "중지", "자료 없음", "실패"};
constexpr std::array<const char*, 3> kPutBack{"되돌림", "삭제", "되살림"};

std::string wayBack(const history::Runs& runs, const RunRecord& run) {
  if (run.undoneBy != 0) return "작업 " + std::to_string(run.undoneBy) + "에서 되돌림";
  if (!run.wrote) return "바뀐 것 없음";
  const bool kept = history::RestorePoint(runs.folderOf(run.number)).exists();
  return kept ? "되돌릴 수 있음" : "복원 지점 지워짐";
}

void printCounts(const char* what, const std::array<int, 3>& counts, std::ostream& out) {
  out << what;
  for (std::size_t i = 0; i < counts.size(); ++i) out << ' ' << kPutBack[i] << '=' << counts[i];
  out << '\n';
}

void printChanges(const history::Undo& undo, std::ostream& out) {
  std::array<int, 3> rows{};
  std::array<int, 3> files{};
  for (const auto& row : undo.rows()) ++rows.at(static_cast<std::size_t>(row.change));
  for (const auto& file : undo.files()) ++files.at(static_cast<std::size_t>(file.change));
  printCounts("명함:", rows, out);
  printCounts("연락처:", files, out);
  for (const auto& row : undo.rows()) {
    out << nounOf(row.key) << '\t' << kPutBack.at(static_cast<std::size_t>(row.change)) << '\t'
        << text::onOneLine(row.name) << '\n';
  }
  const auto print = [&](const history::FileChange& file, const char* what) {
    out << "연락처\t" << what << '\t' << text::onOneLine(file.person) << '\t'
        << text::onOneLine(file.name) << '\n';
  };
  for (const auto& file : undo.files()) {
    print(file, kPutBack.at(static_cast<std::size_t>(file.change)));
  }
  for (const auto& file : undo.lost()) print(file, "그대로 둠(보관한 파일이 제자리에서 바뀌었음)");
}

}  // namespace

void printHistory(const std::filesystem::path& folder, std::ostream& out, std::ostream& errors) {
  const history::Runs runs(folder);
  const auto list = runs.list();
  if (list.empty()) errors << folder.string() << ": 아직 작업이 없습니다.\n";
  for (RunRecord run : list) {
    // One that was killed could not say what it had done.
    if (run.state == history::RunState::Unfinished && run.wrote) {
      const history::RestorePoint point(runs.folderOf(run.number));
      run.text = history::Written::read(point.writtenLog()).counts();
    }
    out << run.number << '\t' << run.started << '\t' << run.mode;
    if (!run.range.empty()) out << ' ' << text::onOneLine(run.range);
    out << '\t' << kStates.at(static_cast<std::size_t>(run.state)) << '\t'
        << text::onOneLine(run.text) << '\t' << wayBack(runs, run) << '\n';
  }
}

bool undoRun(const UndoRequest& request, const std::function<bool()>& confirm, std::ostream& out,
             std::ostream& errors) {
  history::Undo undo(request.folder, request.run);
  out << "작업 " << undo.run().number << "(" << undo.run().started << ", " << undo.run().mode
      << ") 전으로 되돌립니다.\n";
  printChanges(undo, out);
  if (!undo.edits().empty()) {
    out << "그 뒤에 바뀐 것(되돌리면 사라집니다):\n";
    for (const std::string& edit : undo.edits()) out << "  " << text::onOneLine(edit) << '\n';
  }
  out.flush();
  if (request.preview) return true;
  if (!undo.edits().empty() && !request.force) {
    errors << "작업 뒤에 바뀐 것이 있어 되돌리지 않았습니다. 그래도 되돌리려면 --force 를 "
              "붙이십시오.\n";
    return false;
  }
  if (!confirm()) return false;
  undo.perform();
  out << "되돌렸습니다.\n";
  return true;
}

}  // namespace vlout::entry::cli
