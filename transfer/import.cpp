#include "transfer/import.h"

#include "outlook/normalizer.h"
#include "outlook/pairing.h"
#include "store/sql.h"
#include "text/ascii.h"
#include "text/trim.h"
#include "transfer/change_detection.h"

namespace vlout::transfer {
namespace {

using outlook::Contact;

// What two sides say of a value that both have.
bool bothHaveEqual(std::string_view row, std::string_view contact) {
  return !row.empty() && !contact.empty() && text::equalsIgnoringAsciiCase(row, contact);
}

}  // namespace

RunEnd Import::run() {
  const RunButtonDisabled disabled(window_);
  pending_.clear();
  openFolder();
  for (const std::string& key : keys_) ++carriedKeys_[key];
  window_.showProgress(true);
  if (options_.updateExisting) {
    PhaseLine heading(window_, "연락처 비교/갱신", contacts_.count());
    forEachContact(&heading, Stopping::Impossible, [&](Contact& contact, std::size_t position) {
      compareContact(contact, position);
    });
    heading.finish();
  } else if (options_.addMissing) {
    forEachContact(nullptr, Stopping::Impossible, [&](Contact& contact, std::size_t position) {
      collectContact(contact, position);
    });
  }
  if (options_.addMissing) addPhase();
  flushContacts();
  finishRun({.line = "가져오기 완료",
             .message = "가져오기를 완료하였습니다.",
             .conflictsFound = "충돌자료가 발견되었습니다."},
            {added_, updated_, conflicts_});
  return RunEnd::Completed;
}

// --- pairing ------------------------------------------------------------------------------------

void Import::compareContact(Contact& contact, std::size_t position) {
  if (outlook::hasVLID(contact)) {
    const std::string key = outlook::readVLID(contact);
    if (const auto listed = list_.findById(key)) {
      const PairedRow paired(list_, *listed);
      record_ = list_.row(*listed).name;
      const Compared result = compareForImport(list_.row(*listed).id, contact);
      if (result == Compared::Updated) ++updated_;
      if (result == Compared::Conflict) ++conflicts_;
      return;
    }
    reportUnusableKey(contact, key);
    if (!findByPerson(contact) && !findDuplicate(contact)) pending_.push_back(position);
    return;
  }
  if (const auto listed = findByPerson(contact)) {
    const PairedRow paired(list_, *listed);
    mergeInto(list_.row(*listed).id, contact);
  } else if (const auto rowId = findDuplicate(contact)) {
    // Another contact is the row's, by its key or since earlier in this run: this one is its
    // double, and merging it too would put its values over that one's.
    if (list_.isReserved(*rowId) || list_.wasRemoved(*rowId)) return;
    mergeInto(*rowId, contact);
    if (const auto left = list_.findById(*rowId)) list_.remove(*left);
  } else {
    pending_.push_back(position);
  }
}

// The compare pass without its comparing: only finds the contacts that have no row.
void Import::collectContact(Contact& contact, std::size_t position) {
  if (outlook::hasVLID(contact)) {
    const std::string key = outlook::readVLID(contact);
    if (const auto listed = list_.findById(key)) {
      list_.remove(*listed);
      return;
    }
    reportUnusableKey(contact, key);
    if (text::parseInteger(key) && store::cardExists(connection_, key)) return;
    if (findByPerson(contact) || findDuplicate(contact)) return;
  } else if (const auto listed = findByPerson(contact)) {
    list_.remove(*listed);
    return;
  } else if (findDuplicate(contact)) {
    return;
  }
  pending_.push_back(position);
}

std::optional<std::string> Import::findDuplicate(Contact& contact) {
  Person person = personOf(contact);
  person.name = outlook::normalize(person.name);
  return findDuplicateByName(person);
}

std::optional<std::string> Import::findDuplicateByName(const Person& person) {
  const std::string name = text::replaceAll(person.name, " ", "");
  const auto rows = connection_.query(
      "SELECT i_idx,FullName,cellphone,email,Categories from [tbl_namecard] where  ([FullName]=" +
      store::sqlLiteral(name) + " AND [P_IDX]=0) ");
  const std::string mobile = text::digitsOnly(person.mobile);
  const std::string_view email = text::trim(person.email);
  const bool nameAlone = mobile.empty() && email.empty();
  // A nameless contact is known by its number or e-mail, never by having neither.
  if (nameAlone && name.empty()) return std::nullopt;
  for (; !rows->atEnd(); rows->moveNext()) {
    const std::string rowMobile = text::digitsOnly(store::nullSafe(rows->field("cellphone")));
    const std::string_view rowEmail = text::trim(store::nullSafe(rows->field("email")));
    if (nameAlone || bothHaveEqual(rowMobile, mobile) || bothHaveEqual(rowEmail, email)) {
      return std::string(store::nullSafe(rows->field("i_idx")));
    }
  }
  return std::nullopt;
}

// --- updating -----------------------------------------------------------------------------------

void Import::mergeInto(const std::string& rowId, Contact& contact) {
  if (rowUpdate_.mergeForImport(rowId, contact, options_.map)) {
    ++updated_;
  } else {
    ++failures_;
  }
}

Import::Compared Import::compareForImport(const std::string& rowId, Contact& contact) {
  const auto row = store::readCard(connection_, rowId);
  const std::string name(text::trim(store::nullSafe(row->field("FullName"))));
  const PairState state =
      classifyPair(readStamps(*row), contact.lastModificationTime(),
                   options_.testConflicts ? ConflictTest::Straight : ConflictTest::Off);
  if (state.newer != Side::Contact) {
    if (!outlook::hasVLID(contact)) {
      outlook::addVLID(contact, rowId);
      contact.save();
      writeSyncDates(connection_, contact.lastModificationTime(), rowId);
    }
    return Compared::Nothing;
  }
  if (state.conflict) {
    window_.selectResult(addLine(window_, "→충돌←(" + name + ")", "0%", "제외"));
    return Compared::Conflict;
  }
  if (!rowUpdate_.updateRowFromContact(rowId, contact)) {
    ++failures_;
    return Compared::Nothing;
  }
  window_.selectResult(addLine(window_, "←갱신(" + name + ")", "100%", "완료"));
  return Compared::Updated;
}

// --- adding -------------------------------------------------------------------------------------

void Import::addPhase() {
  if (pending_.empty()) return;
  PhaseLine heading(window_, "연락처 추가", pending_.size());
  for (std::size_t n = 0; n < pending_.size(); ++n) {
    heading.advance(n + 1);
    static_cast<void>(window_.yield());
    guarded("#" + std::to_string(pending_[n]), [&] { addContactAsRow(pending_[n]); });
  }
  heading.finish();
}

// The next card number. A contact that lost its row may still carry a number that is free again;
// were a new row to get it, that contact would be taken for the new row's.
std::string Import::nextFreeId(const std::string& ownKey) {
  int id = store::nextCardId(connection_);
  while (true) {
    if (id > INT16_MAX) throw std::overflow_error("명함 번호가 32767을 넘습니다.");
    std::string text = std::to_string(id);
    const auto carried = carriedKeys_.find(text);
    const int all = carried == carriedKeys_.end() ? 0 : carried->second;
    if (all - (text == ownKey ? 1 : 0) <= 0) return text;
    ++id;
  }
}

void Import::addContactAsRow(std::size_t position) {
  const auto contact = contacts_.item(position);
  const std::string name = outlook::rowNameFromContact(*contact);
  record_ = name;
  const std::string key = outlook::hasVLID(*contact) ? outlook::readVLID(*contact) : "";
  const std::string rowId = nextFreeId(key);
  outlook::addVLID(*contact, rowId);
  contact->save();
  try {
    rowUpdate_.insertRowFromContact(rowId, *contact, target_);
  } catch (const store::DatabaseError&) {
    // The number is free for the next row now, so the contact must not keep it.
    outlook::addVLID(*contact, key);
    contact->save();
    throw;
  }
  if (!key.empty()) --carriedKeys_[key];
  window_.selectResult(addLine(window_, "←추가(" + name + ")", "100%", "완료"));
  ++added_;
}

}  // namespace vlout::transfer
