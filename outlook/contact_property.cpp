#include "outlook/contact_property.h"

#include <algorithm>
#include <array>

namespace vlout::outlook {
namespace {

using P = ContactProperty;
using K = PropertyKind;

constexpr VCardPlace kNoPlace{};

constexpr VCardPlace structured(std::string_view name, int component) {
  return {.names = name, .component = component};
}

constexpr VCardPlace telephone(std::string_view required, std::string_view excluded,
                               std::string_view newTypes, int slot = 1) {
  return {.names = "TEL",
          .requiredTypes = required,
          .excludedTypes = excluded,
          .newTypes = newTypes,
          .slot = slot};
}

constexpr VCardPlace business(int component) {
  return {.names = "ADR", .requiredTypes = "WORK", .newTypes = "WORK", .component = component};
}

constexpr VCardPlace home(int component) {
  return {.names = "ADR",
          .requiredTypes = "HOME",
          .excludedTypes = "WORK",
          .newTypes = "HOME",
          .component = component};
}

constexpr VCardPlace other(int component) {
  return {
      .names = "ADR", .excludedTypes = "WORK HOME", .newTypes = "OTHER", .component = component};
}

// Components of ADR: post-office box, extended address, street, city, state, postal code, country.
constexpr int kBox = 0;
constexpr int kStreet = 2;
constexpr int kCity = 3;
constexpr int kState = 4;
constexpr int kPostalCode = 5;
constexpr int kCountry = 6;

constexpr auto kProperties = std::to_array<PropertyInfo>({
    {P::FullName, "FullName", K::Name, {.names = "FN"}},
    {P::LastName, "LastName", K::Name, structured("N", 0)},
    {P::FirstName, "FirstName", K::Name, structured("N", 1)},
    {P::LastNameAndFirstName, "LastNameAndFirstName", K::Name, kNoPlace},
    {P::CompanyName, "CompanyName", K::Text, structured("ORG", 0)},
    {P::Department, "Department", K::Text, structured("ORG", 1)},
    {P::JobTitle, "JobTitle", K::Text, {.names = "TITLE"}},
    {P::HomeTelephoneNumber, "HomeTelephoneNumber", K::Text,
     telephone("HOME", "FAX CELL PAGER WORK", "HOME VOICE")},
    {P::MobileTelephoneNumber, "MobileTelephoneNumber", K::Text, telephone("CELL", "FAX", "CELL")},
    {P::BusinessTelephoneNumber, "BusinessTelephoneNumber", K::Text,
     telephone("WORK", "FAX CELL PAGER", "WORK VOICE")},
    {P::Business2TelephoneNumber, "Business2TelephoneNumber", K::Text,
     telephone("WORK", "FAX CELL PAGER", "WORK VOICE", 2)},
    {P::Categories, "Categories", K::Text, {.names = "CATEGORIES"}},
    {P::BusinessFaxNumber, "BusinessFaxNumber", K::Text, telephone("FAX WORK", "", "WORK FAX")},
    {P::HomeFaxNumber, "HomeFaxNumber", K::Text, telephone("FAX HOME", "WORK", "HOME FAX")},
    {P::OtherFaxNumber, "OtherFaxNumber", K::Text, telephone("FAX", "WORK HOME", "OTHER FAX")},
    {P::Email1Address, "Email1Address", K::Text, {.names = "EMAIL", .newTypes = "INTERNET"}},
    {P::Email2Address,
     "Email2Address",
     K::Text,
     {.names = "EMAIL", .newTypes = "INTERNET", .slot = 2}},
    {P::WebPage, "WebPage", K::Text, {.names = "URL", .excludedTypes = "HOME"}},
    {P::PersonalHomePage,
     "PersonalHomePage",
     K::Text,
     {.names = "URL", .requiredTypes = "HOME", .newTypes = "HOME"}},
    {P::Body, "Body", K::Text, {.names = "NOTE"}},
    {P::Birthday, "Birthday", K::Date, {.names = "BDAY"}},
    {P::Anniversary,
     "Anniversary",
     K::Date,
     {.names = "X-EVOLUTION-ANNIVERSARY ANNIVERSARY X-ANNIVERSARY X-MS-ANNIVERSARY",
      .labelledName = "X-ABDATE",
      .label = "Anniversary",
      .nameInVersion4 = "ANNIVERSARY"}},
    {P::Gender,
     "Gender",
     K::Gender,
     {.names = "X-GENDER GENDER X-WAB-GENDER", .nameInVersion4 = "GENDER"}},
    {P::BusinessAddressStreet, "BusinessAddressStreet", K::Text, business(kStreet)},
    {P::BusinessAddressCity, "BusinessAddressCity", K::Text, business(kCity)},
    {P::BusinessAddressState, "BusinessAddressState", K::Text, business(kState)},
    {P::BusinessAddressPostalCode, "BusinessAddressPostalCode", K::Text, business(kPostalCode)},
    {P::BusinessAddressCountry, "BusinessAddressCountry", K::Text, business(kCountry)},
    {P::BusinessAddressPostOfficeBox, "BusinessAddressPostOfficeBox", K::Text, business(kBox)},
    {P::HomeAddressStreet, "HomeAddressStreet", K::Text, home(kStreet)},
    {P::HomeAddressCity, "HomeAddressCity", K::Text, home(kCity)},
    {P::HomeAddressState, "HomeAddressState", K::Text, home(kState)},
    {P::HomeAddressPostalCode, "HomeAddressPostalCode", K::Text, home(kPostalCode)},
    {P::HomeAddressCountry, "HomeAddressCountry", K::Text, home(kCountry)},
    {P::HomeAddressPostOfficeBox, "HomeAddressPostOfficeBox", K::Text, home(kBox)},
    {P::OtherAddressStreet, "OtherAddressStreet", K::Text, other(kStreet)},
    {P::OtherAddressCity, "OtherAddressCity", K::Text, other(kCity)},
    {P::OtherAddressState, "OtherAddressState", K::Text, other(kState)},
    {P::OtherAddressPostalCode, "OtherAddressPostalCode", K::Text, other(kPostalCode)},
    {P::OtherAddressCountry, "OtherAddressCountry", K::Text, other(kCountry)},
    {P::OtherAddressPostOfficeBox, "OtherAddressPostOfficeBox", K::Text, other(kBox)},
    {P::Spouse,
     "Spouse",
     K::Text,
     {.names = "X-EVOLUTION-SPOUSE X-SPOUSE X-MS-SPOUSE",
      .labelledName = "X-ABRELATEDNAMES",
      .label = "Spouse"}},
});

constexpr bool inEnumerationOrder() {
  for (std::size_t i = 0; i < kProperties.size(); ++i) {
    if (static_cast<std::size_t>(kProperties[i].property) != i) return false;
  }
  return true;
}
static_assert(inEnumerationOrder());

constexpr auto kAddresses = std::to_array<AddressProperties>({
    {P::BusinessAddressCountry, P::BusinessAddressState, P::BusinessAddressCity,
     P::BusinessAddressStreet, P::BusinessAddressPostOfficeBox},
    {P::HomeAddressCountry, P::HomeAddressState, P::HomeAddressCity, P::HomeAddressStreet,
     P::HomeAddressPostOfficeBox},
    {P::OtherAddressCountry, P::OtherAddressState, P::OtherAddressCity, P::OtherAddressStreet,
     P::OtherAddressPostOfficeBox},
});

}  // namespace

std::span<const PropertyInfo> contactProperties() {
  return kProperties;
}

const PropertyInfo& propertyInfo(ContactProperty property) {
  return kProperties[static_cast<std::size_t>(property)];
}

const AddressProperties& addressProperties(ContactProperty street) {
  return *std::find_if(kAddresses.begin(), kAddresses.end(),
                       [&](const AddressProperties& each) { return each.street == street; });
}

}  // namespace vlout::outlook
