#include "transfer/export.h"

#include <utility>

#include "outlook/normalizer.h"
#include "outlook/pairing.h"
#include "store/sql.h"
#include "text/trim.h"
#include "transfer/change_detection.h"

namespace vlout::transfer {
namespace {

using outlook::Contact;
using outlook::ContactWrite;

std::string rowName(const store::Recordset& row) {
  return std::string(text::trim(store::nullSafe(row.field("FullName"))));
}

}  // namespace

RunEnd Export::runExport() {
  const RunButtonDisabled disabled(window_);
  openFolder();
  reportFolderNotices();
  hidesContacts_ = contacts_.mayHideContacts();
  window_.showProgress(true);
  RunEnd end = RunEnd::Completed;
  if (options_.updateExisting) end = comparePhase();
  if (end == RunEnd::Completed && options_.addMissing) end = addPhase();
  flushContacts();
  const Counts counts{added_, updated_, conflicts_};
  if (end == RunEnd::Stopped) {
    addLine(window_, "내보내기 중지", counts.text(), "중지");
    hideProgress();
  } else {
    // The text on conflicts has no full stop here, unlike import's.
    finishRun({.line = "내보내기 완료",
               .message = "내보내기를 완료하였습니다.",
               .conflictsFound = "충돌자료가 발견되었습니다"},
              counts);
  }
  return end;
}

RunEnd Export::comparePhase() {
  PhaseLine heading(window_, "연락처 비교/갱신", contacts_.count());
  const RunEnd end = forEachContact(
      &heading, Stopping::Possible,
      [&](Contact& contact, std::size_t position) { compareOrMerge(contact, position); });
  heading.end(end);
  return end;
}

std::optional<Export::Pair> Export::findRow(Contact& contact, std::size_t position) {
  if (isDouble(position)) {
    reportDouble(contact);
    return std::nullopt;
  }
  try {
    const auto key = outlook::keyOf(contact);
    if (key) {
      if (const auto row = list_.findById(*key)) {
        if (!mayBeCopy(list_.row(*row), contact, position)) return Pair{*row, true};
        reportDouble(contact);
        return std::nullopt;
      }
      reportUnusableKey(contact, *key);
    }
    return findRowByPerson(contact, key.has_value());
  } catch (const outlook::ContactStoreError&) {
    if (contacts_.keyWhenOpened(position).empty()) reserveRowsOf(position);
    throw;
  }
}

// An unreadable contact without a key may belong to any listed card of the name that it had, and
// none of them must get a second one. If even the name is unknown, it may belong to any card that
// was sent before.
void Export::reserveRowsOf(std::size_t position) {
  const outlook::PersonName name = contacts_.nameWhenOpened(position);
  if (name.empty()) hidesContacts_ = true;
  list_.reserveName(outlook::normalize(name.last + name.first));
  list_.reserveName(outlook::normalize(name.first + name.last));
}

std::optional<Export::Pair> Export::findRowByPerson(Contact& contact, bool keyed) {
  auto match = findByPerson(contact);
  // Inverted on purpose: a contact whose key belongs to no row of the list is left alone if its
  // normalised name does find a row.
  if (keyed && match) return std::nullopt;
  if (!match && !list_.empty()) match = list_.findByName(personOf(contact));
  if (!match) return std::nullopt;
  if (match->taken) {
    reportSecondContact(contact, list_.row(match->candidate).id);
    return std::nullopt;
  }
  return Pair{match->candidate, keyed};
}

void Export::compareOrMerge(Contact& contact, std::size_t position) {
  const auto pair = findRow(contact, position);
  if (!pair) return;
  const PairedRow paired(list_, pair->position);
  const WorkListRow& row = list_.row(pair->position);
  record_ = row.name;
  if (pair->byKey) {
    compare(row.id, contact);
  } else if (rowUpdate_.mergeForImport(row.id, contact, options_.map)) {
    ++updated_;
  } else {
    ++failures_;
  }
}

void Export::compare(const std::string& rowId, Contact& contact) {
  const auto [row, state] =
      comparePair(rowId, contact,
                  options_.testConflicts ? ConflictTest::Straight : ConflictTest::Off, Side::Row);
  if (state.newer != Side::Row) {
    if (!outlook::hasVLID(contact)) {
      outlook::addVLID(contact, rowId);
      contact.save();
    }
    return;
  }
  const std::string name = rowName(*row);
  if (state.conflict) {
    window_.conflictFound(rowId, contact);
    addLine(window_, "→충돌←(" + name + ")", "0%", "제외", rowId);
    ++conflicts_;
    return;
  }
  outlook::writeContactFromRow(contact, *row, ContactWrite::Update, options_.map);
  stampRow(connection_, contact.lastModificationTime(), rowId);
  addLine(window_, "갱신→(" + name + ")", "100%", "완료", rowId);
  ++updated_;
}

RunEnd Export::addPhase() {
  PhaseLine heading(window_, "연락처 추가", list_.size());
  RunEnd end = RunEnd::Completed;
  if (!options_.updateExisting) {
    // Rows that already have a contact are dropped, without comparing or writing anything.
    end = forEachContact(nullptr, Stopping::Possible, [&](Contact& contact, std::size_t position) {
      if (const auto pair = findRow(contact, position)) list_.remove(pair->position);
    });
  }
  const auto positions = list_.remaining();
  heading.setSteps(positions.size());
  std::vector<Addition> additions;
  for (std::size_t n = 0; end == RunEnd::Completed && n < positions.size(); ++n) {
    heading.advance(n + 1);
    if (window_.yield()) {
      end = RunEnd::Stopped;
    } else {
      additions.push_back(beginAdding(list_.row(positions[n])));
      if (additions.back().failure || !contacts_.postponesNext()) finishAdding(additions);
    }
  }
  finishAdding(additions);
  heading.end(end);
  return end;
}

// A failure is kept until it is the record's turn to be reported.
Export::Addition Export::beginAdding(const WorkListRow& row) {
  Addition addition{.row = row};
  try {
    writeNew(addition);
  } catch (const std::exception&) {
    addition.failure = std::current_exception();
  }
  return addition;
}

void Export::writeNew(Addition& addition) {
  const WorkListRow& listed = addition.row;
  const bool sentBefore = text::parseDateTime(listed.lastSync).has_value();
  if (list_.isReserved(listed.id) || (sentBefore && hidesContacts_)) {
    // A card whose contact exists but could not be read must not get a second one.
    throw outlook::ContactStoreError("이 명함의 연락처를 읽지 못하여 새로 보내지 않습니다");
  }
  const auto row = store::readCard(connection_, listed.id);
  addition.name = rowName(*row);
  addition.contact = contacts_.create();
  outlook::MapOptions map = options_.map;
  map.pictureFailed = [&](std::string_view, std::string_view cause) {
    addition.pictureFailure = cause;
  };
  outlook::writeContactFromRow(*addition.contact, *row, ContactWrite::Create, map);
}

void Export::finishAdding(std::vector<Addition>& additions) {
  contacts_.savePostponed();
  for (const Addition& each : std::exchange(additions, {})) {
    guarded([&] { return each.row.name; }, [&] { finishAdding(each); });
  }
}

void Export::finishAdding(const Addition& addition) {
  if (!addition.pictureFailure.empty() && options_.map.pictureFailed) {
    options_.map.pictureFailed(addition.name, addition.pictureFailure);
  }
  if (addition.failure) std::rethrow_exception(addition.failure);
  const std::string& id = addition.row.id;
  stampRow(connection_, addition.contact->lastModificationTime(), id);
  window_.selectResult(addLine(window_, "추가→(" + addition.name + ")", "100%", "완료", id));
  ++added_;
}

}  // namespace vlout::transfer
