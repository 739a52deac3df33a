// The component's own option file, `VelmoraOlSync.ini` in the component folder: the states of the
// ten option check boxes between runs.
#pragma once

#include <filesystem>

#include "entry/ini_file.h"
#include "ui/component.h"

namespace vlout::entry {

// The ten values, each "0" or "1". Anything but "0" counts as "1"; if the file is missing,
// unreadable or in no known encoding, all are "1". The file in which the options are kept.
[[nodiscard]] IniFile optionFile(const std::filesystem::path& componentFolder);

[[nodiscard]] ui::OptionValues loadOptions(const std::filesystem::path& componentFolder);

// Writes the ten values as they are. A file that cannot be written keeps its old values, silently.
void saveOptions(const std::filesystem::path& componentFolder, const ui::OptionValues& options);

}  // namespace vlout::entry
