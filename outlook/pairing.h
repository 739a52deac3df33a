// The pairing key: the user property `VLID` that ties a contact to its row, and the person's name,
// by which a contact without a key is looked up.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "outlook/contact_store.h"

namespace vlout::outlook {

inline constexpr std::string_view kVLID = "VLID";

// True when one of the contact's user properties is named `VLID`.
[[nodiscard]] bool hasVLID(Contact& contact);

// The row number that `VLID` holds, as text.
[[nodiscard]] std::string readVLID(Contact& contact);

// The contact's key: the text of `VLID` without blanks around it. An empty `VLID` is no key.
[[nodiscard]] std::optional<std::string> keyOf(Contact& contact);

// Sets `VLID`, adding it as a text property if it is missing. Does not save the contact.
void addVLID(Contact& contact, std::string_view rowId);

// Family name and given name joined without a separator, as they stand.
[[nodiscard]] std::string joinedName(Contact& contact);

}  // namespace vlout::outlook
