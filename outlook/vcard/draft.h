// A new file that takes the place of an old one in a single step. The old file comes out in that
// step and is checked: if another program has changed it, it is put back. Nobody's version is lost,
// whoever else is writing. Folders save with it.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "outlook/vcard/file_state.h"

namespace vlout::outlook::vcard {

class Draft {
 public:
  // For an existing file of that open folder, in the state `replaced`, or for a new file. No other
  // run may be using the folder.
  Draft(int folder, const std::optional<FileState>& replaced);
  // Deletes a draft that has not reached its place.
  ~Draft();
  Draft(const Draft&) = delete;
  Draft& operator=(const Draft&) = delete;

  // Its name until then: that of a hidden file that is not a vCard. The name was free when the
  // draft was made.
  [[nodiscard]] const std::string& name() const { return name_; }

  // Creates the draft as an empty file with that mode. Returns its descriptor, or a negative number
  // and sets `errno`.
  [[nodiscard]] int create(unsigned mode);
  // Tells the draft that the caller has created the file under that name.
  void made() { isMade_ = true; }

  enum class Outcome {
    Done,
    Changed,  // another program has changed the file, and it stays
    Failed,   // `errno` tells why
  };
  // Takes the place of `name`.
  [[nodiscard]] Outcome place(const std::string& name);
  // Removes the file of that name, and puts nothing in its place.
  [[nodiscard]] Outcome takeAway(const std::string& name);

  // The hidden file that keeps another program's version whose place a later one had taken; usually
  // empty.
  [[nodiscard]] const std::string& keptAs() const { return keptAs_; }

 private:
  [[nodiscard]] Outcome placeNew(const std::string& name);
  [[nodiscard]] Outcome placeWithoutExchange(const std::string& name);
  void putBack(const std::string& name, const std::optional<FileState>& own, FileState out);

  int folder_;
  std::optional<FileState> replaced_;
  std::string name_;
  std::string keptAs_;
  bool isMade_ = false;
};

// True for the file name of a draft, and of another program's version that was kept.
[[nodiscard]] bool isDraft(std::string_view name);
[[nodiscard]] bool isKeptVersion(std::string_view name);

// Removes what a killed save has left under that name in an open folder. If the save had just taken
// out another program's version, that version is kept. `forEachFile` calls its argument with the
// file names of the folder until it returns false.
void removeDraft(int folder, const std::string& name,
                 const std::function<void(const std::function<bool(const char*)>&)>& forEachFile);

}  // namespace vlout::outlook::vcard
