#include "store/address_line.h"

#include <string_view>

#include "text/ascii.h"
#include "text/latin_script.h"
#include "text/trim.h"

namespace vlout::store {
namespace {

// The test trims what it is given, so street and city go into the line trimmed.
bool isLatin(AddressParts& parts) {
  const bool streetIsLatin = text::isLatinScript(parts.street);
  const bool cityIsLatin = text::isLatinScript(parts.city);
  return streetIsLatin && cityIsLatin;
}

std::string join(const AddressParts& parts, bool latin) {
  std::string line;
  if (latin) {
    line = parts.postOfficeBox + " " + parts.street + " " + parts.city + " " + parts.state + "  " +
           parts.country;
  } else {
    line = parts.country + " " + parts.state + " " + parts.city + " " + parts.street + " " +
           parts.postOfficeBox;
  }
  line = text::replaceAll(line, "대한민국", "");
  // One pass only, deliberately: two empty parts in a row leave a double blank in the line.
  line = text::replaceAll(line, "  ", " ");
  return std::string(text::trim(line));
}

// Takes a part off one end of the rest of the street, if it is there as separate words.
void dropRepeated(std::string& part, std::string_view& rest, bool atBeginning) {
  if (part.empty() || !(atBeginning ? rest.starts_with(part) : rest.ends_with(part))) return;
  const std::string_view left =
      atBeginning ? rest.substr(part.size()) : rest.substr(0, rest.size() - part.size());
  if (!left.empty() && (atBeginning ? left.front() : left.back()) != ' ') return;
  rest = text::trim(left);
  part.clear();
}

}  // namespace

std::string addressLine(AddressParts parts) {
  const bool latin = isLatin(parts);
  return join(parts, latin);
}

std::string addressLineWithoutRepeats(AddressParts parts) {
  const bool latin = isLatin(parts);
  const std::string street = parts.street;
  std::string_view rest = text::trim(street);
  for (std::string* const part : {&parts.country, &parts.state, &parts.city}) {
    dropRepeated(*part, rest, !latin);
  }
  dropRepeated(parts.postOfficeBox, rest, latin);
  return join(parts, latin);
}

}  // namespace vlout::store
