// An address book of the desktop in place of the folder of vCards. The platform and `undo` use it
// when `--contacts` names a book.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "entry/runtime.h"
#include "history/run_recorder.h"
#include "history/undo.h"
#include "outlook/evolution/evolution_store.h"

namespace vlout::entry::cli {

// The name after "book:", which is empty for the default book; nothing for a folder.
[[nodiscard]] std::optional<std::string> bookIn(const std::filesystem::path& contacts);

// The UID of the book of that name. Throws ContactStoreError.
[[nodiscard]] std::string uidOfBook(const std::string& book);

class BookSide {
 public:
  // Finds the book. Throws ContactStoreError.
  BookSide(std::filesystem::path componentFolder, const std::string& book,
           std::function<void()> whileWaiting);

  // The folder that the history keeps and compares instead of the book.
  [[nodiscard]] std::filesystem::path mirror() const;

  [[nodiscard]] const std::string& uid() const { return info_.uid; }

  // Makes a platform work on the book.
  void use(Platform& platform, const std::shared_ptr<history::RunRecorder>& recorder) const;

  [[nodiscard]] std::unique_ptr<outlook::ContactStore> makeStore(
      std::shared_ptr<outlook::evolution::BookWatcher> watcher) const;
  [[nodiscard]] std::unique_ptr<outlook::ContactStore> makePreviewStore(
      outlook::vcard::FieldChanged changed) const;

 private:
  std::filesystem::path componentFolder_;
  std::shared_ptr<outlook::evolution::Desktop> desktop_;
  outlook::evolution::BookInfo info_;
};

// For history::Undo: opens the book that a run's contact folder mirrors; null for a real folder.
// Throws ContactStoreError.
[[nodiscard]] std::unique_ptr<history::MirroredContacts> openMirrored(
    const std::filesystem::path& componentFolder, const std::filesystem::path& contacts,
    std::function<void()> whileWaiting = [] {});

}  // namespace vlout::entry::cli
