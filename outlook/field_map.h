// The correspondence between a name-card row and a contact, in both directions. Export, import,
// sync and the compare window all use this one table and its named rules. Deliberately, the two
// directions do not mirror each other.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "outlook/contact_store.h"
#include "outlook/picture_attacher.h"
#include "store/address_line.h"
#include "store/connection.h"

namespace vlout::outlook {

enum class FieldRule {
  Text,     // copied
  Company,  // to the row with "(주)" as "㈜"; to the contact unchanged
  Fax,      // to an existing contact only when its fax numbers are not protected
  Date,     // a day, or none: NULL in the row, 4501-01-01 on the contact
  Gender,   // "남" and "여" in the row
  Address,  // one line in the row, parts on the contact
};

// A column, and the contact property that it comes from and goes to. They differ in one place, on
// purpose: a row's home postal code is written to the contact's other address, after the row's
// other postal code, and so wins there.
struct MappedField {
  std::string_view column;
  ContactProperty readFrom;
  ContactProperty writeTo;
  FieldRule rule;
};

// All mapped columns except the name, in the order in which a row is updated from a contact.
[[nodiscard]] std::span<const MappedField> mappedFields();

// The name that users see for a column with data of a person; an empty text for any other column.
[[nodiscard]] std::string_view fieldCaption(std::string_view column);

// How a contact is written from a row.
enum class ContactWrite {
  Create,             // a new contact: fax numbers always go along
  Update,             // an existing contact
  UpdateKeepingName,  // an existing contact whose name fields stay as they are
};

// The boxes of the main window that affect the map, and where the cards' pictures come from.
struct MapOptions {
  bool splitName = true;   // "성,이름 분리해서 보내기"
  bool protectFax = true;  // "팩스번호는 아웃룩 정보를 보호함"
  PictureAttacher* pictures = nullptr;
  // Told of a picture that could not be sent: the row's name and the cause.
  std::function<void(std::string_view name, std::string_view cause)> pictureFailed{};
};

// Writes every mapped field of the row's current record into the contact, stamps it with `VLID` and
// saves it.
void writeContactFromRow(Contact& contact, const store::Recordset& row, ContactWrite how,
                         const MapOptions& options);

// Writes one field's row text into the contact by the field's rule.
void writeFieldToContact(Contact& contact, const MappedField& field, std::string_view rowText);

// The text that the row gets from the contact for this field; an empty text for a missing date.
// Nothing if it cannot be decoded, which leaves the row's column as it is.
[[nodiscard]] std::optional<std::string> fieldTextFromContact(Contact& contact,
                                                              const MappedField& field);

// A property as a window shows it: an empty text if it cannot be decoded.
[[nodiscard]] std::string shownText(Contact& contact, ContactProperty property);

// What the row holds in this field, in the form that `fieldTextFromContact` gives.
[[nodiscard]] std::string fieldTextFromRow(const store::Recordset& row, const MappedField& field);

// A company's name as rows hold it: with the one character "㈜" for "(주)".
[[nodiscard]] std::string withCompanyMark(std::string_view company);

// The value as UPDATE and INSERT statements have it: quoted, or the bare word null for a missing
// date.
[[nodiscard]] std::string fieldSqlValue(const MappedField& field, std::string_view text);

// The `FullName` that a contact gives a row.
[[nodiscard]] std::string rowNameFromContact(Contact& contact);

}  // namespace vlout::outlook
