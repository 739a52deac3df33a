#include "transfer/sync.h"

#include "outlook/normalizer.h"
#include "outlook/pairing.h"
#include "store/sql.h"

namespace vlout::transfer {

using outlook::Contact;

RunEnd Sync::runSync() {
  const RunButtonDisabled disabled(window_);
  openFolder();
  window_.showProgress(true);
  PhaseLine heading(window_, "연락처 비교/갱신", contacts_.count());
  const RunEnd end = forEachContact(
      &heading, Stopping::Possible,
      [&](Contact& contact, std::size_t position) { syncContact(contact, position); });
  heading.end(end);
  flushContacts();
  close(end);
  return end;
}

void Sync::syncContact(Contact& contact, std::size_t position) {
  if (isDouble(position)) return;
  const auto key = outlook::keyOf(contact);
  if (!key) return;
  const auto listed = list_.findById(*key);
  if (!listed) return;
  PairedRow paired(list_, *listed);
  const WorkListRow& row = list_.row(*listed);
  record_ = row.name;
  if (mayBeCopy(row, contact, position)) return;
  const RowStamps stamps = stampsOf(row);
  const text::DateTime contactTime = contact.lastModificationTime();
  const PairState state = classifyPair(
      stamps, contactTime, options_.showConflicts ? ConflictTest::Crosswise : ConflictTest::Off);
  if (state.newer == Side::Neither) return;
  using P = outlook::ContactProperty;
  const std::string shown = outlook::normalize(outlook::shownText(contact, P::LastName) +
                                               outlook::shownText(contact, P::FirstName));
  const std::string& name = shown.empty() ? row.name : shown;
  if (state.conflict) {
    settle({contact, row.id, stamps.lastModified, contactTime, row.folderName}, state.newer, name);
    if (stopped_) paired.keep();  // the pair that the user stopped at stays in the list
  } else {
    transfer(state.newer, row.id, contact, name);
  }
}

void Sync::transfer(Side newer, const std::string& rowId, Contact& contact,
                    const std::string& name) {
  if (newer == Side::Row) {
    toOutlook(rowUpdate_.updateContactFromRow(rowId, contact, options_.map), rowId, name);
  } else {
    toCards(rowUpdate_.updateRowForSync(rowId, contact), rowId, name);
  }
}

void Sync::settle(const ConflictPair& pair, Side newer, const std::string& name) {
  window_.conflictFound(pair.rowId, pair.contact);
  switch (conflicts_.resolve(pair)) {
    case kSkipPair:
      addLine(window_, "→충돌←(" + name + ")", "0%", "제외", pair.rowId);
      break;
    case kTakeNewerSide:
      transfer(newer, pair.rowId, pair.contact, name);
      break;
    case kKeepCardSide:
      toOutlook(conflicts_.saveCardSide(pair), pair.rowId, name);
      break;
    case kKeepOutlookSide:
      toCards(conflicts_.saveOutlookSide(pair), pair.rowId, name);
      break;
    case kStopRun:
      stopped_ = true;
      break;
    default:
      break;  // nothing is written, and nothing is shown
  }
}

void Sync::toOutlook(bool done, const std::string& rowId, const std::string& name) {
  if (!done) {
    ++failures_;
    return;
  }
  addLine(window_, "아웃룩→" + name, "100%", "완료", rowId);
  ++contactsUpdated_;
}

void Sync::toCards(bool done, const std::string& rowId, const std::string& name) {
  if (!done) {
    ++failures_;
    return;
  }
  addLine(window_, "벨모라→" + name, "100%", "완료", rowId);
  ++cardsUpdated_;
}

void Sync::close(RunEnd end) {
  const std::string counts =
      "벨모라=" + std::to_string(cardsUpdated_) + "/아웃룩=" + std::to_string(contactsUpdated_);
  if (end == RunEnd::Stopped) {
    addLine(window_, "갱신중지", "중지됨", "");
    window_.message(MessageIcon::Exclamation, "상호갱신 작업이 중지되었습니다!");
  } else {
    addLine(window_, "갱신완료", counts, "");
    window_.message(MessageIcon::Information,
                    "상호갱신 작업이 완료되었습니다.\r\n" + counts + failuresText());
  }
  hideProgress();
}

}  // namespace vlout::transfer
