// A preview on Linux: a private copy of the database and a view of the contacts, which both end
// with it.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

#include "entry/runtime.h"
#include "outlook/vcard/preview_contact.h"
#include "posix/private_folder.h"
#include "store/sqlite/preview_connection.h"

namespace vlout::entry::cli {

class StorePreview : public Preview {
 public:
  // Makes the view of the contacts, which reports the fields that a save changes.
  using MakeContacts =
      std::function<std::unique_ptr<outlook::ContactStore>(outlook::vcard::FieldChanged)>;
  explicit StorePreview(const MakeContacts& makeContacts);

  [[nodiscard]] store::Connection& connection() override { return connection_; }
  [[nodiscard]] outlook::ContactStore& contacts() override { return *contacts_; }
  [[nodiscard]] const std::filesystem::path& temporaryFolder() const override {
    return folder_.path();
  }
  [[nodiscard]] std::vector<ui::FieldChange> takeChanges() override;

 private:
  void add(bool onCard, std::string_view caption, const std::string& before,
           const std::string& after);

  posix::PrivateFolder folder_;
  std::vector<ui::FieldChange> changes_;
  store::sqlite::PreviewConnection connection_;
  std::unique_ptr<outlook::ContactStore> contacts_;
};

}  // namespace vlout::entry::cli
