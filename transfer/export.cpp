#include "transfer/export.h"

#include "outlook/normalizer.h"
#include "outlook/pairing.h"
#include "store/sql.h"
#include "text/ascii.h"
#include "text/trim.h"
#include "transfer/change_detection.h"

namespace vlout::transfer {
namespace {

using outlook::Contact;
using outlook::ContactProperty;
using outlook::ContactWrite;

// Gives the run button back, whatever ends the run.
class RunButtonDisabled {
 public:
  explicit RunButtonDisabled(RunWindow& window) : window_(window) {
    window_.enableRunButton(false);
  }
  ~RunButtonDisabled() { window_.enableRunButton(true); }
  RunButtonDisabled(const RunButtonDisabled&) = delete;
  RunButtonDisabled& operator=(const RunButtonDisabled&) = delete;

 private:
  RunWindow& window_;
};

std::string rowName(const store::Recordset& row) {
  return std::string(text::trim(store::nullSafe(row.field("FullName"))));
}

}  // namespace

RunEnd Export::run() {
  const RunButtonDisabled disabled(window_);
  contacts_.openContactsFolder();
  for (const std::string& notice : contacts_.folderNotices()) {
    addLine(window_, notice, "0%", "제외");
  }
  window_.showProgress(true);
  RunEnd end = RunEnd::Completed;
  if (options_.updateExisting) end = comparePhase();
  if (end == RunEnd::Completed && options_.addMissing) end = addPhase();
  contacts_.flush();
  close(end);
  window_.setProgress(0);
  window_.showProgress(false);
  return end;
}

RunEnd Export::comparePhase() {
  const std::size_t count = contacts_.count();
  PhaseLine heading(window_, "연락처 비교/갱신", count);
  for (std::size_t i = 1; i <= count; ++i) {
    heading.advance(i);
    if (window_.yield()) {
      heading.stop();
      return RunEnd::Stopped;
    }
    compareItem(i);
  }
  heading.finish();
  return RunEnd::Completed;
}

void Export::compareItem(std::size_t index) {
  std::optional<Pair> pair;
  try {
    const auto contact = contacts_.item(index);
    if (contact->typeName() != outlook::kContactItem) return;
    pair = findRow(*contact);
    if (pair) compareOrMerge(*pair, *contact);
  } catch (const std::exception& error) {
    if (!connection_.isOpen()) throw;
    reportFailure(pair ? list_.row(pair->position).name : "#" + std::to_string(index), error);
  }
  // Also after a failure: the row has its contact, and the add phase must not make a second one.
  if (pair) list_.remove(pair->position);
}

std::optional<Export::Pair> Export::findRow(Contact& contact) {
  const bool keyed = outlook::hasVLID(contact);
  if (keyed) {
    const std::string key = outlook::readVLID(contact);
    if (const auto position = list_.findById(key)) return Pair{*position, true};
    reportKey(contact, key);
  }
  if (list_.size() == 0) return std::nullopt;  // no need to read the contact's name
  Person person{.name = outlook::joinedName(contact),
                .mobile = contact.text(ContactProperty::MobileTelephoneNumber),
                .email = contact.text(ContactProperty::Email1Address)};
  const std::string nameAsItStands = person.name;
  person.name = outlook::normalize(nameAsItStands);
  auto position = list_.findByNormalizedName(person);
  // Inverted on purpose: a contact whose key names no row of the list is left alone when its
  // normalised name does find a row.
  if (keyed && position) return std::nullopt;
  if (!position) {
    person.name = nameAsItStands;
    position = list_.findByName(person);
  }
  if (!position) return std::nullopt;
  return Pair{*position, keyed};
}

void Export::compareOrMerge(const Pair& pair, Contact& contact) {
  const std::string& rowId = list_.row(pair.position).id;
  if (pair.byKey) {
    compare(rowId, contact);
  } else if (rowUpdate_.mergeForImport(rowId, contact, options_.map)) {
    ++updated_;
  }
}

void Export::compare(const std::string& rowId, Contact& contact) {
  const auto row = store::readCard(connection_, rowId);
  const PairState state =
      classifyPair(readStamps(*row), contact.lastModificationTime(),
                   options_.testConflicts ? ConflictTest::Straight : ConflictTest::Off);
  if (state.newer != Side::Row) {
    if (!outlook::hasVLID(contact)) {
      outlook::addVLID(contact, rowId);
      contact.save();
    }
    return;
  }
  const std::string name = rowName(*row);
  if (state.conflict) {
    addLine(window_, "→충돌←(" + name + ")", "0%", "제외");
    ++conflicts_;
    return;
  }
  outlook::writeContactFromRow(contact, *row, ContactWrite::Update, options_.map);
  writeSyncDates(connection_, contact.lastModificationTime(), rowId);
  addLine(window_, "갱신→(" + name + ")", "100%", "완료");
  ++updated_;
}

RunEnd Export::addPhase() {
  PhaseLine heading(window_, "연락처 추가", list_.size());
  RunEnd end = options_.updateExisting ? RunEnd::Completed : dropPairedRows();
  const auto positions = list_.remaining();
  heading.setSteps(positions.size());
  for (std::size_t n = 0; end == RunEnd::Completed && n < positions.size(); ++n) {
    heading.advance(n + 1);
    if (window_.yield()) {
      end = RunEnd::Stopped;
      break;
    }
    const WorkListRow& row = list_.row(positions[n]);
    try {
      add(row.id);
    } catch (const std::exception& error) {
      if (!connection_.isOpen()) throw;
      reportFailure(row.name, error);
    }
  }
  if (end == RunEnd::Completed) {
    heading.finish();
  } else {
    heading.stop();
  }
  return end;
}

RunEnd Export::dropPairedRows() {
  const std::size_t count = contacts_.count();
  for (std::size_t i = 1; i <= count; ++i) {
    if (window_.yield()) return RunEnd::Stopped;
    try {
      const auto contact = contacts_.item(i);
      if (contact->typeName() != outlook::kContactItem) continue;
      if (const auto pair = findRow(*contact)) list_.remove(pair->position);
    } catch (const outlook::ContactStoreError& error) {
      reportFailure("#" + std::to_string(i), error);
    }
  }
  return RunEnd::Completed;
}

void Export::add(const std::string& rowId) {
  const auto row = store::readCard(connection_, rowId);
  const auto contact = contacts_.create();
  outlook::writeContactFromRow(*contact, *row, ContactWrite::Create, options_.map);
  writeSyncDates(connection_, contact->lastModificationTime(), rowId);
  window_.selectResult(addLine(window_, "추가→(" + rowName(*row) + ")", "100%", "완료"));
  ++added_;
}

void Export::reportKey(Contact& contact, std::string_view key) {
  const bool number = text::parseInteger(key).has_value();
  if (number && !list_.wasRemoved(key)) return;  // a card that simply takes no part in this run
  const std::string reason = number ? "VLID 중복" : "VLID 오류";
  addLine(window_, reason + "(" + outlook::joinedName(contact) + "): " + std::string(key), "0%",
          "제외");
}

void Export::reportFailure(std::string_view name, const std::exception& error) {
  addLine(window_, "실패→(" + std::string(name) + "): " + error.what(), "0%", "실패");
}

std::string Export::summary() const {
  std::string text = "추가=" + std::to_string(added_) + "/갱신=" + std::to_string(updated_);
  if (conflicts_ != 0) text += "/충돌=" + std::to_string(conflicts_);
  return text;
}

void Export::close(RunEnd end) {
  if (end == RunEnd::Stopped) {
    addLine(window_, "내보내기 중지", summary(), "중지");
    return;
  }
  addLine(window_, "내보내기 완료", summary(), "");
  std::string text = "내보내기를 완료하였습니다.\r\n" + summary();
  if (conflicts_ != 0) {
    text +=
        "\r\n\r\n충돌자료가 발견되었습니다\r\n상호갱신 작업을 통해 직접 비교/처리가 가능합니다.";
  }
  window_.message(MessageIcon::Information, text);
}

}  // namespace vlout::transfer
