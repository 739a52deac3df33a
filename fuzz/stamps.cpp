// Stamps: what is read as a date is written so that it is read as the same one.
#include "fuzz/fuzz.h"
#include "text/date_time.h"

namespace vlout::fuzz {

void tryInput(std::string_view input) {
  const auto time = text::parseDateTime(input);
  if (!time) return;
  const auto whole = text::toWholeSeconds(*time);
  require(text::parseDateTime(text::formatStamp(*time)) == whole, "a stamp comes back");
  require(text::parseDateTime(text::formatDay(*time)).has_value(), "a day comes back");
}

}  // namespace vlout::fuzz
