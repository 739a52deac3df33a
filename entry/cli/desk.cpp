#include "entry/cli/desk.h"

#include <algorithm>

#include "entry/cli/book_side.h"
#include "entry/cli/contacts_place.h"
#include "entry/cli/run_lines.h"
#include "entry/option_file.h"
#include "outlook/evolution/desktop.h"
#include "text/file_path.h"
#include "text/language.h"

namespace vlout::entry::cli {
namespace {

constexpr const char* kSection = "LINUX";
constexpr const char* kShown = "PHOTO";

class LinuxUndoPlan : public ui::UndoPlan {
 public:
  LinuxUndoPlan(const std::filesystem::path& folder, int run,
                const std::function<void()>& whileWaiting)
      : undo_(folder, run, [folder, whileWaiting](const std::filesystem::path& contacts) {
          return openMirrored(folder, contacts, whileWaiting);
        }) {}

  [[nodiscard]] std::string heading() const override { return headingOf(undo_); }
  [[nodiscard]] std::vector<Line> lines() const override {
    std::vector<Line> lines;
    for (const UndoLine& line : undoLines(undo_)) {
      lines.push_back({line.kind + " " + line.person, line.how});
    }
    return lines;
  }
  [[nodiscard]] std::vector<std::string> edits() const override { return undo_.edits(); }
  void perform() override { undo_.perform(); }

 private:
  history::Undo undo_;
};

}  // namespace

ui::Desk::Place LinuxDesk::contacts() const {
  return {text::pathText(contacts_), contacts_};
}

std::string LinuxDesk::objection() const {
  return objectionToFolderOfFolders(contacts_);
}

std::vector<ui::Desk::Place> LinuxDesk::places() {
  std::vector<Place> places{contacts()};
  const auto usual = std::filesystem::absolute(folder_ / "contacts").lexically_normal();
  if (usual != contacts_) places.push_back({text::pathText(usual), usual});
  try {
    for (const auto& book : outlook::evolution::Desktop(whileWaiting_).knownBooks()) {
      const std::filesystem::path place = "book:" + book.uid;
      if (place != contacts_) {
        places.push_back(
            {text::say("주소록 %1 (%2)", "Address book %1 (%2)", {book.name, book.account}),
             place});
      }
    }
  } catch (const std::exception&) {
    // A desktop without address books has none to offer.
  }
  return places;
}

void LinuxDesk::moveTo(const std::filesystem::path& folder, const std::filesystem::path& contacts) {
  next_ = Move{folder, contacts};
}

bool LinuxDesk::readsShown() const {
  return optionFile(folder_).read(kSection, kShown) == "1";
}

void LinuxDesk::saveOptions() {
  if (shows_ == readsShown()) return;
  static_cast<void>(optionFile(folder_).write(kSection, {{kShown, shows_ ? "1" : "0"}}));
}

std::vector<ui::PastRun> LinuxDesk::runs() {
  std::vector<ui::PastRun> runs;
  for (const RunLine& line : runLines(history::Runs(folder_))) {
    runs.push_back(
        {.number = line.number,
         .what = std::to_string(line.number) + "  " + line.started + "  " + line.transfer,
         .outcome = line.state + " " + line.counts,
         .wayBack = line.wayBack});
  }
  return runs;
}

std::vector<ui::Desk::RunDetail> LinuxDesk::detailsOf(int run) {
  const auto report = history::reportOf(folder_, run);
  std::vector<RunDetail> details;
  for (const auto& line : report.lines) details.push_back({line[0], line[1], line[2]});
  for (ChangeLine& line : changeLines(report)) {
    details.push_back({"  " + (line.what.empty() ? line.who : line.what),
                       line.what.empty() ? "" : std::move(line.who), std::move(line.how)});
  }
  return details;
}

std::unique_ptr<ui::UndoPlan> LinuxDesk::planUndo(int run) {
  return std::make_unique<LinuxUndoPlan>(folder_, run, whileWaiting_);
}

}  // namespace vlout::entry::cli
