#include <CLI/CLI.hpp>
#include <array>
#include <iostream>
#include <limits>
#include <memory>
#include <string>

#include "entry/cli/book_side.h"
#include "entry/cli/columns.h"
#include "entry/cli/command.h"
#include "entry/cli/component_folder.h"
#include "entry/cli/run_lines.h"
#include "entry/cli/terminal.h"
#include "history/undo.h"
#include "text/language.h"
#include "text/shown_text.h"

namespace vlout::entry::cli {
namespace {

struct Arguments {
  std::string folder;
  int run = 0;  // 0 for the last one that changed anything
  bool preview = false;
  bool force = false;
  bool yes = false;
};

void printCounts(const std::string& what, const std::array<int, 3>& counts, std::ostream& out) {
  out << what;
  for (std::size_t i = 0; i < counts.size(); ++i) {
    out << ' ' << wordOf(static_cast<history::Change>(i)) << '=' << counts[i];
  }
  out << '\n';
}

void printChanges(const history::Undo& undo, std::ostream& out) {
  std::array<int, 3> rows{};
  std::array<int, 3> files{};
  for (const auto& row : undo.rows()) ++rows.at(static_cast<std::size_t>(row.change));
  for (const auto& file : undo.files()) ++files.at(static_cast<std::size_t>(file.change));
  printCounts(text::say("명함:", "Cards:"), rows, out);
  printCounts(text::say("연락처:", "Contacts:"), files, out);
  Columns lines(out);
  for (const UndoLine& line : undoLines(undo)) {
    std::vector<std::string> cells{line.kind, line.how, line.person};
    if (!line.file.empty()) cells.push_back(line.file);
    lines.add(std::move(cells));
  }
}

// Says what it will change and what was edited since, asks, and goes back. False if nothing was
// done.
bool undoRun(const Arguments& request, std::ostream& out, std::ostream& errors) {
  const auto folder = existingFolder(request.folder);
  history::Undo undo(folder, request.run, [&](const std::filesystem::path& contacts) {
    return openMirrored(folder, contacts);
  });
  out << text::onOneLine(headingOf(undo)) << '\n';
  printChanges(undo, out);
  if (!undo.edits().empty()) {
    out << text::say("그 뒤에 바뀐 것(되돌리면 사라집니다):\n",
                     "Changed since (an undo loses it):\n");
    for (const std::string& edit : undo.edits()) out << "  " << text::onOneLine(edit) << '\n';
  }
  out.flush();
  if (request.preview) return true;
  if (!undo.edits().empty() && !request.force) {
    errors << text::say(
        "작업 뒤에 바뀐 것이 있어 되돌리지 않았습니다. 그래도 되돌리려면 --force 를 "
        "붙이십시오.\n",
        "Nothing was undone, because something has changed since the run. To undo anyway, add "
        "--force.\n");
    return false;
  }
  if (!request.yes && !canAsk()) {
    errors << text::say("터미널이 아니어서 물을 수 없습니다. 되돌리려면 --yes 를 붙이십시오.\n",
                        "There is no terminal to ask in. To undo, add --yes.\n");
    return false;
  }
  if (!request.yes && !confirm(text::say("되돌릴까요?", "Undo?"))) return false;
  undo.perform();
  out << text::say("되돌렸습니다.\n", "Undone.\n");
  return true;
}

}  // namespace

void addUndoCommand(CLI::App& app, int& status) {
  CLI::App* const undo = app.add_subcommand(
      "undo",
      text::say("어느 작업과 그 뒤의 작업이 쓴 것을 되돌립니다. 무엇이 바뀌는지 먼저 말합니다.",
                "Takes back what a run and all later ones wrote. First says what will change."));
  const auto arguments = std::make_shared<Arguments>();
  undo->add_option("run", arguments->run,
                   text::say("작업 번호 (기본값: 무엇인가 바꾼 마지막 작업)",
                             "Number of the run (default: the last that changed anything)"))
      ->check(CLI::Range(1, std::numeric_limits<int>::max()));
  addFolderOption(*undo, arguments->folder);
  undo->add_flag("--preview", arguments->preview,
                 text::say("무엇이 바뀌는지 말하기만 합니다.", "Only says what would change."));
  undo->add_flag("--force", arguments->force,
                 text::say("그 뒤에 바뀐 것이 사라져도 되돌립니다.",
                           "Undoes even if changes made since are lost."));
  undo->add_flag("--yes", arguments->yes,
                 text::say("묻지 않습니다. 터미널이 아니면 있어야 합니다.",
                           "Does not ask. Needed if there is no terminal."));
  undo->callback([arguments, &status] {
    status = undoRun(*arguments, std::cout, std::cerr) ? kDone : kRefused;
  });
}

}  // namespace vlout::entry::cli
