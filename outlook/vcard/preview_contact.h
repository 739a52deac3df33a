// A contact of a preview: when it is saved, it tells which of its fields would change. The stores
// of previews make these.
#pragma once

#include <string>

#include "outlook/vcard/contact_changes.h"
#include "outlook/vcard/vcard_contact.h"

namespace vlout::outlook::vcard {

class PreviewContact : public VCardContact {
 public:
  PreviewContact(CardHome& home, std::size_t position, const FieldChanged& changed)
      : VCardContact(home, position), home_(home), position_(position), changed_(changed) {}

 protected:
  void write(const std::string& row) override;

 private:
  CardHome& home_;
  std::size_t position_;
  const FieldChanged& changed_;
};

}  // namespace vlout::outlook::vcard
