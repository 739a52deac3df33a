// The contact store on a folder of vCards for a run that only shows what it would do. Contacts are
// read from the folder, and saves stay in memory; the folder stays untouched, down to its time
// stamps. The store tells what would change in existing contacts.
#pragma once

#include <filesystem>
#include <string>

#include "outlook/vcard/preview_contact.h"
#include "outlook/vcard/vcard_store.h"

namespace vlout::outlook::vcard {

class PreviewStore : public VCardStore {
 public:
  // `index` is where runs keep what they know of the folder; it may be empty.
  PreviewStore(std::string folder, FieldChanged changed, std::filesystem::path index = {});

  [[nodiscard]] std::unique_ptr<Contact> item(std::size_t index) override;

 private:
  FieldChanged changed_;
};

}  // namespace vlout::outlook::vcard
