#include "entry/option_file.h"

#include <string>

#include "entry/ini_file.h"
#include "text/trim.h"

namespace vlout::entry {
namespace {

std::string keyOf(std::size_t option) {
  return "OUT_CHECK" + std::to_string(option + 1);
}

// The part before the first NUL, trimmed.
std::string nullTerminated(std::string_view text) {
  return std::string(text::trim(text.substr(0, text.find('\0'))));
}

}  // namespace

IniFile optionFile(const std::filesystem::path& componentFolder) {
  return IniFile(componentFolder / "VelmoraOlSync.ini");
}

ui::OptionValues loadOptions(const std::filesystem::path& componentFolder) {
  const IniFile file = optionFile(componentFolder);
  // The window's old place is read and dropped: it always opens centred.
  static_cast<void>(file.read("Windows", "Top"));
  static_cast<void>(file.read("Windows", "Left"));
  ui::OptionValues options;
  for (std::size_t i = 0; i < options.size(); ++i) {
    options[i] = nullTerminated(file.read("SET", keyOf(i))) == "0" ? "0" : "1";
  }
  return options;
}

void saveOptions(const std::filesystem::path& componentFolder, const ui::OptionValues& options) {
  std::vector<IniFile::Entry> entries;
  for (std::size_t i = 0; i < options.size(); ++i) entries.push_back({keyOf(i), options[i]});
  optionFile(componentFolder).write("SET", entries);
}

}  // namespace vlout::entry
