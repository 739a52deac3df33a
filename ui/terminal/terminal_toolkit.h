// The toolkit for runs in a terminal: a script, instead of a user, presses the controls of the
// form. Result lines go to standard output; message boxes and a progress bar go to standard error.
// An interrupt closes the form, which stops a run.
#pragma once

#include <csignal>
#include <functional>
#include <ostream>
#include <vector>

#include "ui/frm_outlook_sync.h"
#include "ui/toolkit.h"

namespace vlout::ui::terminal {

class TerminalToolkit : public Toolkit {
 public:
  // Runs once the form is shown; when it returns, the form is closed.
  using Script = std::function<void(frmOutlookSync&)>;

  // How the run decides a conflict.
  enum class OnConflict { Skip, TakeNewer, KeepCard, KeepOutlook, Stop };

  // A signal handler sets `interrupted`. `progressWidth` is the width of the terminal that `errors`
  // writes to, or 0 if it is not a terminal.
  TerminalToolkit(std::ostream& results, std::ostream& errors, int progressWidth,
                  const volatile std::sig_atomic_t& interrupted, OnConflict onConflict,
                  Script script);

  void showModal(Form& form) override;
  void messageBox(MessageIcon icon, std::string_view text) override;
  [[nodiscard]] ScreenSize screenSize() const override { return {}; }
  [[nodiscard]] bool hasUser() const override { return false; }
  void pump() override;

 private:
  void showMainWindow(frmOutlookSync& window);
  void answerConflict(frmOutlookSyncModify& window);
  void watch(frmOutlookSync& form);
  void printIfFinal(std::size_t row, std::size_t column);
  void printRow(std::size_t row);
  void printRest();
  void drawProgress();
  void clearProgress();

  std::ostream& results_;
  std::ostream& errors_;
  int progressWidth_;
  const volatile std::sig_atomic_t& interrupted_;
  OnConflict onConflict_;
  Script script_;
  frmOutlookSync* form_ = nullptr;
  std::vector<bool> printed_;  // for each row of the result list
  bool progressDrawn_ = false;
};

}  // namespace vlout::ui::terminal
