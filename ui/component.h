// What the windows need from the component that opened them: its database connection, its contact
// store, the option values, and the files that the host and the component keep beside it. The entry
// layer implements it; there is one, for the life of the process.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "outlook/contact_store.h"
#include "store/connection.h"
#include "transfer/run.h"
#include "ui/desk.h"

namespace vlout::ui {

// The saved states of the ten option check boxes, `OUT_CHECK1` to `OUT_CHECK10`, as texts.
using OptionValues = std::array<std::string, 10>;

// The folder that was open in the host; empty texts if the host left none.
struct ExportFolder {
  std::string id;
  std::int32_t parent = 0;
  std::string name;
};

// What a modal window leaves for its caller. The values outlive the windows; the caller resets them
// before it shows one.
struct WindowResults {
  bool chosen = false;    // set by the group picker and the address dialog
  std::string groupName;  // the group picker's choice
  std::int32_t groupKey = -1;
  std::int32_t groupParent = 0;
  std::int16_t conflictOutcome = 0;  // the compare window's
};

// A field that a previewed run changes on one side of a pair.
struct FieldChange {
  bool onCard = false;  // of the card; otherwise of the contact
  std::string caption;
  std::string before;
  std::string after;
};

using transfer::RunDescription;
using transfer::RunOutcome;

class Component {
 public:
  Component() = default;
  Component(const Component&) = delete;
  Component& operator=(const Component&) = delete;
  virtual ~Component() = default;

  [[nodiscard]] virtual store::Connection& connection() = 0;
  [[nodiscard]] virtual outlook::ContactStore& contacts() = 0;

  // Where a run puts its temporary files.
  [[nodiscard]] virtual std::filesystem::path temporaryFolder() const { return folder() / "temp"; }

  // Between `beginPreview` and `endPreview` the connection and the contact store are views of the
  // real ones: a run finds everything, but what it writes does not reach them. `takeChanges`
  // returns the fields changed since its last call. `beginPreview` throws DatabaseError.
  [[nodiscard]] virtual bool canPreview() const { return false; }
  virtual void beginPreview() {}
  virtual void endPreview() {}
  [[nodiscard]] virtual std::vector<FieldChange> takeChanges() { return {}; }

  // Called around every run. An objection keeps the run from starting; if it is empty, `endRun`
  // follows.
  [[nodiscard]] virtual std::string beginRunOrObject(const RunDescription& run) {
    static_cast<void>(run);
    return {};
  }
  virtual void endRun(const RunOutcome& outcome) { static_cast<void>(outcome); }

  // The shared option values; `saveOptions` writes them to the option file.
  [[nodiscard]] virtual OptionValues& options() = 0;
  virtual void saveOptions() = 0;

  // True if a host has left a list, readable or not.
  [[nodiscard]] virtual bool hasExportList() const = 0;
  [[nodiscard]] virtual ExportFolder readExportFolder() = 0;
  // The ids of the selected cards, ascending; empty when there are none.
  [[nodiscard]] virtual std::vector<std::string> readSelectedCards() = 0;

  [[nodiscard]] virtual WindowResults& results() = 0;

  // The skin number in the host's settings: 0 if there is none, nothing if it is too large.
  [[nodiscard]] virtual std::optional<std::int16_t> skinTheme() = 0;
  [[nodiscard]] virtual const std::filesystem::path& folder() const = 0;

  // Releases the contact store, for those who need the contacts to themselves. The next caller gets
  // a new one.
  virtual void releaseContacts() {}

  // What the component offers around its transfers; null if a host application does that.
  [[nodiscard]] virtual Desk* desk() { return nullptr; }

  // The parent of the group that the main window shows; 1 if no group is set.
  [[nodiscard]] virtual std::int32_t& selectedGroupParent() = 0;
};

}  // namespace vlout::ui
