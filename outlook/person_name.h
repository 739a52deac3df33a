// The parts of a person's name, and the forms that Outlook makes of them. Stores call it if they
// have to split names as Outlook does.
#pragma once

#include <string>
#include <string_view>

namespace vlout::outlook {

struct PersonName {
  std::string last{};
  std::string first{};
  std::string middle{};
  std::string title{};
  std::string suffix{};

  bool operator==(const PersonName&) const = default;
  [[nodiscard]] bool empty() const;
};

// Splits a display name: "Kim, Minsu" and "홍,길동" at the comma, family name first; "홍 길동" at
// the blank, family name first; "John Adam Doe" with the given name first and the family name last.
// A single word is the given name.
[[nodiscard]] PersonName splitFullName(std::string_view fullName);

// The display name: a name in East Asian script family name first without a blank, any other given
// name first.
[[nodiscard]] std::string fullName(const PersonName& name);

// Family name, comma, given name: "Kim, Minsu"; with only one of them, that one.
[[nodiscard]] std::string lastNameAndFirstName(const PersonName& name);

}  // namespace vlout::outlook
