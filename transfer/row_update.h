// Brings a pair into step (from the contact to the row, from the row to the contact, or merged
// field by field), or makes a new row. Each of these sets the three dates of the row to the
// contact's time. The transfers and the compare window share it.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "outlook/contact_store.h"
#include "outlook/field_map.h"
#include "store/connection.h"
#include "text/date_time.h"
#include "transfer/run_window.h"

namespace vlout::transfer {

// The folder that new rows go into.
struct TargetFolder {
  std::string id;
  std::string name;
};

// All functions throw ContactStoreError if the contact cannot be read or saved, and DatabaseError
// unless they say that they show it.
class RowUpdate {
 public:
  using FieldTexts = std::vector<std::string>;  // one text for each of `mappedFields`

  RowUpdate(store::Connection& connection, RunWindow& window)
      : connection_(connection), window_(window) {}

  // Import's update: stamps the contact with the row's number, saves it, and writes every mapped
  // field and the dates in one statement. A database error is shown ("저장오류!") and gives false.
  bool updateRowFromContact(std::string_view rowId, outlook::Contact& contact);

  // Two-way sync's update of a row. It differs only in the message ("Update 저장실패!") and in
  // leaving the mark of the import alone.
  bool updateRowForSync(std::string_view rowId, outlook::Contact& contact);

  // Two-way sync's update of a contact, which keeps its name. False if the row is gone.
  bool updateContactFromRow(std::string_view rowId, outlook::Contact& contact,
                            const outlook::MapOptions& options);

  // The compare window's save of the card side: writes the texts as its user typed them, with the
  // three dates at the present time, then the row to the contact. A text with a quote is refused. A
  // database error is shown ("벨모라 저장실패!") and gives false. If the contact cannot be written,
  // the row keeps the texts but gets its old dates back, so that the pair stays a conflict.
  bool updateRowFromTexts(std::string_view rowId, outlook::Contact& contact,
                          const FieldTexts& texts, const outlook::MapOptions& options);

  // Merges row and contact: a field that one side lacks is taken from the other; where both have a
  // value, the contact's wins only when the contact is newer. Both sides get the result, and the
  // result list its line. A failed update is shown as in `updateRowFromContact`.
  bool mergeForImport(std::string_view rowId, outlook::Contact& contact,
                      const outlook::MapOptions& options);

  // What a new row gets from a contact and its folder: one SQL value for each column of the insert,
  // empty for the number and the dates. Throws DatabaseError if it is more than a statement can
  // hold.
  using NewRow = std::vector<std::string>;
  [[nodiscard]] NewRow readNewRow(outlook::Contact& contact, const TargetFolder& target);
  // Inserts the row of a contact that has been stamped with the number and saved.
  void insertRow(std::string_view rowId, const NewRow& row, text::DateTime contactTime);

 private:
  // Like FieldTexts, but with nothing for a column that keeps its value.
  using KnownTexts = std::vector<std::optional<std::string>>;

  bool saveRow(std::string_view rowId, outlook::Contact& contact, const KnownTexts& texts,
               std::string_view mark, std::string_view failure);

  store::Connection& connection_;
  RunWindow& window_;
};

}  // namespace vlout::transfer
