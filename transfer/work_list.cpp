#include "transfer/work_list.h"

#include "outlook/normalizer.h"
#include "text/ascii.h"
#include "text/trim.h"

namespace vlout::transfer {
namespace {

// What two sides say of one value: they agree, they differ, or it cannot be told.
enum class Agreement { Equal, Different, Unknown, BothEmpty };

Agreement compare(std::string_view row, std::string_view contact) {
  if (row.empty() && contact.empty()) return Agreement::BothEmpty;
  if (row.empty() || contact.empty()) return Agreement::Unknown;
  return text::equalsIgnoringAsciiCase(row, contact) ? Agreement::Equal : Agreement::Different;
}

bool isSamePerson(const WorkListRow& row, const Person& person) {
  const Agreement mobile = compare(row.mobile, text::digitsOnly(person.mobile));
  const Agreement email = compare(row.email, text::trim(person.email));
  if (mobile == Agreement::Different || email == Agreement::Different) return false;
  if (mobile == Agreement::Equal || email == Agreement::Equal) return true;
  const bool nameAlone = mobile == Agreement::BothEmpty && email == Agreement::BothEmpty;
  return nameAlone && !person.name.empty();
}

}  // namespace

void WorkList::clear() {
  *this = WorkList();
}

void WorkList::add(WorkListRow row) {
  // A card takes part once, even when the host lists it twice.
  if (!byId_.emplace(row.id, rows_.size()).second) return;
  rows_.push_back({std::move(row)});
  ++left_;
  namesIndexed_ = false;
}

std::vector<WorkList::Position> WorkList::remaining() const {
  std::vector<Position> positions;
  positions.reserve(left_);
  for (Position i = 0; i < rows_.size(); ++i) {
    if (rows_[i].present) positions.push_back(i);
  }
  return positions;
}

void WorkList::reserve(std::string_view id) {
  const auto found = byId_.find(std::string(id));
  if (found != byId_.end()) rows_[found->second].reserved = true;
}

void WorkList::reserveName(const std::string& normalizedName) {
  indexNames();
  const auto found = byNormalizedName_.find(normalizedName);
  if (found == byNormalizedName_.end()) return;
  for (const Position position : found->second) rows_[position].reserved = true;
}

bool WorkList::isReserved(std::string_view id) const {
  const auto found = byId_.find(std::string(id));
  return found != byId_.end() && rows_[found->second].reserved;
}

std::optional<WorkList::Position> WorkList::findById(std::string_view id) const {
  const auto found = byId_.find(std::string(id));
  if (found == byId_.end() || !rows_[found->second].present) return std::nullopt;
  return found->second;
}

bool WorkList::wasRemoved(std::string_view id) const {
  const auto found = byId_.find(std::string(id));
  return found != byId_.end() && !rows_[found->second].present;
}

std::optional<WorkList::Position> WorkList::findByNormalizedName(const Person& person) const {
  indexNames();
  return find(byNormalizedName_, person);
}

std::optional<WorkList::Position> WorkList::findByName(const Person& person) const {
  indexNames();
  return find(byName_, person);
}

void WorkList::remove(Position position) {
  if (!rows_[position].present) return;
  rows_[position].present = false;
  --left_;
}

std::optional<WorkList::Position> WorkList::find(const Index& index, const Person& person) const {
  const auto found = index.find(person.name);
  if (found == index.end()) return std::nullopt;
  for (const Position position : found->second) {
    const Entry& entry = rows_[position];
    if (entry.present && !entry.reserved && isSamePerson(entry.row, person)) return position;
  }
  return std::nullopt;
}

void WorkList::indexNames() const {
  if (namesIndexed_) return;
  byNormalizedName_.clear();
  byName_.clear();
  for (Position i = 0; i < rows_.size(); ++i) {
    byNormalizedName_[outlook::normalize(rows_[i].row.name)].push_back(i);
    byName_[rows_[i].row.name].push_back(i);
  }
  namesIndexed_ = true;
}

}  // namespace vlout::transfer
