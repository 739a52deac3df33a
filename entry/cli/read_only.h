// Both stores for reading only: a private copy of the database and a view of the contacts. The
// commands that only show something use it; nothing is written to disk.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "entry/runtime.h"
#include "transfer/survey.h"

namespace vlout::entry::cli {

class ReadOnlyStores {
 public:
  // Opens the database. Throws store::DatabaseError.
  ReadOnlyStores(const std::filesystem::path& folder, const std::filesystem::path& contacts);

  [[nodiscard]] store::Connection& connection() { return view_->connection(); }
  // Connects the contacts, and completes, in the views only, what a killed run has left. Throws
  // outlook::ContactStoreError and store::DatabaseError.
  void connectContacts();
  [[nodiscard]] outlook::ContactStore& contacts() { return view_->contacts(); }

 private:
  Platform platform_;
  std::filesystem::path place_;  // of the contacts
  std::unique_ptr<Preview> view_;
};

// A survey of all cards and contacts, and what could not be read.
class FolderSurvey {
 public:
  // Connects the contacts. Throws as that does, and std::runtime_error if it is interrupted.
  explicit FolderSurvey(ReadOnlyStores& stores);

  [[nodiscard]] const std::vector<transfer::Surveyed>& of(transfer::Standing standing) const {
    return survey_.of(standing);
  }
  [[nodiscard]] std::size_t cards() const { return cards_; }
  [[nodiscard]] std::size_t contacts() const { return survey_.contacts(); }
  [[nodiscard]] const std::vector<std::string>& problems() const { return problems_; }

 private:
  std::vector<std::string> problems_;
  transfer::SurveyWindow window_;
  transfer::WorkList list_;
  transfer::Survey survey_;
  std::size_t cards_ = 0;
};

}  // namespace vlout::entry::cli
