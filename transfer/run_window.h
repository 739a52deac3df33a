// What a transfer needs from the window that it runs in: result lines, progress, a message box, and
// a place to yield, where the user may ask to stop. The main window implements it; an engine never
// sees a form.
#pragma once

#include <string_view>

#include "transfer/run.h"

namespace vlout::outlook {
class Contact;
}

namespace vlout::transfer {

enum class MessageIcon { None, Information, Exclamation, Critical };

class RunWindow {
 public:
  RunWindow() = default;
  RunWindow(const RunWindow&) = delete;
  RunWindow& operator=(const RunWindow&) = delete;
  virtual ~RunWindow() = default;

  // Adds a line to the result list. Returns its 0-based row, by which its cells are set.
  virtual std::size_t addResult(std::string_view text) = 0;
  // `column` is 1 for the percent and 2 for the state. A line is final once its state is set.
  virtual void setResultCell(std::size_t row, std::size_t column, std::string_view text) = 0;
  virtual void selectResult(std::size_t row) = 0;
  // Tells which card a line is about, by its number.
  virtual void resultIsOf(std::size_t row, std::string_view card) {
    static_cast<void>(row);
    static_cast<void>(card);
  }

  virtual void showProgress(bool visible) = 0;
  virtual void setProgress(int percent) = 0;
  virtual void enableRunButton(bool enabled) = 0;
  virtual void message(MessageIcon icon, std::string_view text) = 0;

  // A fixed message, and the system's own text about the cause.
  virtual void failure(std::string_view text, std::string_view cause) {
    static_cast<void>(cause);
    message(MessageIcon::Critical, text);
  }

  // Told of a pair that changed on both sides, before its line is added.
  virtual void conflictFound(std::string_view rowId, outlook::Contact& contact) {
    static_cast<void>(rowId);
    static_cast<void>(contact);
  }

  // Lets the window repaint and take input. True when the user has asked the run to stop.
  [[nodiscard]] virtual bool yield() = 0;

  // The same while a run is still being prepared, without the wait. A request to stop is
  // remembered.
  virtual void keepAlive() { static_cast<void>(yield()); }
};

// Keeps the run button disabled during a run, however it ends.
class RunButtonDisabled {
 public:
  explicit RunButtonDisabled(RunWindow& window) : window_(window) {
    window_.enableRunButton(false);
  }
  ~RunButtonDisabled() { window_.enableRunButton(true); }
  RunButtonDisabled(const RunButtonDisabled&) = delete;
  RunButtonDisabled& operator=(const RunButtonDisabled&) = delete;

 private:
  RunWindow& window_;
};

// Adds a complete line, about that card if there is one, and returns its row.
std::size_t addLine(RunWindow& window, std::string_view text, std::string_view percent,
                    std::string_view state, std::string_view card = {});

// The heading line of a phase with a known number of steps.
class PhaseLine {
 public:
  PhaseLine(RunWindow& window, std::string_view text, std::size_t steps);

  // Shows step `step` (1-based) in the progress bar and in the heading's percent.
  void advance(std::size_t step);
  void setSteps(std::size_t steps) { steps_ = steps; }
  void finish() { end(RunEnd::Completed); }
  // Ends the heading. A phase that was stopped keeps the percentage that it had reached.
  void end(RunEnd end);

 private:
  RunWindow& window_;
  std::size_t row_;
  std::size_t steps_;
  int percent_ = -1;
};

}  // namespace vlout::transfer
