// The contact store on a folder of vCards for a run that only shows what it would do: contacts are
// read from the folder, and what is saved stays in memory. The folder itself stays untouched, down
// to its time stamps. It tells what is changed in contacts that are there.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "outlook/vcard/vcard_store.h"

namespace vlout::outlook::vcard {

class PreviewStore : public VCardStore {
 public:
  // A field of a contact that a save changes, with its old and its new text.
  using Changed = std::function<void(std::string_view caption, const std::string& before,
                                     const std::string& after)>;

  PreviewStore(std::string folder, Changed changed);

  [[nodiscard]] std::unique_ptr<Contact> item(std::size_t index) override;

 private:
  Changed changed_;
};

}  // namespace vlout::outlook::vcard
