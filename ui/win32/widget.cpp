#include "ui/win32/widget.h"

#include <algorithm>

#include "ui/win32/list_widgets.h"
#include "ui/win32/picture_bitmap.h"
#include "windows/text.h"

namespace vlout::ui::win32 {
namespace {

using windows::wide;
using Kind = Layout::Kind;

COLORREF systemColour(Colour colour) {
  return colour == Colour::ButtonFace ? GetSysColor(COLOR_BTNFACE) : static_cast<COLORREF>(colour);
}

// --- labels and boxes ---------------------------------------------------------------------------

class LabelWidget : public Widget {
 public:
  explicit LabelWidget(const WidgetPlace& place)
      : Widget(place, WC_STATICW, SS_NOPREFIX | SS_CENTERIMAGE) {}

  [[nodiscard]] Size leastSize(const Look& look) const override {
    const auto text = part().control == nullptr ? part().caption : part().control->text();
    return {look.textWidth(text) + look.pixels(2), look.lineHeight() + look.pixels(2)};
  }
  HBRUSH paintColours(HDC device) override {
    if (part().kind != Kind::ColouredLabel) return nullptr;
    const auto& label = static_cast<const ColouredLabel&>(*part().control);
    SetTextColor(device, systemColour(label.foreColour()));
    SetBkMode(device, TRANSPARENT);
    return GetSysColorBrush(COLOR_BTNFACE);
  }
  void mirror() override {
    Widget::mirror();
    InvalidateRect(window(), nullptr, TRUE);
  }
};

class EditWidget : public Widget {
 public:
  explicit EditWidget(const WidgetPlace& place)
      : Widget(place, WC_EDITW, WS_TABSTOP | ES_AUTOHSCROLL, WS_EX_CLIENTEDGE) {
    send(EM_SETLIMITTEXT, 0);  // as long as there is memory
  }

  [[nodiscard]] Size leastSize(const Look& look) const override {
    return {look.characters(std::max(part().characters, 8)) + look.pixels(8),
            look.lineHeight() + look.pixels(8)};
  }
  void mirror() override {
    Widget::mirror();
    send(EM_SETREADONLY, box().locked() ? TRUE : FALSE);
    InvalidateRect(window(), nullptr, TRUE);
  }
  void commanded(UINT code) override {
    if (code != EN_CHANGE || mirroring_) return;
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window())) + 1, L'\0');
    const int length = GetWindowTextW(window(), text.data(), static_cast<int>(text.size()));
    text.resize(static_cast<std::size_t>(length));
    box().setText(windows::utf8(text));
  }
  HBRUSH paintColours(HDC device) override {
    SetTextColor(device, systemColour(box().foreColour()));
    const COLORREF back = systemColour(box().backColour());
    SetBkColor(device, back);
    brush_.reset(CreateSolidBrush(back));
    return brush_.get();
  }

 private:
  [[nodiscard]] TextBox& box() const { return static_cast<TextBox&>(*part().control); }

  GdiObject<HBRUSH> brush_;
};

// --- buttons ------------------------------------------------------------------------------------

class ButtonWidget : public Widget {
 public:
  explicit ButtonWidget(const WidgetPlace& place)
      : Widget(place, WC_BUTTONW,
               WS_TABSTOP |
                   (place.part.kind == Kind::DefaultButton ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON)) {
    if (place.part.kind == Kind::DefaultButton) {
      SendMessageW(place.parent, DM_SETDEFID, static_cast<WPARAM>(place.id), 0);
    }
  }

  [[nodiscard]] Size leastSize(const Look& look) const override {
    const int text = look.textWidth(part().control->text()) + look.pixels(20);
    return {std::max(text, look.characters(part().characters)), look.lineHeight() + look.pixels(8)};
  }
  void commanded(UINT code) override {
    if (code == BN_CLICKED) static_cast<const Button&>(*part().control).press();
  }
};

class OptionWidget : public Widget {
 public:
  explicit OptionWidget(const WidgetPlace& place)
      : Widget(place, WC_BUTTONW, WS_TABSTOP | BS_AUTORADIOBUTTON) {}

