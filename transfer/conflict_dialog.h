// What two-way sync asks the user about a pair that changed on both sides. The main window
// implements it with the compare window.
#pragma once

#include <optional>
#include <string>

#include "outlook/contact_store.h"
#include "text/date_time.h"

namespace vlout::transfer {

// What the user decided. Any other number leaves the pair as it is.
enum ConflictOutcome : int {
  kSkipPair = 0,
  kTakeNewerSide = 1,
  kKeepCardSide = 2,
  kKeepOutlookSide = 3,
  kStopRun = 5,
};

struct ConflictPair {
  outlook::Contact& contact;
  std::string rowId;
  std::optional<text::DateTime> rowTime;
  text::DateTime contactTime;
  std::string folderName;
};

class ConflictDialog {
 public:
  ConflictDialog() = default;
  ConflictDialog(const ConflictDialog&) = delete;
  ConflictDialog& operator=(const ConflictDialog&) = delete;
  virtual ~ConflictDialog() = default;

  // Shows the pair until the user has decided. Returns a ConflictOutcome or another number.
  virtual int resolve(const ConflictPair& pair) = 0;

  // After `kKeepCardSide` and `kKeepOutlookSide`: writes the texts in that side's boxes to both
  // sides. False if they were not saved; the user has then been told.
  virtual bool saveCardSide(const ConflictPair& pair) = 0;
  virtual bool saveOutlookSide(const ConflictPair& pair) = 0;
};

}  // namespace vlout::transfer
