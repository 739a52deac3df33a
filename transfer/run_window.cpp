#include "transfer/run_window.h"

#include <string>

namespace vlout::transfer {

std::size_t addLine(RunWindow& window, std::string_view text, std::string_view percent,
                    std::string_view state, std::string_view card) {
  const std::size_t row = window.addResult(text);
  if (!card.empty()) window.resultIsOf(row, card);
  window.setResultCell(row, 1, percent);
  window.setResultCell(row, 2, state);
  return row;
}

PhaseLine::PhaseLine(RunWindow& window, std::string_view text, std::size_t steps)
    : window_(window), row_(window.addResult(text)), steps_(steps) {}

void PhaseLine::advance(std::size_t step) {
  const int percent = static_cast<int>(step * 100 / steps_);
  if (percent == percent_) return;
  percent_ = percent;
  window_.setProgress(percent);
  window_.setResultCell(row_, 1, std::to_string(percent) + "%");
}

void PhaseLine::end(RunEnd end) {
  const bool completed = end == RunEnd::Completed;
  if (completed) window_.setResultCell(row_, 1, "100%");
  window_.setResultCell(row_, 2, completed ? "완료" : "중지");
}

}  // namespace vlout::transfer
