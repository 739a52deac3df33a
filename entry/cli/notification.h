// A desktop notification, for runs that nobody watches.
#pragma once

#include <string>

namespace vlout::entry::cli {

// Passes the text to notify-send. Without it, or without a desktop, nothing happens; the text is in
// the output as well.
void notifyDesktop(const std::string& text);

}  // namespace vlout::entry::cli
