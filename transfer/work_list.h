// The name cards that take part in a run, in query order. Engines look rows up by card number or by
// person, and remove each row once it is paired. What is left at the end has no contact. Look-ups
// and removals take constant time.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "transfer/person_match.h"

namespace vlout::transfer {

struct WorkListRow {
  std::string name{};
  std::string mobile{};  // digits only
  std::string email{};
  std::string id{};
  std::string lastModified{};
  std::string outlookModified{};
  std::string lastSync{};
  std::string folderName{};
};

class WorkList {
 public:
  using Position = std::size_t;

  void clear();
  // Makes room for that many rows.
  void expect(std::size_t rows);
  void add(WorkListRow row);

  // The number of rows still in the list.
  [[nodiscard]] std::size_t size() const { return left_; }
  // True when no row was loaded.
  [[nodiscard]] bool empty() const { return rows_.empty(); }

  // The row at a position of the list as it was loaded, whether removed or not.
  [[nodiscard]] const WorkListRow& row(Position position) const { return rows_[position].row; }

  // The positions of the rows still in the list, in order.
  [[nodiscard]] std::vector<Position> remaining() const;

  // Reserves the row of that id, if there is one, for the contact that carries its key: no other
  // contact gets it by person. Returns its position.
  std::optional<Position> reserve(std::string_view id);
  // The same for every row of that normalised name.
  void reserveName(const std::string& normalizedName);
  [[nodiscard]] bool isReserved(std::string_view id) const;
  // True if the row of that id has a contact: it was removed from the list or is reserved.
  [[nodiscard]] bool isTaken(std::string_view id) const;

  // The row of that id, if it is still in the list.
  [[nodiscard]] std::optional<Position> findById(std::string_view id) const;
  // The row of that id, whether removed or not.
  [[nodiscard]] std::optional<Position> find(std::string_view id) const;

  // The row of the same person among those whose name, passed through the normaliser, equals
  // `person.name`. It counts as taken if it was removed from the list or is reserved. A person
  // without a name is recognised only by an equal value.
  [[nodiscard]] std::optional<PersonMatch::Choice> findByNormalizedName(
      const Person& person, Evidence evidence = Evidence::NameAlone) const;

  // The same with the row's name as it stands.
  [[nodiscard]] std::optional<PersonMatch::Choice> findByName(const Person& person) const;

  void remove(Position position);

 private:
  struct Entry {
    WorkListRow row;
    bool present = true;
    bool reserved = false;
  };
  using Index = std::unordered_map<std::string, std::vector<Position>>;

  [[nodiscard]] static bool isTaken(const Entry& entry) { return !entry.present || entry.reserved; }
  [[nodiscard]] std::optional<PersonMatch::Choice> match(const Index& index, const Person& person,
                                                         Evidence evidence) const;
  void indexNames() const;

  std::vector<Entry> rows_;
  std::unordered_map<std::string, Position> byId_;
  std::size_t left_ = 0;
  // Made at the first look-up by person; a run in which every contact has a key needs none.
  mutable bool namesIndexed_ = false;
  mutable Index byNormalizedName_;
  mutable Index byName_;
};

}  // namespace vlout::transfer
