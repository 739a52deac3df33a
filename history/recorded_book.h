// Tells the recorder of a run's writes to an address book, by the files of its mirror.
#pragma once

#include <memory>
#include <string>

#include "history/run_recorder.h"
#include "outlook/evolution/evolution_store.h"
#include "text/ascii.h"

namespace vlout::history {

class RecordedBook : public outlook::evolution::BookWatcher {
 public:
  explicit RecordedBook(std::shared_ptr<RunRecorder> recorder) : recorder_(std::move(recorder)) {}
  void found(std::size_t contacts) override { recorder_->filesFound(contacts); }
  void beforeWriting() override { recorder_->beforeWriting(); }
  void writing(const std::string& file, const FileState& state, const std::string& row) override {
    recorder_->file(file, state, text::parseInteger(row));
  }

 private:
  std::shared_ptr<RunRecorder> recorder_;
};

}  // namespace vlout::history
