// Brings a row up to date from a contact: all fields at once, or merged field by field with what
// the row holds. Import uses both; export uses the merge for contacts that it pairs by person.
#pragma once

#include <string_view>

#include "outlook/contact_store.h"
#include "outlook/field_map.h"
#include "store/connection.h"
#include "transfer/run_window.h"

namespace vlout::transfer {

class RowUpdate {
 public:
  RowUpdate(store::Connection& connection, RunWindow& window)
      : connection_(connection), window_(window) {}

  // Stamps the contact with the row's number, saves it, and writes every mapped field and the three
  // dates in one statement. A database error is shown ("저장오류!") and gives false; throws
  // ContactStoreError when the contact cannot be saved.
  bool updateRowFromContact(std::string_view rowId, outlook::Contact& contact);

  // Merges row and contact: a field that one side lacks is taken from the other; where both have a
  // value, the contact's wins only when the contact is newer. Both sides get the result, and the
  // result list its line. Throws as `updateRowFromContact`, and DatabaseError when the row cannot
  // be read.
  bool mergeForImport(std::string_view rowId, outlook::Contact& contact,
                      const outlook::MapOptions& options);

 private:
  using FieldTexts = std::vector<std::string>;  // one text for each of `mappedFields`

  bool saveBoth(std::string_view rowId, outlook::Contact& contact, const FieldTexts& texts);

  store::Connection& connection_;
  RunWindow& window_;
};

}  // namespace vlout::transfer
