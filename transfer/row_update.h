// Brings a pair into step in one direction, or a new row into being: from the contact to the row,
// from the row to the contact, or merged field by field. Each ends with the three dates of the row
// at the contact's time. The transfers and the compare window share it.
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

// The folder that new rows are filed in.
struct TargetFolder {
  std::string id;
  std::string name;
};

// All functions throw ContactStoreError when the contact cannot be read or saved, and DatabaseError
// where they do not say that they show it.
class RowUpdate {
 public:
  using FieldTexts = std::vector<std::string>;  // one text for each of `mappedFields`

  RowUpdate(store::Connection& connection, RunWindow& window)
      : connection_(connection), window_(window) {}

  // Import's update: stamps the contact with the row's number, saves it, and writes every mapped
  // field and the dates in one statement. A database error is shown ("저장오류!") and gives false.
  bool updateRowFromContact(std::string_view rowId, outlook::Contact& contact);

  // Two-way sync's update of a row, the same but for the message ("Update 저장실패!") and the mark
  // of the import, which it leaves alone.
  bool updateRowForSync(std::string_view rowId, outlook::Contact& contact);

  // Two-way sync's update of a contact, which keeps its name. False when the row is gone.
  bool updateContactFromRow(std::string_view rowId, outlook::Contact& contact,
                            const outlook::MapOptions& options);

  // The compare window's save of the card side: writes the texts as its user typed them, with the
  // three dates at the present time, then the row to the contact. A text with a quote is refused. A
  // database error is shown ("벨모라 저장실패!") and gives false. When the contact cannot be
  // written, the row keeps the texts and gets its old dates back, so that the pair stays a
  // conflict.
  bool updateRowFromTexts(std::string_view rowId, outlook::Contact& contact,
                          const FieldTexts& texts, const outlook::MapOptions& options);

  // Merges row and contact: a field that one side lacks is taken from the other; where both have a
  // value, the contact's wins only when the contact is newer. Both sides get the result, and the
  // result list its line. A failed update is shown as in `updateRowFromContact`.
  bool mergeForImport(std::string_view rowId, outlook::Contact& contact,
                      const outlook::MapOptions& options);

  // What a new row gets of a contact and its folder: one SQL value for each column of the insert,
  // empty for the number and the dates. Throws DatabaseError for more than a row can be given.
  using NewRow = std::vector<std::string>;
  [[nodiscard]] NewRow readNewRow(outlook::Contact& contact, const TargetFolder& target);
  // Inserts the row of a contact that has been stamped with the number and saved.
  void insertRow(std::string_view rowId, const NewRow& row, text::DateTime contactTime);

 private:
  // The same, with nothing for a column that keeps its value.
  using KnownTexts = std::vector<std::optional<std::string>>;

  bool saveRow(std::string_view rowId, outlook::Contact& contact, const KnownTexts& texts,
               std::string_view mark, std::string_view failure);

  store::Connection& connection_;
  RunWindow& window_;
};

}  // namespace vlout::transfer
