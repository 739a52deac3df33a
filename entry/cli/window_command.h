// `vloutsync window`: hands over to the program that shows the windows, which lies beside this one
// or in the library folder. That is a program of its own, so that runs in the terminal need not
// load a toolkit.
#pragma once

#include <filesystem>
#include <string>

namespace vlout::entry::cli {

// True if there is a screen to show windows on.
[[nodiscard]] bool hasDisplay();

// Shows the windows on the component folder `given`, or on the default one, which is made at a
// first start from the desktop's menu. As `showWindow`.
void openWindow(const std::string& given, const std::string& contacts);

// Does not return when the program was found. Throws std::runtime_error.
void showWindow(const std::filesystem::path& folder, const std::filesystem::path& contacts);

}  // namespace vlout::entry::cli
