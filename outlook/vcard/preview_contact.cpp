#include "outlook/vcard/preview_contact.h"

#include <vector>

#include "outlook/field_map.h"

namespace vlout::outlook::vcard {
namespace {

// The files attached to a contact, the pictures among them.
struct Attachments {
  std::string names;
  std::vector<std::string> contents;
};

Attachments attachmentsOf(VCardContact& contact) {
  Attachments result;
  for (std::size_t i = 1; i <= contact.attachmentCount(); ++i) {
    if (i > 1) result.names += ", ";
    result.names += contact.attachmentName(i);
    result.contents.push_back(contact.attachmentContent(i));
  }
  return result;
}

}  // namespace

void PreviewContact::write(const std::string& row) {
  VCardContact before(home_, position_);
  static_cast<void>(shownText(before, ContactProperty::FullName));  // reads the card
  VCardContact::write(row);
  VCardContact after(home_, position_);
  compare(fieldCaption("FullName"), shownText(before, ContactProperty::FullName),
          shownText(after, ContactProperty::FullName));
  for (const MappedField& field : mappedFields()) {
    compare(fieldCaption(field.column), fieldTextFromContact(before, field).value_or(""),
            fieldTextFromContact(after, field).value_or(""));
  }
  const Attachments old = attachmentsOf(before);
  const Attachments now = attachmentsOf(after);
  if (old.contents != now.contents || old.names != now.names) {
    changed_("사진", old.names, now.names + (old.names == now.names ? " (새 사진)" : ""));
  }
}

void PreviewContact::compare(std::string_view caption, const std::string& before,
                             const std::string& after) {
  if (before != after) changed_(caption, before, after);
}

}  // namespace vlout::outlook::vcard
