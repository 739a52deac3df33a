#include "outlook/vcard/contact_changes.h"

#include <vector>

#include "outlook/field_map.h"
#include "text/language.h"

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

std::string sizeOf(const std::string& picture) {
  return picture.empty() ? "" : text::say("%1바이트", "%1 bytes", {std::to_string(picture.size())});
}

// A card that is only read.
class LooseCard : public CardHome {
 public:
  explicit LooseCard(std::string_view card) : card_(card) {}

  [[nodiscard]] bool isGroupAt(std::size_t) const override { return false; }
  [[nodiscard]] const std::optional<std::string>& vlidAt(std::size_t) const override {
    return noKey_;
  }
  [[nodiscard]] text::DateTime timeAt(std::size_t) const override { return {}; }
  [[nodiscard]] std::string readCard(std::size_t) override { return std::string(card_); }
  void saveCard(std::size_t, const std::string&, std::optional<std::string>,
                const std::string&) override {
    refuse();
  }
  [[nodiscard]] std::size_t saveNewCard(const std::string&, const std::string&,
                                        std::optional<std::string>, const std::string&) override {
    refuse();
  }

 private:
  [[noreturn]] static void refuse() {
    throw ContactStoreError(text::say("읽기만 하는 연락처입니다", "this contact is read-only"));
  }

  std::string_view card_;
  std::optional<std::string> noKey_;
};

}  // namespace

void compareContacts(VCardContact& before, VCardContact& after, const FieldChanged& changed) {
  const auto compare = [&](std::string_view caption, const std::string& old,
                           const std::string& now) {
    if (old != now) changed(caption, old, now);
  };
  compare(fieldCaption("FullName"), shownText(before, ContactProperty::FullName),
          shownText(after, ContactProperty::FullName));
  for (const MappedField& field : mappedFields()) {
    compare(fieldCaption(field.column), fieldTextFromContact(before, field).value_or(""),
            fieldTextFromContact(after, field).value_or(""));
  }
  compare(text::say("보이는 사진", "shown picture"), sizeOf(before.shownPicture()),
          sizeOf(after.shownPicture()));
  const Attachments old = attachmentsOf(before);
  const Attachments now = attachmentsOf(after);
  if (old.contents != now.contents || old.names != now.names) {
    changed(text::say("사진", "picture"), old.names,
            now.names + (old.names == now.names ? text::say(" (새 사진)", " (another)") : ""));
  }
}

void compareCards(std::string_view before, std::string_view after, const FieldChanged& changed) {
  LooseCard oldHome(before);
  LooseCard newHome(after);
  VCardContact old(oldHome, 1);
  VCardContact now(newHome, 1);
  compareContacts(old, now, changed);
}

}  // namespace vlout::outlook::vcard
