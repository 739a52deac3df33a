// Makes the one-line address of a row (`company_addr`, `home_addr`, `etc_addr`) from the parts that
// a contact keeps. The field map and the compare window call it; the parts come as a plain struct,
// so that this folder needs to know nothing of contacts.
#pragma once

#include <string>

namespace vlout::store {

struct AddressParts {
  std::string country{};
  std::string state{};
  std::string city{};
  std::string street{};
  std::string postOfficeBox{};
};

// The parts in Latin order (box, street, city, state, country) when street and city are both Latin,
// else in Korean order (country, state, city, street, box). "대한민국" is never part of the line.
[[nodiscard]] std::string addressLine(AddressParts parts);

// The same for a street that may already hold the whole line: what the street begins or ends with
// is not added again.
[[nodiscard]] std::string addressLineWithoutRepeats(AddressParts parts);

}  // namespace vlout::store
