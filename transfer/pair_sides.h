// A row and its contact as people compare them: field by field, as texts of the same form. The
// compare window, the preview and the overview show them. Nothing is written here.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "outlook/contact_store.h"
#include "store/connection.h"

namespace vlout::transfer {

// A field as each side shows it; an address is one line. A value of the contact that cannot be
// decoded is empty. Both throw ContactStoreError if the contact cannot be read.
[[nodiscard]] std::string cardSideText(const store::Recordset& row, std::string_view column);
[[nodiscard]] std::string outlookSideText(outlook::Contact& contact, std::string_view column);

// The parts of an address, in the order of outlook::AddressProperties::parts.
using AddressTexts = std::array<std::string, 5>;

// `columns` is the prefix of the row's columns: company, home or etc.
[[nodiscard]] AddressTexts cardAddress(const store::Recordset& row, std::string_view columns);
[[nodiscard]] AddressTexts outlookAddress(outlook::Contact& contact,
                                          outlook::ContactProperty street);
[[nodiscard]] std::string cardAddressLine(const AddressTexts& parts);
[[nodiscard]] std::string outlookAddressLine(const AddressTexts& parts);

// True if the two texts of a field count as different. Categories never do, and line ends do not
// matter, since each store has its own.
[[nodiscard]] bool sidesDiffer(std::string_view column, std::string_view card,
                               std::string_view contact);

struct ComparedField {
  std::string_view column;
  std::string card;
  std::string contact;

  [[nodiscard]] bool differs() const { return sidesDiffer(column, card, contact); }
};

// The fields that either side has, in the order in which people see them. A missing side is empty.
[[nodiscard]] std::vector<ComparedField> compareSides(const store::Recordset* row,
                                                      outlook::Contact* contact);
// Those that differ.
[[nodiscard]] std::vector<ComparedField> differingFields(const store::Recordset& row,
                                                         outlook::Contact& contact);

// A field's text on one line, and a word for none.
[[nodiscard]] std::string shownValue(std::string_view value);

}  // namespace vlout::transfer
