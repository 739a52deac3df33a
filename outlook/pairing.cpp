#include "outlook/pairing.h"

#include "text/trim.h"

namespace vlout::outlook {

bool hasVLID(Contact& contact) {
  const std::size_t count = contact.userPropertyCount();
  for (std::size_t i = 1; i <= count; ++i) {
    if (contact.userPropertyName(i) == kVLID) return true;
  }
  return false;
}

std::string readVLID(Contact& contact) {
  return contact.userPropertyText(kVLID);
}

std::optional<std::string> keyOf(Contact& contact) {
  if (!hasVLID(contact)) return std::nullopt;
  std::string key(text::trim(readVLID(contact)));
  if (key.empty()) return std::nullopt;
  return key;
}

void addVLID(Contact& contact, std::string_view rowId) {
  contact.setUserPropertyText(kVLID, rowId);
}

std::string joinedName(Contact& contact) {
  return contact.text(ContactProperty::LastName) + contact.text(ContactProperty::FirstName);
}

}  // namespace vlout::outlook
