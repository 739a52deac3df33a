#include "transfer/transfer.h"

#include "outlook/normalizer.h"
#include "outlook/pairing.h"
#include "text/ascii.h"

namespace vlout::transfer {

using outlook::Contact;
using outlook::ContactProperty;

std::string Transfer::Counts::text() const {
  std::string text = "추가=" + std::to_string(added) + "/갱신=" + std::to_string(updated);
  if (conflicts != 0) text += "/충돌=" + std::to_string(conflicts);
  return text;
}

void Transfer::finishRun(const ClosingTexts& texts, const Counts& counts) {
  addLine(window_, texts.line, counts.text(), "");
  std::string message = std::string(texts.message) + "\r\n" + counts.text();
  if (counts.conflicts != 0) {
    message.append("\r\n\r\n").append(texts.conflictsFound);
    message += "\r\n상호갱신 작업을 통해 직접 비교/처리가 가능합니다.";
  }
  window_.message(MessageIcon::Information, message + failuresText());
  hideProgress();
}

// Nothing for a run without failures, whose message is fixed.
std::string Transfer::failuresText() const {
  if (failures_ == 0) return {};
  return "\r\n\r\n처리하지 못한 자료가 " + std::to_string(failures_) + "건 있습니다.";
}

void Transfer::hideProgress() {
  window_.showProgress(false);
  window_.setProgress(0);
}

void Transfer::openFolder() {
  // A wish to stop is kept by the window; the walk over the contacts heeds it.
  contacts_.openContactsFolder([this] { window_.keepAlive(); });
  for (const std::string& notice : contacts_.folderNotices()) {
    addLine(window_, notice, "0%", "제외");
  }
  // A contact without a key that comes first must not take the row of one that has it.
  keys_ = contacts_.keys();
  for (const std::string& key : keys_) list_.reserve(key);
}

void Transfer::flushContacts() {
  for (const auto& [person, cause] : contacts_.flush()) reportFailure(person, cause);
}

Person Transfer::personOf(Contact& contact) {
  return {.name = outlook::joinedName(contact),
          .mobile = contact.text(ContactProperty::MobileTelephoneNumber),
          .email = contact.text(ContactProperty::Email1Address)};
}

std::optional<WorkList::Position> Transfer::findByPerson(Contact& contact) const {
  if (list_.size() == 0) return std::nullopt;  // no need to read the contact
  Person person = personOf(contact);
  person.name = outlook::normalize(person.name);
  if (const auto found = list_.findByNormalizedName(person)) return found;
  person.name = outlook::normalize(contact.text(ContactProperty::FirstName) +
                                   contact.text(ContactProperty::LastName));
  return list_.findByNormalizedName(person);
}

void Transfer::reportUnusableKey(Contact& contact, std::string_view key) {
  const bool number = text::parseInteger(key).has_value();
  if (number && !list_.wasRemoved(key)) return;  // a card that simply takes no part in this run
  if (key.empty()) return;                       // given back after a failed import
  const std::string reason = number ? "VLID 중복" : "VLID 오류";
  addLine(window_, reason + "(" + outlook::joinedName(contact) + "): " + std::string(key), "0%",
          "제외");
}

void Transfer::reportFailure(std::string_view name, std::string_view cause) {
  ++failures_;
  addLine(window_, "실패→(" + std::string(name) + "): " + std::string(cause), "0%", "실패");
}

}  // namespace vlout::transfer
