#include "transfer/import.h"

#include <algorithm>

#include "outlook/normalizer.h"
#include "outlook/pairing.h"
#include "store/sql.h"
#include "text/ascii.h"
#include "text/trim.h"
#include "transfer/change_detection.h"

namespace vlout::transfer {
namespace {

using outlook::Contact;

}  // namespace

RunEnd Import::runImport() {
  const RunButtonDisabled disabled(window_);
  pending_.clear();
  openFolder();
  reportFolderNotices();
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
  if (isDouble(position)) {
    reportDouble(contact);
  } else if (const auto key = outlook::keyOf(contact)) {
    if (const auto listed = list_.findById(*key)) {
      const PairedRow paired(list_, *listed);
      record_ = list_.row(*listed).name;
      if (mayBeCopy(list_.row(*listed), contact, position)) {
        reportDouble(contact);
        return;
      }
      const Compared result = compareForImport(list_.row(*listed).id, contact);
      if (result == Compared::Updated) ++updated_;
      if (result == Compared::Conflict) ++conflicts_;
      return;
    }
    reportUnusableKey(contact, *key);
    if (!findDuplicateByName(personOf(contact))) addLater(contact, position);
  } else if (const auto row = findRowOfPerson(contact)) {
    if (!row->taken) mergeInto(row->id, contact);
  } else {
    addLater(contact, position);
  }
}

// The compare pass without comparing: it only finds the contacts that have no row.
void Import::collectContact(Contact& contact, std::size_t position) {
  if (isDouble(position)) {
    reportDouble(contact);
  } else if (const auto key = outlook::keyOf(contact)) {
    if (const auto listed = list_.findById(*key)) {
      list_.remove(*listed);
      return;
    }
    reportUnusableKey(contact, *key);
    if (text::parseInteger(*key) && store::cardExists(connection_, *key)) return;
    if (!findDuplicateByName(personOf(contact))) addLater(contact, position);
  } else if (const auto row = findRowOfPerson(contact)) {
    if (const auto listed = list_.findById(row->id); listed && !row->taken) list_.remove(*listed);
  } else {
    addLater(contact, position);
  }
}

std::optional<Import::FoundRow> Import::findRowOfPerson(Contact& contact) {
  std::optional<FoundRow> found;
  if (const auto listed = findByPerson(contact)) {
    found = {list_.row(listed->candidate).id, listed->taken};
  } else if (const auto rowId = findDuplicateByName(personOf(contact))) {
    found = {*rowId, list_.isTaken(*rowId)};
  }
  if (found && found->taken) reportSecondContact(contact, found->id);
  return found;
}

std::optional<std::string> Import::findDuplicateByName(const Person& person) {
  const std::string name = text::replaceAll(outlook::normalize(person.name), " ", "");
  const auto rows = connection_.query(
      "SELECT i_idx,FullName,cellphone,email,Categories from [tbl_namecard] where  ([FullName]=" +
      store::sqlLiteral(name) + " AND [P_IDX]=0) ");
  const bool hasNumber = !text::digitsOnly(person.mobile).empty();
  const bool hasAddress = !text::trim(person.email).empty();
  std::vector<std::string> ids;
  PersonMatch match;
  for (; !rows->atEnd(); rows->moveNext()) {
    ids.emplace_back(store::nullSafe(rows->field("i_idx")));
    match.offer(ids.size() - 1,
                likeness(text::digitsOnly(store::nullSafe(rows->field("cellphone"))),
                         text::trim(store::nullSafe(rows->field("email"))), person),
                list_.isTaken(ids.back()));
  }
  // If a contact has nothing to tell several rows apart by, the first one is taken; if it has both
  // a number and an address, one of them must match. A nameless contact always needs a match.
  if (ids.size() > 1 && !hasNumber && !hasAddress && !name.empty()) return ids.front();
  const auto choice = match.choose(name.empty() || (hasNumber && hasAddress) ? Evidence::EqualValue
                                                                             : Evidence::NameAlone);
  return choice ? std::optional(ids[choice->candidate]) : std::nullopt;
}

// --- updating -----------------------------------------------------------------------------------

void Import::mergeInto(const std::string& rowId, Contact& contact) {
  std::optional<PairedRow> paired;
  if (const auto listed = list_.findById(rowId)) paired.emplace(list_, *listed);
  if (rowUpdate_.mergeForImport(rowId, contact, options_.map)) {
    ++updated_;
  } else {
    ++failures_;
  }
}

Import::Compared Import::compareForImport(const std::string& rowId, Contact& contact) {
  const auto [row, state] = comparePair(
      rowId, contact, options_.testConflicts ? ConflictTest::Straight : ConflictTest::Off,
      Side::Contact);
  if (state.newer != Side::Contact) {
    if (!outlook::hasVLID(contact)) {
      outlook::addVLID(contact, rowId);
      contact.save();
      stampRow(connection_, contact.lastModificationTime(), rowId);
    }
    return Compared::Nothing;
  }
  const std::string name(text::trim(store::nullSafe(row->field("FullName"))));
  if (state.conflict) {
    window_.conflictFound(rowId, contact);
    window_.selectResult(addLine(window_, "→충돌←(" + name + ")", "0%", "제외", rowId));
    return Compared::Conflict;
  }
  if (!rowUpdate_.updateRowFromContact(rowId, contact)) {
    ++failures_;
    return Compared::Nothing;
  }
  window_.selectResult(addLine(window_, "←갱신(" + name + ")", "100%", "완료", rowId));
  return Compared::Updated;
}

// --- adding -------------------------------------------------------------------------------------

void Import::addLater(Contact& contact, std::size_t position) {
  pending_.push_back(position);
  pendingNames_.emplace(position, outlook::joinedName(contact));
}

void Import::addPhase() {
  if (pending_.empty()) return;
  const auto keyOf = [&](std::size_t position) {
    return std::string(text::trim(contacts_.keyWhenOpened(position)));
  };
  const std::unordered_set<std::size_t> pending(pending_.begin(), pending_.end());
  for (std::size_t i = 1; i <= contacts_.count(); ++i) {
    const std::string key = keyOf(i);
    if (key.empty()) continue;
    if (pending.contains(i)) {
      waiting_.emplace(key, i);
    } else {
      keptNumbers_.insert(key);
    }
  }
  PhaseLine heading(window_, "연락처 추가", pending_.size());
  for (std::size_t n = 0; n < pending_.size(); ++n) {
    const std::size_t position = pending_[n];
    heading.advance(n + 1);
    static_cast<void>(window_.yield());
    const auto [first, last] = waiting_.equal_range(keyOf(position));
    const auto own =
        std::find_if(first, last, [&](const auto& each) { return each.second == position; });
    if (own != last) waiting_.erase(own);
    const bool done =
        guarded([&] { return pendingNames_.at(position); }, [&] { addContactAsRow(position); });
    if (!done) keptNumbers_.insert(keyOf(position));
  }
  heading.finish();
}

// The next card number. A contact that lost its row may still carry a number that is free again; if
// a new row got that number, the contact would be taken for the new row's.
std::string Import::nextFreeId() {
  for (int id = store::nextCardId(connection_); id <= INT16_MAX; ++id) {
    std::string number = std::to_string(id);
    if (!keptNumbers_.contains(number) && releaseNumber(number)) return number;
  }
  throw std::overflow_error("명함 번호가 32767을 넘습니다.");
}

// Takes a number off the contacts that carry it and will get another one later in this run: if
// their turn fails, they must not keep a number that is somebody else's by then. False if one of
// them keeps it.
bool Import::releaseNumber(const std::string& number) {
  const auto [first, last] = waiting_.equal_range(number);
  for (auto each = first; each != last; each = waiting_.erase(each)) {
    try {
      const auto contact = contacts_.item(each->second);
      outlook::addVLID(*contact, "");
      contact->save();
    } catch (const outlook::ContactStoreError&) {
      keptNumbers_.insert(number);  // its own turn will report it
      return false;
    }
  }
  return true;
}

void Import::addContactAsRow(std::size_t position) {
  const auto contact = contacts_.item(position);
  const std::string name = outlook::rowNameFromContact(*contact);
  record_ = name;
  const std::string key = outlook::keyOf(*contact).value_or("");
  // Everything is read before the contact gets the number, so that a failed read leaves no number
  // on it.
  const auto row = rowUpdate_.readNewRow(*contact, target_);
  const std::string rowId = nextFreeId();
  try {
    outlook::addVLID(*contact, rowId);
    contact->save();
    rowUpdate_.insertRow(rowId, row, contact->lastModificationTime());
  } catch (...) {
    giveBackKey(*contact, key, rowId);
    throw;
  }
  window_.selectResult(addLine(window_, "←추가(" + name + ")", "100%", "완료", rowId));
  ++added_;
}

// The number is now free for the next row, so the contact must not keep it. If it cannot be taken
// back, the number is not free.
void Import::giveBackKey(Contact& contact, const std::string& key, const std::string& rowId) {
  keptNumbers_.insert(key);
  try {
    outlook::addVLID(contact, key);
    contact.save();
  } catch (const outlook::ContactStoreError&) {
    keptNumbers_.insert(rowId);  // the failure that led here is the one that is reported
  }
}

}  // namespace vlout::transfer
