// The window of a control: shows the control's state, and turns what the user does into the same
// changes of state that the form itself makes. Each kind of control has a class.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <memory>
#include <vector>

#include "ui/layout.h"
#include "ui/win32/look.h"

namespace vlout::ui::win32 {

struct WidgetPlace {
  const Layout& part;
  HWND parent;
  int id;                            // the window's number in its parent
  std::vector<const Panel*> panels;  // that the control stands on
};

// Sent to the parent by a widget that wants one call of `refresh` later; lParam is the widget.
inline constexpr UINT kRefresh = WM_APP + 1;

class Widget {
 public:
  static std::unique_ptr<Widget> make(const WidgetPlace& place);

  Widget(const Widget&) = delete;
  Widget& operator=(const Widget&) = delete;
  virtual ~Widget();

  [[nodiscard]] const Layout& part() const { return part_; }
  [[nodiscard]] HWND window() const { return window_; }

  virtual void setLook(const Look& look);
  [[nodiscard]] virtual Size leastSize(const Look& look) const = 0;

  // Control to window.
  virtual void mirror();
  virtual void refresh() {}
  virtual void placed(int width) { static_cast<void>(width); }
  virtual void draw(const DRAWITEMSTRUCT& item) { static_cast<void>(item); }
  // Window to control: what WM_COMMAND and WM_NOTIFY bring. `notified` gives the answer.
  virtual void commanded(UINT code) { static_cast<void>(code); }
  virtual LRESULT notified(NMHDR& header);
  // Sets the colours that the window paints with; returns its background, or nothing for the usual
  // one.
  virtual HBRUSH paintColours(HDC device);

 protected:
  Widget(const WidgetPlace& place, const wchar_t* windowClass, DWORD style,
         DWORD extendedStyle = 0);

  LRESULT send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const {
    return SendMessageW(window_, message, wParam, lParam);
  }
  void showText(std::string_view text) const;

  // True while the window is being updated; what it reports then does not come from the user.
  bool mirroring_ = false;

 private:
  const Layout& part_;
  std::vector<const Panel*> panels_;
  HWND window_;
};

}  // namespace vlout::ui::win32
