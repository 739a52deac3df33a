#include "transfer/transfer.h"

#include <algorithm>

#include "outlook/normalizer.h"
#include "outlook/pairing.h"
#include "store/sql.h"
#include "text/ascii.h"
#include "text/date_time.h"
#include "text/latin_script.h"
#include "text/trim.h"
#include "transfer/change_detection.h"
#include "transfer/row_stamps.h"

namespace vlout::transfer {

using outlook::Contact;
using outlook::ContactProperty;

namespace {

// The row was last transferred with the contact as it is.
bool hasTimeOf(const WorkListRow& row, Contact& contact) {
  const auto transferred = text::parseDateTime(row.outlookModified);
  return transferred && *transferred == text::toWholeSeconds(contact.lastModificationTime());
}

}  // namespace

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

// Empty for a run without failures, whose message is fixed.
std::string Transfer::failuresText() const {
  if (failures_ == 0) return {};
  return "\r\n\r\n처리하지 못한 자료가 " + std::to_string(failures_) + "건 있습니다.";
}

void Transfer::hideProgress() {
  window_.showProgress(false);
  window_.setProgress(0);
}

void Transfer::openFolder() {
  // The window remembers a request to stop, and the walk over the contacts obeys it.
  contacts_.openContactsFolder([this] { window_.keepAlive(); });
  // A contact without a key that comes first must not take the row of one that has it.
  std::vector<Carrier> carriers;
  for (std::size_t i = 1; i <= contacts_.count(); ++i) {
    const auto row = list_.reserve(text::trim(contacts_.keyWhenOpened(i)));
    if (row) carriers.push_back({*row, i});
  }
  std::stable_sort(carriers.begin(), carriers.end(),
                   [](const Carrier& a, const Carrier& b) { return a.row < b.row; });
  for (auto first = carriers.begin(); first != carriers.end();) {
    const auto last = std::find_if(first, carriers.end(),
                                   [&](const Carrier& each) { return each.row != first->row; });
    if (last - first > 1) leaveOutDoubles({first, last});
    first = last;
  }
}

void Transfer::leaveOutDoubles(std::span<const Carrier> carriers) {
  const auto owner = ownerOf(list_.row(carriers.front().row), carriers);
  for (const Carrier& each : carriers) {
    (each.contact == owner ? owners_ : doubles_).insert(each.contact);
  }
}

// The contact that the row was last transferred with, else the one of its name, else the first. If
// one of them cannot be read and no time decides, it may be any of them.
std::optional<std::size_t> Transfer::ownerOf(const WorkListRow& row,
                                             std::span<const Carrier> carriers) {
  std::optional<std::size_t> owner;
  int best = -1;
  bool unreadable = false;
  for (const Carrier& each : carriers) {
    try {
      const auto contact = contacts_.item(each.contact);
      const int claim = (hasTimeOf(row, *contact) ? 2 : 0) + (hasNameOf(row, *contact) ? 1 : 0);
      if (claim > best) owner = each.contact;
      best = std::max(best, claim);
    } catch (const outlook::ContactStoreError&) {
      unreadable = true;  // reported when its turn comes
    }
  }
  if (unreadable && best < 2) return std::nullopt;
  return owner;
}

bool Transfer::mayBeCopy(const WorkListRow& row, Contact& contact, std::size_t position) {
  if (!contacts_.mayHideContacts() || owners_.contains(position)) return false;
  return !hasNameOf(row, contact) && !hasTimeOf(row, contact);
}

void Transfer::reportFolderNotices() {
  for (const std::string& notice : contacts_.folderNotices()) {
    addLine(window_, notice, "0%", "제외");
  }
}

std::string Transfer::nameOfRecord(std::size_t position) {
  if (const auto row = list_.find(text::trim(contacts_.keyWhenOpened(position)))) {
    return list_.row(*row).name;
  }
  const outlook::PersonName name = contacts_.nameWhenOpened(position);
  if (!name.empty()) return name.last + name.first;
  try {
    return outlook::joinedName(*contacts_.item(position));
  } catch (const outlook::ContactStoreError&) {
    return "#" + std::to_string(position);
  }
}

void Transfer::removeRowOf(std::size_t position) {
  if (isDouble(position)) return;
  const auto row = list_.findById(text::trim(contacts_.keyWhenOpened(position)));
  if (row) list_.remove(*row);
}

void Transfer::flushContacts() {
  contacts_.flush([this](const outlook::LostSave& lost) {
    if (!lost.row.empty()) forgetTransfer(connection_, lost.row, lost.contactTime);
    reportFailure(lost.person, lost.cause);
  });
}

bool Transfer::hasNameOf(const WorkListRow& row, Contact& contact) {
  const std::string rowName = outlook::normalize(row.name);
  const std::string last = contact.text(ContactProperty::LastName);
  const std::string first = contact.text(ContactProperty::FirstName);
  return outlook::normalize(last + first) == rowName || outlook::normalize(first + last) == rowName;
}

RowStamps Transfer::stampsOf(const WorkListRow& row) {
  return {.lastModified = text::parseDateTime(row.lastModified),
          .outlookModified = text::parseDateTime(row.outlookModified),
          .lastSync = text::parseDateTime(row.lastSync)};
}

Person Transfer::personOf(Contact& contact) {
  return {.name = outlook::joinedName(contact),
          .mobile = contact.text(ContactProperty::MobileTelephoneNumber),
          .email = contact.text(ContactProperty::Email1Address)};
}

std::optional<PersonMatch::Choice> Transfer::findByPerson(Contact& contact) const {
  if (list_.empty()) return std::nullopt;  // no need to read the contact
  Person person = personOf(contact);
  std::string joined = person.name;
  // "지" "민" and "민" "지" are two people; in Latin script the order is only a way of writing.
  const Evidence evidence =
      text::isLatinScript(joined) ? Evidence::NameAlone : Evidence::EqualValue;
  person.name = outlook::normalize(person.name);
  if (const auto found = list_.findByNormalizedName(person)) return found;
  person.name = outlook::normalize(contact.text(ContactProperty::FirstName) +
                                   contact.text(ContactProperty::LastName));
  return list_.findByNormalizedName(person, evidence);
}

void Transfer::reportDouble(Contact& contact) {
  const std::string key = outlook::readVLID(contact);
  addLine(window_, "VLID 중복(" + outlook::joinedName(contact) + "): " + key, "0%", "제외", key);
}

void Transfer::reportSecondContact(Contact& contact, std::string_view rowId) {
  addLine(window_, "동일인 중복(" + outlook::joinedName(contact) + "): " + std::string(rowId), "0%",
          "제외", rowId);
}

void Transfer::reportUnusableKey(Contact& contact, std::string_view key) {
  if (text::parseInteger(key)) return;  // a card that simply takes no part in this run
  addLine(window_, "VLID 오류(" + outlook::joinedName(contact) + "): " + std::string(key), "0%",
          "제외");
}

void Transfer::reportFailure(std::string_view name, std::string_view cause) {
  ++failures_;
  addLine(window_, "실패→(" + std::string(name) + "): " + std::string(cause), "0%", "실패");
}

// Most pairs have nothing to do and are only read; but no write is decided by what was read a while
// ago.
Transfer::ComparedPair Transfer::comparePair(const std::string& rowId, Contact& contact,
                                             ConflictTest test, Side writing) {
  bool together = connection_.readTogether(true);
  while (true) {
    const store::ColumnNames columns =
        together ? store::ColumnNames(kStampColumns) : store::ColumnNames();
    ComparedPair pair{store::readCard(connection_, rowId, columns), {}};
    pair.state = classifyPair(readStamps(*pair.row), contact.lastModificationTime(), test);
    const bool isLook = pair.state.newer != writing && outlook::hasVLID(contact);
    if (isLook || !together) return pair;
    together = connection_.readTogether(false);
  }
}

}  // namespace vlout::transfer
