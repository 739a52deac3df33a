// Every property of a contact that the component reads or writes, named once: its object-model
// name, its kind and its place in a vCard. The field map, the adapters and the tests read this
// table; a property is added here and nowhere else.
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
  Name,  // a text that follows from, or splits into, the parts of the name
};

// Where a property lies in a vCard. Of the lines with one of `names`, those that carry every type
// in `required` and none in `excluded` belong to the property; `slot` picks among them.
struct VCardPlace {
  // Names separated by blanks: the first is the one that a new line gets, the others are the names
  // under which other programs write the same thing.
  std::string_view names{};
  std::string_view requiredTypes{};
  std::string_view excludedTypes{};
  std::string_view newTypes{};      // the types of a line made anew
  int component = -1;               // index in a structured value, or -1 for the whole value
  int slot = 1;                     // 1 or 2: the first or the second such line
  std::string_view labelledName{};  // a line of this name in a group whose X-ABLabel holds `label`
  std::string_view label{};
  std::string_view nameInVersion4{};  // the standard name that vCard 4.0 has for it
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

// What makes up an address, but for its postal code.
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

// The address that `street` is the street of.
[[nodiscard]] const AddressProperties& addressProperties(ContactProperty street);

}  // namespace vlout::outlook
