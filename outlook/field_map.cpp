#include "outlook/field_map.h"

#include <algorithm>
#include <array>

#include "outlook/normalizer.h"
#include "outlook/pairing.h"
#include "store/sql.h"
#include "text/ascii.h"
#include "text/latin_script.h"
#include "text/utf8.h"

namespace vlout::outlook {
namespace {

using P = ContactProperty;
using R = FieldRule;

constexpr MappedField same(std::string_view column, P property, R rule = R::Text) {
  return {column, property, property, rule};
}

constexpr auto kFields = std::to_array<MappedField>({
    same("CompanyName", P::CompanyName, R::Company),
    same("Department", P::Department),
    same("JobTitle", P::JobTitle),
    same("Categories", P::Categories),
    same("home_phone", P::HomeTelephoneNumber),
    same("cellphone", P::MobileTelephoneNumber),
    same("company_phone1", P::BusinessTelephoneNumber),
    same("company_phone2", P::Business2TelephoneNumber),
    same("company_fax1", P::BusinessFaxNumber, R::Fax),
    same("home_fax", P::HomeFaxNumber, R::Fax),
    same("etc_fax", P::OtherFaxNumber, R::Fax),
    same("email", P::Email1Address),
    same("email2", P::Email2Address),
    same("Webpage", P::WebPage),
    same("Webpage2", P::PersonalHomePage),
    same("Memo_", P::Body),
    same("Birthday", P::Birthday, R::Date),
    same("Anniversary", P::Anniversary, R::Date),
    same("Gender", P::Gender, R::Gender),
    same("company_addr", P::BusinessAddressStreet, R::Address),
    same("company_zipcode", P::BusinessAddressPostalCode),
    same("etc_addr", P::OtherAddressStreet, R::Address),
    same("etc_zipcode", P::OtherAddressPostalCode),
    same("home_addr", P::HomeAddressStreet, R::Address),
    // Not a slip: the home postal code goes out as the other address's, and the contact's own home
    // postal code is never written.
    {"home_zipcode", P::HomeAddressPostalCode, P::OtherAddressPostalCode, R::Text},
    same("LifePartner", P::Spouse),
});

// The order in which a contact is written; `Categories` moves to the front when the name is kept.
// An address is written together with its postal code.
constexpr auto kWriteOrder = std::to_array<std::string_view>(
    {"CompanyName",    "Department",   "JobTitle",     "home_phone", "cellphone",  "company_phone1",
     "company_phone2", "Categories",   "company_fax1", "home_fax",   "etc_fax",    "email",
     "email2",         "Webpage",      "Webpage2",     "Memo_",      "Birthday",   "Anniversary",
     "Gender",         "company_addr", "etc_addr",     "home_addr",  "LifePartner"});

constexpr std::size_t fieldIndex(std::string_view column) {
  for (std::size_t i = 0; i < kFields.size(); ++i) {
    if (kFields[i].column == column) return i;
  }
  throw "no such column";  // at compile time: the order names a column that the table lacks
}

constexpr auto kWriteIndexes = [] {
  std::array<std::size_t, kWriteOrder.size()> indexes{};
  std::transform(kWriteOrder.begin(), kWriteOrder.end(), indexes.begin(), fieldIndex);
  return indexes;
}();
constexpr std::size_t kCategories = fieldIndex("Categories");

// An address's postal code follows it in the table.
constexpr const MappedField& postalCodeOf(std::size_t address) {
  return kFields[address + 1];
}
constexpr bool addressesHavePostalCodes() {
  std::size_t addresses = 0;
  for (std::size_t i = 0; i < kFields.size(); ++i) {
    if (kFields[i].rule != R::Address) continue;
    ++addresses;
    if (!postalCodeOf(i).column.ends_with("_zipcode")) return false;
  }
  return kWriteOrder.size() + addresses == kFields.size();
}
static_assert(addressesHavePostalCodes());

struct Caption {
  std::string_view column;
  std::string_view text;
};
constexpr auto kCaptions = std::to_array<Caption>({
    {"FullName", "이름"},
    {"Gender", "성별"},
    {"CompanyName", "회사"},
    {"Department", "부서"},
    {"JobTitle", "직책"},
    {"cellphone", "휴대폰"},
    {"email", "이메일 1"},
    {"email2", "이메일 2"},
    {"company_phone1", "회사전화 1"},
    {"company_phone2", "회사전화 2"},
    {"home_phone", "집전화"},
    {"company_fax1", "회사팩스"},
    {"etc_fax", "기타팩스"},
    {"home_fax", "집팩스"},
    {"company_addr", "회사주소"},
    {"company_zipcode", "회사우편번호"},
    {"etc_addr", "기타주소"},
    {"etc_zipcode", "기타우편번호"},
    {"home_addr", "집주소"},
    {"home_zipcode", "집우편번호"},
    {"Webpage", "웹페이지 1"},
    {"Webpage2", "웹페이지 2"},
    {"Birthday", "생일"},
    {"LifePartner", "배우자"},
    {"Anniversary", "기념일"},
    {"Categories", "범주"},
    {"Memo_", "메모"},
    {"company_nation", "회사주소 국가"},
    {"company_sido", "회사주소 시/도"},
    {"company_sigungu", "회사주소 시/군/구"},
    {"company_addr2", "회사주소 상세"},
    {"etc_nation", "기타주소 국가"},
    {"etc_sido", "기타주소 시/도"},
    {"etc_sigungu", "기타주소 시/군/구"},
    {"etc_addr2", "기타주소 상세"},
    {"home_nation", "집주소 국가"},
    {"home_sido", "집주소 시/도"},
    {"home_sigungu", "집주소 시/군/구"},
    {"home_addr2", "집주소 상세"},
});

std::string addressLineOf(Contact& contact, P street) {
  const AddressProperties& properties = addressProperties(street);
  return store::addressLine({.country = contact.text(properties.country),
                             .state = contact.text(properties.state),
                             .city = contact.text(properties.city),
                             .street = contact.text(properties.street),
                             .postOfficeBox = contact.text(properties.postOfficeBox)});
}

void emptyAddress(Contact& contact, P street) {
  const AddressProperties& properties = addressProperties(street);
  contact.setText(properties.state, "");
  contact.setText(properties.city, "");
  contact.setText(properties.street, "");
}

void writeName(Contact& contact, std::string_view rowName, bool splitName) {
  std::string name(rowName);
  const bool latin = text::isLatinScript(name);
  const bool separated = name.find_first_of(", ") != std::string::npos;
  const auto letters = text::characters(name);
  if (latin || !splitName || separated || (letters.size() != 2 && letters.size() != 3)) {
    contact.setText(P::FullName, name);
    return;
  }
  contact.setText(P::LastName, letters[0]);
  contact.setText(P::FirstName, std::string_view(name).substr(letters[0].size()));
}

text::DateTime dayOrNone(std::string_view rowText) {
  auto date = text::parseDateTime(rowText);
  if (!date) return text::noDate();
  constexpr std::int64_t kDay = std::int64_t{24} * 60 * 60;
  const std::int64_t timeOfDay = ((date->seconds % kDay) + kDay) % kDay;
  return {date->seconds - timeOfDay, 0};
}

Gender genderFromRow(std::string_view rowText) {
  if (rowText == "남") return Gender::Male;
  if (rowText == "여") return Gender::Female;
  return Gender::Unspecified;
}

std::string_view genderForRow(Gender gender) {
  switch (gender) {
    case Gender::Male:
      return "남";
    case Gender::Female:
      return "여";
    default:
      return "";
  }
}

}  // namespace

std::string withCompanyMark(std::string_view company) {
  return text::replaceAll(company, "(주)", "㈜");
}

std::string_view fieldCaption(std::string_view column) {
  const auto* const found = std::find_if(kCaptions.begin(), kCaptions.end(),
                                         [&](const Caption& c) { return c.column == column; });
  return found == kCaptions.end() ? std::string_view() : found->text;
}

std::span<const MappedField> mappedFields() {
  return kFields;
}

void writeFieldToContact(Contact& contact, const MappedField& field, std::string_view rowText) {
  switch (field.rule) {
    case R::Date:
      contact.setDate(field.writeTo, dayOrNone(rowText));
      break;
    case R::Gender:
      contact.setGender(genderFromRow(rowText));
      break;
    case R::Address:
      emptyAddress(contact, field.writeTo);
      contact.setText(field.writeTo, rowText);
      break;
    default:
      contact.setText(field.writeTo, rowText);
  }
}

void writeContactFromRow(Contact& contact, const store::Recordset& row, ContactWrite how,
                         const MapOptions& options) {
  const auto value = [&](const MappedField& field) {
    return store::nullSafe(row.field(field.column));
  };
  const auto write = [&](std::size_t index) {
    const MappedField& field = kFields[index];
    const bool faxStays = field.rule == R::Fax && how != ContactWrite::Create && options.protectFax;
    if (faxStays) return;
    if (field.rule == R::Address) {
      const MappedField& code = postalCodeOf(index);
      emptyAddress(contact, field.writeTo);
      contact.setText(code.writeTo, value(code));
      contact.setText(field.writeTo, value(field));
    } else {
      writeFieldToContact(contact, field, value(field));
    }
  };
  const bool keepName = how == ContactWrite::UpdateKeepingName;
  if (keepName) {
    write(kCategories);
  } else {
    writeName(contact, store::nullSafe(row.field("FullName")), options.splitName);
  }
  for (const std::size_t index : kWriteIndexes) {
    if (!keepName || index != kCategories) write(index);
  }
  const std::string leftBehind =
      options.pictures == nullptr ? std::string() : options.pictures->attach(contact, row);
  if (!leftBehind.empty() && options.pictureFailed) {
    options.pictureFailed(store::nullSafe(row.field("FullName")), leftBehind);
  }
  addVLID(contact, store::nullSafe(row.field("i_idx")));
  contact.saveSent();
}

namespace {

std::string readField(Contact& contact, const MappedField& field) {
  switch (field.rule) {
    case R::Company:
      return withCompanyMark(contact.text(field.readFrom));
    case R::Date: {
      const std::string day = text::formatDay(contact.date(field.readFrom));
      return day == "4501-01-01" ? "" : day;  // the exact text of a date that is none
    }
    case R::Gender:
      return std::string(genderForRow(contact.gender()));
    case R::Address:
      return addressLineOf(contact, field.readFrom);
    default:
      return contact.text(field.readFrom);
  }
}

}  // namespace

std::optional<std::string> fieldTextFromContact(Contact& contact, const MappedField& field) {
  try {
    return readField(contact, field);
  } catch (const UnreadableProperty&) {
    return std::nullopt;
  }
}

std::string shownText(Contact& contact, ContactProperty property) {
  try {
    return contact.text(property);
  } catch (const UnreadableProperty&) {
    return {};
  }
}

std::string fieldTextFromRow(const store::Recordset& row, const MappedField& field) {
  const std::string_view text = store::nullSafe(row.field(field.column));
  if (field.rule == R::Company) return withCompanyMark(text);
  if (field.rule == R::Date) {
    const auto date = text::parseDateTime(text);
    if (date) return text::formatDay(*date);
  }
  return std::string(text);
}

std::string fieldSqlValue(const MappedField& field, std::string_view text) {
  if (field.rule == R::Date && text.empty()) return "null";
  return store::sqlLiteral(text);
}

std::string rowNameFromContact(Contact& contact) {
  std::string joined = joinedName(contact);
  if (text::isLatinScript(joined)) return contact.text(P::LastNameAndFirstName);
  return normalize(joined);
}

}  // namespace vlout::outlook
