// What a component without a host application offers around its transfers: the choice of cards and
// contacts, the runs so far, and the way back. The entry layer implements it on Linux. On Windows
// there is no desk: the host chooses the cards, and there is no history.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace vlout::ui {

// A run, as shown in a line.
struct PastRun {
  int number = 0;
  std::string what;     // when it began, and which transfer it was
  std::string outcome;  // how it ended, and its counts
  std::string wayBack;  // whether it can be taken back
};

// An undo that has been worked out but not done.
class UndoPlan {
 public:
  UndoPlan() = default;
  UndoPlan(const UndoPlan&) = delete;
  UndoPlan& operator=(const UndoPlan&) = delete;
  virtual ~UndoPlan() = default;

  struct Line {
    std::string what;
    std::string how;
  };
  [[nodiscard]] virtual std::string heading() const = 0;
  [[nodiscard]] virtual std::vector<Line> lines() const = 0;
  // What has been edited since and would be lost.
  [[nodiscard]] virtual std::vector<std::string> edits() const = 0;
  // Throws std::exception.
  virtual void perform() = 0;
};

class Desk {
 public:
  Desk() = default;
  Desk(const Desk&) = delete;
  Desk& operator=(const Desk&) = delete;
  virtual ~Desk() = default;

  // A place of contacts: its name for people, and its name on the command line.
  struct Place {
    std::string caption;
    std::filesystem::path place;
  };
  [[nodiscard]] virtual std::filesystem::path folder() const = 0;
  [[nodiscard]] virtual Place contacts() const = 0;
  // Why the present contacts cannot be used; empty if they can.
  [[nodiscard]] virtual std::string objection() const = 0;
  // The present one first, then the usual folder and the address books of the desktop.
  [[nodiscard]] virtual std::vector<Place> places() = 0;

  // When the main window closes, it opens again on these.
  virtual void moveTo(const std::filesystem::path& folder,
                      const std::filesystem::path& contacts) = 0;
  [[nodiscard]] virtual bool isMoving() const = 0;

  // Whether contacts show the cards' pictures. The host's option file has no place for this option;
  // it is saved along with the others.
  [[nodiscard]] virtual bool& showsPictures() = 0;
  virtual void saveOptions() = 0;

  // Oldest first. Throws std::exception.
  [[nodiscard]] virtual std::vector<PastRun> runs() = 0;
  // What one of them showed and changed, one line each.
  struct RunDetail {
    std::string what;
    std::string who;
    std::string how;
  };
  [[nodiscard]] virtual std::vector<RunDetail> detailsOf(int run) = 0;
  // Plans to go back before that run or, for 0, before the last one that changed anything. Throws
  // std::exception if there is no way back.
  [[nodiscard]] virtual std::unique_ptr<UndoPlan> planUndo(int run) = 0;
};

}  // namespace vlout::ui
