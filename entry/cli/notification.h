// A notification of the desktop, for runs that nobody watches.
#pragma once

#include <string>

namespace vlout::entry::cli {

// Hands the text to notify-send. Where there is none, or no desktop, nothing happens: what it says
// stands in the output as well.
void notifyDesktop(const std::string& text);

}  // namespace vlout::entry::cli
