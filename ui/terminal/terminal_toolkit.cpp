#include "ui/terminal/terminal_toolkit.h"

#include <algorithm>
#include <string>

#include "text/ascii.h"
#include "text/language.h"
#include "text/shown_text.h"

namespace vlout::ui::terminal {
namespace {

constexpr std::size_t kStateColumn = 2;

}  // namespace

TerminalToolkit::TerminalToolkit(std::ostream& results, std::ostream& errors, int progressWidth,
                                 const volatile std::sig_atomic_t& interrupted,
                                 OnConflict onConflict, Script script)
    : results_(results),
      errors_(errors),
      progressWidth_(progressWidth),
      interrupted_(interrupted),
      onConflict_(onConflict),
      script_(std::move(script)) {}

void TerminalToolkit::showModal(Form& form) {
  if (auto* const window = dynamic_cast<frmOutlookSync*>(&form)) {
    showMainWindow(*window);
  } else if (auto* const conflict = dynamic_cast<frmOutlookSyncModify*>(&form)) {
    answerConflict(*conflict);
  } else {
    form.requestClose();  // nobody is there to pick or to type
  }
}

void TerminalToolkit::showMainWindow(frmOutlookSync& window) {
  watch(window);
  script_(window);
  printRest();
  clearProgress();
  window.requestClose();
  window.ListView1.events = {};
  window.ProgressBar1.changed = nullptr;
  form_ = nullptr;
}

void TerminalToolkit::answerConflict(frmOutlookSyncModify& window) {
  switch (onConflict_) {
    case OnConflict::TakeNewer:
      window.Command3.press();
      return;
    case OnConflict::Stop:
      window.Command6.press();
      return;
    case OnConflict::KeepCard:
    case OnConflict::KeepOutlook:
      window.Check1.setValue(CheckBox::kChecked);
      (onConflict_ == OnConflict::KeepCard ? window.Command1 : window.Command2).press();
      if (!window.isVisible()) return;
      messageBox(MessageIcon::None, text::say("→충돌←(%1): 제외합니다.", "→충돌←(%1): left out.",
                                              {window.Text1.text()}));
      break;
    case OnConflict::Skip:
      break;
  }
  window.Command4.press();
}

void TerminalToolkit::messageBox(MessageIcon icon, std::string_view text) {
  static_cast<void>(icon);
  clearProgress();
  errors_ << text::onItsLines(text::replaceAll(text, "\r\n", "\n")) << std::endl;
}

void TerminalToolkit::pump() {
  if (interrupted_ != 0 && form_ != nullptr) form_->requestClose();
}

void TerminalToolkit::watch(frmOutlookSync& form) {
  form_ = &form;
  form.ListView1.events.rowAdded = [this](std::size_t) { printed_.push_back(false); };
  form.ListView1.events.cellSet = [this](std::size_t row, std::size_t column) {
    printIfFinal(row, column);
  };
  form.ListView1.events.cleared = [this] {
    printRest();
    printed_.clear();
  };
  form.ProgressBar1.changed = [this] { drawProgress(); };
}

// A line is final once its state is set; a phase's heading only at its end.
void TerminalToolkit::printIfFinal(std::size_t row, std::size_t column) {
  if (column == kStateColumn && !printed_[row]) printRow(row);
}

void TerminalToolkit::printRow(std::size_t row) {
  clearProgress();
  const ListView& list = form_->ListView1;
  results_ << text::onOneLine(list.cell(row, 0)) << '\t' << text::onOneLine(list.cell(row, 1))
           << '\t' << text::onOneLine(list.cell(row, 2)) << '\n'
           << std::flush;
  printed_[row] = true;
}

// Prints lines that never got a state: what a run was doing when it failed.
void TerminalToolkit::printRest() {
  for (std::size_t row = 0; row < printed_.size(); ++row) {
    if (!printed_[row]) printRow(row);
  }
  results_.flush();
}

void TerminalToolkit::drawProgress() {
  if (progressWidth_ <= 0 || form_ == nullptr || !form_->ProgressBar1.visible()) return;
  const int percent = form_->ProgressBar1.value();
  const int room = std::clamp(progressWidth_ - 8, 1, 60);
  const int filled = room * percent / 100;
  errors_ << '\r' << '[' << std::string(static_cast<std::size_t>(filled), '#')
          << std::string(static_cast<std::size_t>(room - filled), ' ') << "] " << percent << '%'
          << std::flush;
  progressDrawn_ = true;
}

void TerminalToolkit::clearProgress() {
  if (!progressDrawn_) return;
  results_.flush();
  errors_ << "\r\x1b[K" << std::flush;
  progressDrawn_ = false;
}

}  // namespace vlout::ui::terminal
