// Both stores for a look: a private copy of the database and a view on the contacts. The commands
// that only show something work on it; nothing is written to disk.
#pragma once

#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "entry/runtime.h"
#include "transfer/run_window.h"
#include "transfer/survey.h"

namespace vlout::entry::cli {

class ReadOnlyStores {
 public:
  // Opens the database. Throws store::DatabaseError.
  ReadOnlyStores(const std::filesystem::path& folder, const std::filesystem::path& contacts);

  [[nodiscard]] store::Connection& connection() { return view_->connection(); }
  // Connects the contacts and completes in the views what a killed run has left. Throws
  // outlook::ContactStoreError and store::DatabaseError.
  void connectContacts();
  [[nodiscard]] outlook::ContactStore& contacts() { return view_->contacts(); }

 private:
  Platform platform_;
  std::filesystem::path place_;  // of the contacts
  std::unique_ptr<Preview> view_;
};

// A window that keeps the lines about what could not be read.
class ProblemLines : public transfer::RunWindow {
 public:
  explicit ProblemLines(const volatile std::sig_atomic_t& interrupted)
      : interrupted_(interrupted) {}

  [[nodiscard]] const std::vector<std::string>& lines() const { return lines_; }

  std::size_t addResult(std::string_view text) override;
  void setResultCell(std::size_t row, std::size_t column, std::string_view text) override;
  void selectResult(std::size_t row) override { static_cast<void>(row); }
  void showProgress(bool visible) override { static_cast<void>(visible); }
  void setProgress(int percent) override { static_cast<void>(percent); }
  void enableRunButton(bool enabled) override { static_cast<void>(enabled); }
  void message(transfer::MessageIcon icon, std::string_view text) override;
  [[nodiscard]] bool yield() override { return interrupted_ != 0; }

 private:
  const volatile std::sig_atomic_t& interrupted_;
  std::string last_;
  std::vector<std::string> lines_;
};

// The survey of all cards and contacts, and what could not be read.
class FolderSurvey {
 public:
  // Connects the contacts. Throws as they do, and std::runtime_error when it is interrupted.
  explicit FolderSurvey(ReadOnlyStores& stores);

  [[nodiscard]] const std::vector<transfer::Surveyed>& of(transfer::Standing standing) const {
    return survey_.of(standing);
  }
  [[nodiscard]] std::size_t cards() const { return cards_; }
  [[nodiscard]] std::size_t contacts() const { return survey_.contacts(); }
  [[nodiscard]] const std::vector<std::string>& problems() const { return window_.lines(); }

 private:
  ProblemLines window_;
  transfer::WorkList list_;
  transfer::Survey survey_;
  std::size_t cards_ = 0;
};

}  // namespace vlout::entry::cli