  [[nodiscard]] Size leastSize(const Look& look) const override {
    return {look.textWidth(part().control->text()) + look.pixels(24),
            look.lineHeight() + look.pixels(4)};
  }
  void commanded(UINT code) override {
    if (code == BN_CLICKED) static_cast<const OptionButton&>(*part().control).press();
  }
};

class CheckWidget : public Widget {
 public:
  explicit CheckWidget(const WidgetPlace& place)
      : Widget(place, WC_BUTTONW, WS_TABSTOP | BS_3STATE) {}

  [[nodiscard]] Size leastSize(const Look& look) const override {
    return {look.textWidth(part().control->text()) + look.pixels(24),
            look.lineHeight() + look.pixels(4)};
  }
  void mirror() override {
    Widget::mirror();
    send(BM_SETCHECK, static_cast<WPARAM>(box().value()));  // the values are the same numbers
  }
  void commanded(UINT code) override {
    if (code == BN_CLICKED) box().press();
  }

 private:
  [[nodiscard]] CheckBox& box() const { return static_cast<CheckBox&>(*part().control); }
};

class ComboWidget : public Widget {
 public:
  explicit ComboWidget(const WidgetPlace& place)
      : Widget(place, WC_COMBOBOXW, WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWNLIST) {}

  [[nodiscard]] Size leastSize(const Look& look) const override {
    int width = look.characters(part().characters);
    for (const std::string& item : combo().items()) width = std::max(width, look.textWidth(item));
    return {width + look.pixels(28), look.lineHeight() + look.pixels(8)};
  }
  void mirror() override {
    Widget::mirror();
    if (shown_ != combo().items()) {
      shown_ = combo().items();
      send(CB_RESETCONTENT);
      for (const std::string& item : shown_) {
        send(CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(wide(item).c_str()));
      }
    }
    send(CB_SETCURSEL, static_cast<WPARAM>(combo().index()));
  }
  void commanded(UINT code) override {
    if (code == CBN_SELCHANGE) combo().setIndex(static_cast<int>(send(CB_GETCURSEL)));
  }

 private:
  [[nodiscard]] ComboBox& combo() const { return static_cast<ComboBox&>(*part().control); }

  std::vector<std::string> shown_;
};

// --- progress, status, picture ------------------------------------------------------------------

class ProgressWidget : public Widget {
 public:
  explicit ProgressWidget(const WidgetPlace& place) : Widget(place, PROGRESS_CLASSW, 0) {}

  [[nodiscard]] Size leastSize(const Look& look) const override {
    return {look.pixels(100), look.pixels(14)};
  }
  void mirror() override {
    Widget::mirror();
    send(PBM_SETPOS, static_cast<WPARAM>(static_cast<ProgressBar&>(*part().control).value()));
  }
};

class StatusWidget : public Widget {
 public:
  explicit StatusWidget(const WidgetPlace& place) : Widget(place, STATUSCLASSNAMEW, 0) {}

  [[nodiscard]] Size leastSize(const Look& look) const override {
    return {0, look.lineHeight() + look.pixels(6)};
  }
};

class ImageWidget : public Widget {
 public:
  explicit ImageWidget(const WidgetPlace& place) : Widget(place, WC_STATICW, SS_OWNERDRAW) {}

  [[nodiscard]] Size leastSize(const Look& look) const override {
    return {look.pixels(80), look.pixels(40)};
  }
  void mirror() override {
    Widget::mirror();
    InvalidateRect(window(), nullptr, TRUE);
  }
  void draw(const DRAWITEMSTRUCT& item) override {
    const int number = static_cast<const Image&>(*part().control).image();
    const int height = item.rcItem.bottom - item.rcItem.top;
    FillRect(item.hDC, &item.rcItem, GetSysColorBrush(COLOR_BTNFACE));
    if (number < 1) return;
    const auto bitmap = bitmapOf(static_cast<Picture>(number - 1), height);
    const HDC source = CreateCompatibleDC(item.hDC);
    const HGDIOBJ old = SelectObject(source, bitmap.get());
    const BLENDFUNCTION blend{AC_SRC_OVER, 0, 255, AC_SRC_ALPHA};
    AlphaBlend(item.hDC, 0, 0, 2 * height, height, source, 0, 0, 2 * height, height, blend);
    SelectObject(source, old);
    DeleteDC(source);
  }
};

}  // namespace

