#include "ui/win32/form_window.h"

#include <algorithm>
#include <array>
#include <exception>

#include "windows/text.h"

namespace vlout::ui::win32 {
namespace {

constexpr int kFirstId = 100;  // behind the numbers that dialogs use themselves
constexpr int kMargin = 10;
constexpr int kGap = 6;

// A dialog without controls of its own: template, no menu, the usual class, no title.
struct alignas(DWORD) EmptyDialog {
  DLGTEMPLATE header{};
  std::array<WORD, 3> nothing{};
};

// The place nearest to `value`; the first one when there is no room.
int clampTo(int value, int first, int last) {
  return std::max(std::min(value, last), first);
}

}  // namespace

FormWindow::FormWindow(Form& form, HINSTANCE module, HWND owner, ShowError showError)
    : form_(form), showError_(std::move(showError)), layout_(form.layout()) {
  EmptyDialog dialog;
  dialog.header.style =
      WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_THICKFRAME | WS_MAXIMIZEBOX | WS_CLIPCHILDREN;
  dialog.header.dwExtendedStyle = WS_EX_DLGMODALFRAME | WS_EX_CONTROLPARENT;
  if (owner == nullptr) dialog.header.style |= WS_MINIMIZEBOX;
  window_ = CreateDialogIndirectParamW(module, &dialog.header, owner, receive,
                                       reinterpret_cast<LPARAM>(this));
  if (window_ == nullptr) throw std::runtime_error("창을 열 수 없습니다.");
  scaleByOurselves(window_);
  // On its owner's screen before anything is measured for it.
  const RECT screen = screenOf(owner).whole;
  SetWindowPos(window_, nullptr, screen.left, screen.top, 0, 0,
               SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
  SetWindowTextW(window_, windows::wide(form_.caption).c_str());
  addWidgets(layout_, {});
  for (Panel* panel : panels_) {
    panel->changed = [this] {
      for (const auto& widget : widgets_) widget->mirror();
    };
  }
  applyLook(dpiOf(window_));
  for (const auto& widget : widgets_) widget->mirror();
  place();
}

FormWindow::~FormWindow() {
  for (Panel* panel : panels_) panel->changed = nullptr;
  widgets_.clear();
  SetWindowLongPtrW(window_, GWLP_USERDATA, 0);
  DestroyWindow(window_);
}

void FormWindow::show() const {
  ShowWindow(window_, SW_SHOW);
  SetForegroundWindow(window_);
  const HWND first = GetNextDlgTabItem(window_, nullptr, FALSE);
  if (first != nullptr) SetFocus(first);
}

// --- arrangement --------------------------------------------------------------------------------

void FormWindow::addWidgets(const Layout& part, std::vector<const Panel*> panels) {
  if (part.kind == Layout::Kind::Panel) {
    panels_.push_back(part.control);
    panels.push_back(part.control);
  }
  for (const Layout& each : part.parts) addWidgets(each, panels);
  if (part.kind <= Layout::Kind::Space) return;
  const int id = kFirstId + static_cast<int>(widgets_.size());
  widgets_.push_back(Widget::make({part, window_, id, std::move(panels)}));
}

Widget* FormWindow::widgetOf(HWND window) const {
  const auto found = std::find_if(widgets_.begin(), widgets_.end(),
                                  [&](const auto& widget) { return widget->window() == window; });
  return found == widgets_.end() ? nullptr : found->get();
}

Widget* FormWindow::widgetFor(const Layout& part) const {
  const auto found = std::find_if(widgets_.begin(), widgets_.end(),
                                  [&](const auto& widget) { return &widget->part() == &part; });
  return found->get();
}

Arranger FormWindow::arranger() const {
  return {look_->pixels(kGap),
          [this](const Layout& part) { return widgetFor(part)->leastSize(*look_); }};
}

Size FormWindow::leastWindowSize() const {
  const Size inner = arranger().leastSize(layout_);
  const int margins = 2 * look_->pixels(kMargin);
  RECT frame{};
  RECT client{};
  GetWindowRect(window_, &frame);
  GetClientRect(window_, &client);
  const RECT screen = screenOf(window_).work;
  return {std::min<int>(inner.width + margins + (frame.right - frame.left) - client.right,
                        screen.right - screen.left),
          std::min<int>(inner.height + margins + (frame.bottom - frame.top) - client.bottom,
                        screen.bottom - screen.top)};
}

void FormWindow::applyLook(int dpi) {
  look_.emplace(dpi);
  for (const auto& widget : widgets_) widget->setLook(*look_);
}

// Where the form says, on its owner's screen; in the middle where that is too wide for the form's
// numbers. The middle stays where it is when the controls need more room.
void FormWindow::place() {
  const Size least = leastWindowSize();
  const int width = look_->twips(form_.width);
  const int height = look_->twips(form_.height);
  const Size size{std::max(width, least.width), std::max(height, least.height)};
  const auto [screen, work, dpi] = screenOf(window_);
  int left = (screen.right - screen.left - size.width) / 2;
  int top = (screen.bottom - screen.top - size.height) / 2;
  if (form_.centred) {
    left = MulDiv(form_.left, dpi, 1440) - (size.width - width) / 2;
    top = MulDiv(form_.top, dpi, 1440) - (size.height - height) / 2;
  }
  SetWindowPos(window_, nullptr, clampTo(screen.left + left, work.left, work.right - size.width),
               clampTo(screen.top + top, work.top, work.bottom - size.height), size.width,
               size.height, SWP_NOZORDER | SWP_NOACTIVATE);
  arrange();
}

void FormWindow::arrange() {
  RECT client{};
  GetClientRect(window_, &client);
  const int margin = look_->pixels(kMargin);
  const Rect inner{margin, margin, client.right - 2 * margin, client.bottom - 2 * margin};
  arranger().arrange(layout_, inner, [&](const Layout& part, const Rect& rect) {
    Widget& widget = *widgetFor(part);
    const bool dropsDown = part.kind == Layout::Kind::ComboBox;  // its height is that of its list
    MoveWindow(widget.window(), rect.left, rect.top, rect.width,
               dropsDown ? rect.height + look_->pixels(200) : rect.height, TRUE);
    widget.placed(rect.width);
  });
  InvalidateRect(window_, nullptr, TRUE);
}

// --- messages -----------------------------------------------------------------------------------

INT_PTR CALLBACK FormWindow::receive(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_INITDIALOG) {
    SetWindowLongPtrW(window, GWLP_USERDATA, lParam);
    return FALSE;  // the focus is set when the window is shown
  }
  auto* const self = reinterpret_cast<FormWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  if (self == nullptr || !self->look_) return FALSE;
  try {
    return self->handle(message, wParam, lParam);
  } catch (const std::exception& error) {  // must not pass through the system's own frames
    self->showError_(error.what());
    return TRUE;
  } catch (...) {
    self->showError_("알 수 없는 오류입니다.");
    return TRUE;
  }
}

INT_PTR FormWindow::handle(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_COMMAND:
      if (LOWORD(wParam) == IDCANCEL && lParam == 0) form_.keyPress(kEscape);
      if (Widget* const widget = widgetOf(reinterpret_cast<HWND>(lParam))) {
        widget->commanded(HIWORD(wParam));
      }
      return TRUE;
    case WM_NOTIFY: {
      auto& header = *reinterpret_cast<NMHDR*>(lParam);
      if (Widget* const widget = widgetOf(header.hwndFrom)) {
        SetWindowLongPtrW(window_, DWLP_MSGRESULT, widget->notified(header));
      }
      return TRUE;
    }
    case kRefresh:
      for (const auto& widget : widgets_) {
        if (reinterpret_cast<LPARAM>(widget.get()) == lParam) widget->refresh();
      }
      return TRUE;
    case WM_DRAWITEM: {
      const auto& item = *reinterpret_cast<const DRAWITEMSTRUCT*>(lParam);
      if (Widget* const widget = widgetOf(item.hwndItem)) widget->draw(item);
      return TRUE;
    }
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORSTATIC: {
      Widget* const widget = widgetOf(reinterpret_cast<HWND>(lParam));
      const HDC device = reinterpret_cast<HDC>(wParam);
      return widget == nullptr ? FALSE : reinterpret_cast<INT_PTR>(widget->paintColours(device));
    }
    case WM_SIZE:
      arrange();
      return TRUE;
    case WM_GETMINMAXINFO: {
      const Size least = leastWindowSize();
      reinterpret_cast<MINMAXINFO*>(lParam)->ptMinTrackSize = {least.width, least.height};
      return TRUE;
    }
    case WM_DPICHANGED: {
      const auto& rect = *reinterpret_cast<const RECT*>(lParam);
      applyLook(HIWORD(wParam));
      SetWindowPos(window_, nullptr, rect.left, rect.top, rect.right - rect.left,
                   rect.bottom - rect.top, SWP_NOZORDER | SWP_NOACTIVATE);
      return TRUE;
    }
    case WM_DESTROY:
      open_ = false;
      form_.requestClose();
      PostMessageW(nullptr, WM_NULL, 0, 0);  // so that the modal loop looks
      return TRUE;
    case WM_CLOSE:
      form_.requestClose();
      return TRUE;
    default:
      return FALSE;
  }
}

}  // namespace vlout::ui::win32
