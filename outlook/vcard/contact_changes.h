// What differs between two states of one contact, field by field and in the texts that people see.
// Previews tell it of each save, and the history of each run.
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

// The same of two texts of a card, in UTF-8 where their files are in UTF-16.
void compareCards(std::string_view before, std::string_view after, const FieldChanged& changed);

}  // namespace vlout::outlook::vcard
