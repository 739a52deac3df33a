// A contact of a preview: when it is saved, it tells which of its fields that changes. The stores
// of previews make these.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "outlook/vcard/vcard_contact.h"

namespace vlout::outlook::vcard {

// A field of a contact that a save changes, with its old and its new text.
using FieldChanged = std::function<void(std::string_view caption, const std::string& before,
                                        const std::string& after)>;

class PreviewContact : public VCardContact {
 public:
  PreviewContact(CardHome& home, std::size_t position, const FieldChanged& changed)
      : VCardContact(home, position), home_(home), position_(position), changed_(changed) {}

 protected:
  void write(const std::string& row) override;

 private:
  void compare(std::string_view caption, const std::string& before, const std::string& after);

  CardHome& home_;
  std::size_t position_;
  const FieldChanged& changed_;
};

}  // namespace vlout::outlook::vcard
