#include "transfer/work_list.h"

#include "outlook/normalizer.h"

namespace vlout::transfer {
void WorkList::clear() {
  *this = WorkList();
}

void WorkList::expect(std::size_t rows) {
  rows_.reserve(rows);
  byId_.reserve(rows);
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

std::optional<WorkList::Position> WorkList::reserve(std::string_view id) {
  const auto position = find(id);
  if (position) rows_[*position].reserved = true;
  return position;
}

void WorkList::reserveName(const std::string& normalizedName) {
  indexNames();
  const auto found = byNormalizedName_.find(normalizedName);
  if (found == byNormalizedName_.end()) return;
  for (const Position position : found->second) rows_[position].reserved = true;
}

bool WorkList::isReserved(std::string_view id) const {
  const auto position = find(id);
  return position && rows_[*position].reserved;
}

bool WorkList::isTaken(std::string_view id) const {
  const auto position = find(id);
  return position && isTaken(rows_[*position]);
}

std::optional<WorkList::Position> WorkList::findById(std::string_view id) const {
  const auto position = find(id);
  return position && rows_[*position].present ? position : std::nullopt;
}

std::optional<WorkList::Position> WorkList::find(std::string_view id) const {
  const auto found = byId_.find(std::string(id));
  return found == byId_.end() ? std::nullopt : std::optional(found->second);
}

std::optional<PersonMatch::Choice> WorkList::findByNormalizedName(const Person& person,
                                                                  Evidence evidence) const {
  indexNames();
  return match(byNormalizedName_, person, evidence);
}

std::optional<PersonMatch::Choice> WorkList::findByName(const Person& person) const {
  indexNames();
  return match(byName_, person, Evidence::NameAlone);
}

void WorkList::remove(Position position) {
  if (!rows_[position].present) return;
  rows_[position].present = false;
  --left_;
}

std::optional<PersonMatch::Choice> WorkList::match(const Index& index, const Person& person,
                                                   Evidence evidence) const {
  const auto found = index.find(person.name);
  if (found == index.end()) return std::nullopt;
  PersonMatch rows;
  for (const Position position : found->second) {
    const Entry& entry = rows_[position];
    rows.offer(position, likeness(entry.row.mobile, entry.row.email, person), isTaken(entry));
  }
  return rows.choose(person.name.empty() ? Evidence::EqualValue : evidence);
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
