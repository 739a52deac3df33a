// `vloutsync run`: one transfer through the main window's own controls, with a script in place of
// the user. The command reads the arguments and calls it.
#pragma once

#include <csignal>
#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "ui/frm_outlook_sync.h"
#include "ui/terminal/terminal_toolkit.h"

namespace vlout::entry::cli {

// A box of the main window and the value to click it to.
struct BoxSetting {
  std::string name;  // OUT_CHECK1 … OUT_CHECK10 or chadd
  int value = 0;
};

struct RunRequest {
  ui::frmOutlookSync::Mode mode = ui::frmOutlookSync::kExport;
  std::filesystem::path folder;
  std::filesystem::path contacts;
  std::optional<ui::frmOutlookSync::Range> range;
  bool subgroups = false;
  std::string group{};  // number, path or name of a group, instead of the one in the host's list
  std::vector<BoxSetting> boxes;
  bool preview = false;  // show what the run would do, and write nothing
  bool goOn = false;     // even with other contacts than the last time, or if they are all gone
  ui::terminal::TerminalToolkit::OnConflict onConflict =
      ui::terminal::TerminalToolkit::OnConflict::Skip;
};

// Reads NAME=VALUE; nothing if the name is not a box, or the value neither 0 nor 1.
[[nodiscard]] std::optional<BoxSetting> parseBoxSetting(const std::string& text);

// True if the run reached its closing message. `progressWidth` and `interrupted` are as for the
// terminal toolkit.
[[nodiscard]] bool runTransfer(const RunRequest& request, std::ostream& results,
                               std::ostream& errors, int progressWidth,
                               const volatile std::sig_atomic_t& interrupted);

}  // namespace vlout::entry::cli
