#include "outlook/vcard/preview_contact.h"

#include "outlook/field_map.h"

namespace vlout::outlook::vcard {

void PreviewContact::write(const std::string& row) {
  VCardContact before(home_, position_);
  static_cast<void>(shownText(before, ContactProperty::FullName));  // reads the card
  VCardContact::write(row);
  VCardContact after(home_, position_);
  compareContacts(before, after, changed_);
}

}  // namespace vlout::outlook::vcard
