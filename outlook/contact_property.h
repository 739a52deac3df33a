// Every property of a contact that the component reads or writes, listed once: its object-model
// name, its kind and its place in a vCard. The field map, the adapters and the tests read this
// table. New properties are added here and nowhere else.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

namespace vlout::outlook {

enum class ContactProperty : std::uint8_t {
  FullName,
  LastName,
  FirstName,
  LastNameAndFirstName,
  CompanyName,
  Department,
  JobTitle,
  HomeTelephoneNumber,
  MobileTelephoneNumber,
  BusinessTelephoneNumber,
  Business2TelephoneNumber,
  Categories,
  BusinessFaxNumber,
  HomeFaxNumber,
  OtherFaxNumber,
  Email1Address,
  Email2Address,
  WebPage,
  PersonalHomePage,
  Body,
  Birthday,
  Anniversary,
  Gender,
  BusinessAddressStreet,
  BusinessAddressCity,
  BusinessAddressState,
  BusinessAddressPostalCode,
  BusinessAddressCountry,
  BusinessAddressPostOfficeBox,
  HomeAddressStreet,
  HomeAddressCity,
  HomeAddressState,
  HomeAddressPostalCode,
  HomeAddressCountry,
  HomeAddressPostOfficeBox,
  OtherAddressStreet,
  OtherAddressCity,
  OtherAddressState,
  OtherAddressPostalCode,
  OtherAddressCountry,
  OtherAddressPostOfficeBox,
  Spouse,
};

enum class PropertyKind : std::uint8_t {
  Text,
  Date,
  Gender,
  Name,  // a text made of the parts of the name, or split into them
};

// Where a property is in a vCard. Of the lines with one of `names`, those that carry all
// `requiredTypes` and no `excludedTypes` belong to the property; `slot` picks one of them.
struct VCardPlace {
  // Names separated by blanks: a new line gets the first; the others are what other programs call
  // the same thing.
  std::string_view names{};
  std::string_view requiredTypes{};
  std::string_view excludedTypes{};
  std::string_view newTypes{};      // the types of a new line
  int component = -1;               // index in a structured value, or -1 for the whole value
  int slot = 1;                     // 1 or 2: the first or the second such line
  std::string_view labelledName{};  // a line of this name in a group whose X-ABLabel holds `label`
  std::string_view label{};
  std::string_view nameInVersion4{};  // its standard name in vCard 4.0
};

struct PropertyInfo {
  ContactProperty property;
  std::string_view objectModelName;
  PropertyKind kind;
  VCardPlace vcard;
};

// The whole table, in the order of the enumeration.
[[nodiscard]] std::span<const PropertyInfo> contactProperties();

[[nodiscard]] const PropertyInfo& propertyInfo(ContactProperty property);

// The properties of an address, without its postal code.
struct AddressProperties {
  ContactProperty country;
  ContactProperty state;
  ContactProperty city;
  ContactProperty street;
  ContactProperty postOfficeBox;

  // In the order in which people edit them.
  [[nodiscard]] std::array<ContactProperty, 5> parts() const {
    return {country, state, city, street, postOfficeBox};
  }
};

// The address with that street.
[[nodiscard]] const AddressProperties& addressProperties(ContactProperty street);

}  // namespace vlout::outlook
