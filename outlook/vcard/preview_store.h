// The contact store on a folder of vCards for a run that only shows what it would do: contacts are
// read from the folder, and what is saved stays in memory. The folder itself stays untouched, down
// to its time stamps. It tells what is changed in contacts that are there.
#pragma once

#include <filesystem>
#include <string>

#include "outlook/vcard/preview_contact.h"
#include "outlook/vcard/vcard_store.h"

namespace vlout::outlook::vcard {

class PreviewStore : public VCardStore {
 public:
  // What runs know of the folder is read from `index`, if it has a name.
  PreviewStore(std::string folder, FieldChanged changed, std::filesystem::path index = {});

  [[nodiscard]] std::unique_ptr<Contact> item(std::size_t index) override;

 private:
  FieldChanged changed_;
};

}  // namespace vlout::outlook::vcard
