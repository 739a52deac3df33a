#include "transfer/pair_sides.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "outlook/field_map.h"
#include "store/address_line.h"
#include "store/sql.h"
#include "text/ascii.h"
#include "text/date_time.h"
#include "text/language.h"

namespace vlout::transfer {
namespace {

using outlook::FieldRule;
using outlook::MappedField;
using P = outlook::ContactProperty;

constexpr std::string_view kName = "FullName";
constexpr std::string_view kCategories = "Categories";
constexpr std::string_view kAddressEnding = "_addr";

constexpr std::array<std::string_view, 27> kColumns{
    "FullName",        "Gender",       "CompanyName", "Department",     "JobTitle",
    "cellphone",       "email",        "email2",      "company_phone1", "company_phone2",
    "home_phone",      "company_fax1", "etc_fax",     "home_fax",       "company_addr",
    "company_zipcode", "etc_addr",     "etc_zipcode", "home_addr",      "home_zipcode",
    "Webpage",         "Webpage2",     "Birthday",    "LifePartner",    "Anniversary",
    "Categories",      "Memo_",
};

const MappedField& fieldOf(std::string_view column) {
  const auto fields = outlook::mappedFields();
  const auto found = std::find_if(fields.begin(), fields.end(),
                                  [&](const MappedField& each) { return each.column == column; });
  if (found == fields.end()) throw std::logic_error("no such field: " + std::string(column));
  return *found;
}

store::AddressParts asParts(const AddressTexts& texts) {
  return {.country = texts[0],
          .state = texts[1],
          .city = texts[2],
          .street = texts[3],
          .postOfficeBox = texts[4]};
}

std::string shownDay(std::string_view stored) {
  const auto date = text::parseDateTime(stored);
  return date ? text::formatDay(*date) : std::string(stored);
}

}  // namespace

std::string cardSideText(const store::Recordset& row, std::string_view column) {
  std::string text(store::nullSafe(row.field(column)));
  if (column == kName) return text;
  switch (fieldOf(column).rule) {
    case FieldRule::Date:
      return shownDay(text);
    case FieldRule::Address:
      return cardAddressLine(
          cardAddress(row, column.substr(0, column.size() - kAddressEnding.size())));
    default:
      return text;
  }
}

std::string outlookSideText(outlook::Contact& contact, std::string_view column) {
  if (column == kName) return outlook::shownText(contact, P::FullName);
  const MappedField& field = fieldOf(column);
  switch (field.rule) {
    case FieldRule::Company:
      return outlook::shownText(contact, field.readFrom);  // as it stands, "(주)" and all
    case FieldRule::Address:
      return outlookAddressLine(outlookAddress(contact, field.readFrom));
    default:
      return outlook::fieldTextFromContact(contact, field).value_or("");
  }
}

AddressTexts cardAddress(const store::Recordset& row, std::string_view columns) {
  constexpr std::array<std::string_view, 5> kEndings{"_nation", "_sido", "_sigungu", kAddressEnding,
                                                     "_addr2"};
  AddressTexts texts;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    texts[i] = store::nullSafe(row.field(std::string(columns).append(kEndings[i])));
  }
  return texts;
}

AddressTexts outlookAddress(outlook::Contact& contact, outlook::ContactProperty street) {
  const auto properties = outlook::addressProperties(street).parts();
  AddressTexts texts;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    texts[i] = outlook::shownText(contact, properties[i]);
  }
  return texts;
}

// Shown without the double blanks that the address-line maker leaves. On Windows the parts are
// shown as they are, whatever the street holds.
std::string cardAddressLine(const AddressTexts& parts) {
#ifdef _WIN32
  const std::string line = store::addressLine(asParts(parts));
#else
  const std::string line = store::addressLineWithoutRepeats(asParts(parts));
#endif
  return text::replaceAll(line, "  ", " ");
}

// With the double blanks, as the row would get it.
std::string outlookAddressLine(const AddressTexts& parts) {
  return store::addressLine(asParts(parts));
}

bool sidesDiffer(std::string_view column, std::string_view card, std::string_view contact) {
  return column != kCategories && text::withPlainLineEnds(card) != text::withPlainLineEnds(contact);
}

std::vector<ComparedField> compareSides(const store::Recordset* row, outlook::Contact* contact) {
  std::vector<ComparedField> fields;
  fields.reserve(kColumns.size());
  for (const std::string_view column : kColumns) {
    ComparedField field{column, row == nullptr ? "" : cardSideText(*row, column),
                        contact == nullptr ? "" : outlookSideText(*contact, column)};
    if (!field.card.empty() || !field.contact.empty()) fields.push_back(std::move(field));
  }
  return fields;
}

std::vector<ComparedField> differingFields(const store::Recordset& row, outlook::Contact& contact) {
  auto fields = compareSides(&row, &contact);
  std::erase_if(fields, [](const ComparedField& field) { return !field.differs(); });
  return fields;
}

std::string shownValue(std::string_view value) {
  if (value.empty()) return text::say("(없음)", "(none)");
  return text::replaceAll(text::withPlainLineEnds(value), "\n", "⏎");
}

}  // namespace vlout::transfer
