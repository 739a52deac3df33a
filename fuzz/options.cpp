// The option file: whatever stands in it, ten values come out, and those that are saved come back.
#include "entry/option_file.h"

#include "entry/text_file.h"
#include "fuzz/fuzz.h"

namespace vlout::fuzz {

void tryInput(std::string_view input) {
  const auto folder = scratchFolder();
  writeFile(folder / "VelmoraOlSync.ini", input);
  auto options = entry::loadOptions(folder);
  for (std::string& value : options) {
    require(value == "0" || value == "1", "an option is 0 or 1");
    value = value == "0" ? "1" : "0";
  }
  entry::saveOptions(folder, options);
  try {
    static_cast<void>(entry::readTextFile(folder / "VelmoraOlSync.ini"));
  } catch (const entry::EncodingError&) {
    return;  // a file in no known encoding has no options
  }
  require(entry::loadOptions(folder) == options, "options that are saved come back");
}

}  // namespace vlout::fuzz
