// The terminal that a command runs in: its width, its interrupts.
#pragma once

#include <csignal>
#include <string>

namespace vlout::entry::cli {

// From now on the first interrupt only sets the flag that this returns, so that the command can
// stop in order; a second one ends the program.
[[nodiscard]] const volatile std::sig_atomic_t& handleInterrupts();

// True if there is a terminal to ask in.
[[nodiscard]] bool canAsk();

// Asks on standard error whether to go on, and reads the answer. False if there is no terminal.
[[nodiscard]] bool confirm(const std::string& question);

// The width of standard error in columns; 0 if it is not a terminal.
[[nodiscard]] int terminalWidth();

}  // namespace vlout::entry::cli
