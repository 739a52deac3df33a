// What differs between two states of a contact, field by field, in the texts that people see.
// Previews show it for each save, and the history for each run.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "outlook/vcard/vcard_contact.h"

namespace vlout::outlook::vcard {

// A field of a contact that was changed, with its old and its new text.
using FieldChanged = std::function<void(std::string_view caption, const std::string& before,
                                        const std::string& after)>;

void compareContacts(VCardContact& before, VCardContact& after, const FieldChanged& changed);

// The same for two texts of a card; texts from UTF-16 files are given in UTF-8.
void compareCards(std::string_view before, std::string_view after, const FieldChanged& changed);

}  // namespace vlout::outlook::vcard
