// The toolkit port: showing a form modally, message boxes, the screen, and the pump that lets
// events through during a run. Qt, Win32 and the terminal each bring one; a form never sees more
// than this.
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

  // A modal question; false for no, and where nobody can be asked.
  [[nodiscard]] virtual bool ask(std::string_view question) {
    static_cast<void>(question);
    return false;
  }

  // Lets the user choose a folder that is there; an empty path when none was chosen.
  [[nodiscard]] virtual std::filesystem::path chooseFolder(std::string_view title,
                                                           const std::filesystem::path& start) {
    static_cast<void>(title);
    static_cast<void>(start);
    return {};
  }

  // Of the screen that the next form opens on.
  [[nodiscard]] virtual ScreenSize screenSize() const = 0;

  // A new identifier, the system's where it has such; else 128 random bits. Throws std::exception.
  [[nodiscard]] virtual Guid newGuid() const;

  // False where a script answers in place of a user.
  [[nodiscard]] virtual bool hasUser() const { return true; }
  // Whether a text box can show several lines.
  [[nodiscard]] virtual bool hasParagraphs() const { return false; }

  // Gives the component's windows the look of a skin file, or the usual one for an empty path.
  // Does nothing where windows have no skins.
  virtual void applySkin(const std::filesystem::path& skinFile) { static_cast<void>(skinFile); }

  // Draws what has changed, while the program waits for something else, and takes no input.
  virtual void repaint() {}

  // Lets pending events through. A toolkit with windows to repaint waits a millisecond first.
  virtual void pump() = 0;

  // The same without the wait, for work that takes its time by itself.
  virtual void pumpAtOnce() { pump(); }
};

// Pumps `count` times; not at all for a count less than 1.
inline void pumpWait(Toolkit& toolkit, int count) {
  for (int i = 0; i < count; ++i) toolkit.pump();
}

}  // namespace vlout::ui
