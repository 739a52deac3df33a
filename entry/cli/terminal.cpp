#include "entry/cli/terminal.h"

#include <iostream>
#include <sys/ioctl.h>
#include <unistd.h>

namespace vlout::entry::cli {
namespace {

volatile std::sig_atomic_t interrupted = 0;

}  // namespace

const volatile std::sig_atomic_t& handleInterrupts() {
  struct sigaction action {};
  action.sa_handler = [](int) { interrupted = 1; };
  action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
  return interrupted;
}

bool canAsk() {
  return isatty(STDIN_FILENO) != 0;
}

bool confirm(const std::string& question) {
  if (!canAsk()) return false;
  std::cerr << question << " [y/N] " << std::flush;
  std::string answer;
  std::getline(std::cin, answer);
  return answer == "y" || answer == "Y" || answer == "예";
}

int terminalWidth() {
  if (isatty(STDERR_FILENO) == 0) return 0;
  winsize size{};
  const bool known = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return known ? size.ws_col : 80;
}

}  // namespace vlout::entry::cli
