// A file in the making that takes the place of another one in a single step. What stood there comes
// out in that step and is looked at: if another program has changed it, it goes back. Nobody's
// version is lost, whoever writes meanwhile. Folders save by it.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "outlook/vcard/file_state.h"

namespace vlout::outlook::vcard {

class Draft {
 public:
  // For a file of that open folder that is in the state `replaced`, or for a new one. The folder is
  // this process's alone.
  Draft(int folder, const std::optional<FileState>& replaced);
  // Removes what has not got its place.
  ~Draft();
  Draft(const Draft&) = delete;
  Draft& operator=(const Draft&) = delete;

  // Where it lies until then: hidden, and no vCard by its name. Free when the draft was made.
  [[nodiscard]] const std::string& name() const { return name_; }

  // Makes it an empty file with that mode; its descriptor, or a negative number and `errno`.
  [[nodiscard]] int create(unsigned mode);
  // For one that the caller has made under its name.
  void made() { isMade_ = true; }

  enum class Outcome {
    Done,
    Changed,  // the file is not what it was, and stays
    Failed,   // `errno` tells why
  };
  // Takes the place of `name`.
  [[nodiscard]] Outcome place(const std::string& name);
  // Takes the file of that name away, with no draft in its place.
  [[nodiscard]] Outcome takeAway(const std::string& name);

  // The hidden file that holds another program's version for which there was no other place, since
  // a later one had taken it; mostly empty.
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

// Whether a name of a folder is one of a draft, or of another program's version that was kept.
[[nodiscard]] bool isDraft(std::string_view name);
[[nodiscard]] bool isKeptVersion(std::string_view name);

// Removes what a killed save has left of that name in an open folder. When it had just taken
// another program's version out of its place, that one is kept. `forEachFile` calls its argument
// with the names of the folder.
void removeDraft(int folder, const std::string& name,
                 const std::function<void(const std::function<void(const char*)>&)>& forEachFile);

}  // namespace vlout::outlook::vcard
