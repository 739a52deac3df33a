// A preview on Linux: a private copy of the database and a view on the folder of vCards, both gone
// with it.
#pragma once

#include <filesystem>
#include <vector>

#include "entry/runtime.h"
#include "outlook/vcard/preview_store.h"
#include "store/sqlite/preview_connection.h"

namespace vlout::entry::cli {

// A folder for this user's eyes that goes with the object. Throws std::runtime_error when it cannot
// be made.
class PrivateFolder {
 public:
  PrivateFolder();
  ~PrivateFolder();
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;
  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

class StorePreview : public Preview {
 public:
  // `index` is what runs know of the contacts.
  StorePreview(const std::filesystem::path& contacts, const std::filesystem::path& index);

  [[nodiscard]] store::Connection& connection() override { return connection_; }
  [[nodiscard]] outlook::ContactStore& contacts() override { return contacts_; }
  [[nodiscard]] const std::filesystem::path& temporaryFolder() const override {
    return folder_.path();
  }
  [[nodiscard]] std::vector<ui::FieldChange> takeChanges() override;

 private:
  void add(bool onCard, std::string_view caption, const std::string& before,
           const std::string& after);

  PrivateFolder folder_;
  std::vector<ui::FieldChange> changes_;
  store::PreviewConnection connection_;
  outlook::vcard::PreviewStore contacts_;
};

}  // namespace vlout::entry::cli