Widget::Widget(const WidgetPlace& place, const wchar_t* windowClass, DWORD style,
               DWORD extendedStyle)
    : part_(place.part),
      panels_(place.panels),
      window_(CreateWindowExW(extendedStyle, windowClass, wide(place.part.caption).c_str(),
                              WS_CHILD | style, 0, 0, 0, 0, place.parent,
                              reinterpret_cast<HMENU>(static_cast<INT_PTR>(place.id)), nullptr,
                              nullptr)) {
  if (part_.control == nullptr) ShowWindow(window_, SW_SHOWNA);
  // Other programs (readers of screens, tests) may find a control under its name.
  if (!part_.name.empty()) SetPropW(window_, wide(part_.name).c_str(), window_);
  if (part_.control != nullptr) part_.control->changed = [this] { mirror(); };
}

Widget::~Widget() {
  if (!part_.name.empty()) RemovePropW(window_, wide(part_.name).c_str());
  if (part_.control != nullptr) part_.control->changed = nullptr;
}

void Widget::setLook(const Look& look) {
  const bool bold = part_.control != nullptr && part_.control->bold();
  send(WM_SETFONT, reinterpret_cast<WPARAM>(bold ? look.boldFont() : look.font()), TRUE);
}

void Widget::showText(std::string_view text) const {
  const std::wstring wanted = wide(text);
  std::wstring shown(static_cast<std::size_t>(GetWindowTextLengthW(window_)) + 1, L'\0');
  shown.resize(static_cast<std::size_t>(
      GetWindowTextW(window_, shown.data(), static_cast<int>(shown.size()))));
  if (wanted != shown) SetWindowTextW(window_, wanted.c_str());
}

void Widget::mirror() {
  if (part_.control == nullptr) return;
  mirroring_ = true;
  const Kind kind = part_.kind;
  if (kind != Kind::ComboBox && kind != Kind::Image) showText(part_.control->text());
  // A disabled window that keeps the focus would swallow all keys, Esc among them.
  if (!part_.control->enabled() && GetFocus() == window_) {
    SendMessageW(GetParent(window_), WM_NEXTDLGCTL, 0, FALSE);
  }
  EnableWindow(window_, part_.control->enabled() ? TRUE : FALSE);
  const bool seen =
      part_.control->visible() && std::all_of(panels_.begin(), panels_.end(),
                                              [](const Panel* panel) { return panel->visible(); });
  ShowWindow(window_, seen ? SW_SHOWNA : SW_HIDE);
  mirroring_ = false;
}

LRESULT Widget::notified(NMHDR& header) {
  static_cast<void>(header);
  return 0;
}

HBRUSH Widget::paintColours(HDC device) {
  static_cast<void>(device);
  return nullptr;
}

std::unique_ptr<Widget> Widget::make(const WidgetPlace& place) {
  switch (place.part.kind) {
    case Kind::TextBox:
      return std::make_unique<EditWidget>(place);
    case Kind::Button:
    case Kind::DefaultButton:
      return std::make_unique<ButtonWidget>(place);
    case Kind::OptionButton:
      return std::make_unique<OptionWidget>(place);
    case Kind::CheckBox:
      return std::make_unique<CheckWidget>(place);
    case Kind::ComboBox:
      return std::make_unique<ComboWidget>(place);
    case Kind::ListView:
      return makeListWidget(place);
    case Kind::TreeView:
      return makeTreeWidget(place);
    case Kind::ProgressBar:
      return std::make_unique<ProgressWidget>(place);
    case Kind::StatusBar:
      return std::make_unique<StatusWidget>(place);
    case Kind::Image:
      return std::make_unique<ImageWidget>(place);
    default:
      return std::make_unique<LabelWidget>(place);
  }
}

}  // namespace vlout::ui::win32
