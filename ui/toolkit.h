// The toolkit port: shows forms modally, shows message boxes, knows the screen, and lets events
// through during a run. Qt, Win32 and the terminal each have one; a form sees nothing else of them.
#pragma once

#include <array>
#include <filesystem>
#include <string_view>

#include "transfer/run_window.h"

namespace vlout::ui {

using transfer::MessageIcon;

class Form;

struct ScreenSize {
  int width = 0;  // in twips, as the sizes of forms are
  int height = 0;
};

// The 16 bytes of a globally unique identifier, in memory order.
using Guid = std::array<unsigned char, 16>;

class Toolkit {
 public:
  Toolkit() = default;
  Toolkit(const Toolkit&) = delete;
  Toolkit& operator=(const Toolkit&) = delete;
  virtual ~Toolkit() = default;

  // Shows a loaded form and returns once it is hidden or unloaded.
  virtual void showModal(Form& form) = 0;

  // A modal message box with only an OK button and the component's default title.
  virtual void messageBox(MessageIcon icon, std::string_view text) = 0;

  // A modal question. False for no, and if nobody can be asked.
  [[nodiscard]] virtual bool ask(std::string_view question) {
    static_cast<void>(question);
    return false;
  }

  // Lets the user choose an existing folder; an empty path if none was chosen.
  [[nodiscard]] virtual std::filesystem::path chooseFolder(std::string_view title,
                                                           const std::filesystem::path& start) {
    static_cast<void>(title);
    static_cast<void>(start);
    return {};
  }

  // The size of the screen that the next form opens on.
  [[nodiscard]] virtual ScreenSize screenSize() const = 0;

  // A new identifier, from the system if it makes such, otherwise 128 random bits. Throws
  // std::exception.
  [[nodiscard]] virtual Guid newGuid() const;

  // False if a script acts instead of a user.
  [[nodiscard]] virtual bool hasUser() const { return true; }
  // Whether a text box can show several lines.
  [[nodiscard]] virtual bool hasParagraphs() const { return false; }

  // Gives the component's windows the look of a skin file, or the usual look for an empty path.
  // Does nothing if windows have no skins.
  virtual void applySkin(const std::filesystem::path& skinFile) { static_cast<void>(skinFile); }

  // Redraws what has changed while the program waits for something else, without taking input.
  virtual void repaint() {}

  // Lets pending events through. A toolkit with windows to repaint waits a millisecond first.
  virtual void pump() = 0;

  // The same without the wait, for work that takes long enough by itself.
  virtual void pumpAtOnce() { pump(); }
};

// Pumps `count` times; not at all if the count is less than 1.
inline void pumpWait(Toolkit& toolkit, int count) {
  for (int i = 0; i < count; ++i) toolkit.pump();
}

}  // namespace vlout::ui
