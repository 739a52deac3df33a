// How a form's controls are arranged, independently of any toolkit: in rows, columns and grids. A
// form describes itself once, and the views of all toolkits build their windows from that. The Tab
// key goes through the controls in the same order.
#pragma once

#include <string_view>
#include <utility>
#include <vector>

#include "ui/controls.h"

namespace vlout::ui {

struct Layout {
  enum class Kind {
    Row,
    Column,
    Grid,   // `columns` cells a row, filled from left to right
    Stack,  // parts in the same place; the form shows one at a time
    Panel,  // one part, shown only while `control` is visible
    Space,  // takes up what is left
    Caption,
    Label,
    ColouredLabel,
    TextBox,
    Button,
    DefaultButton,  // the Enter key presses it
    OptionButton,
    CheckBox,
    ComboBox,
    ListView,
    TreeView,
    ProgressBar,
    StatusBar,
    Image,
  };

  Kind kind;
  std::string_view name{};     // of the control
  Control* control = nullptr;  // of the class that fits the kind
  std::string_view caption{};  // of a fixed caption
  std::vector<Layout> parts{};
  int columns = 1;
  int stretch = 0;     // its share of the space that is left
  int characters = 0;  // the least width, in characters; 0 for what its text needs
  char key = 0;        // presses it together with Alt, on toolkits that show such keys
  int lines = 0;       // the least height, in lines of text; 0 for the usual one

  // The same part with another share or size.
  [[nodiscard]] Layout stretched(int share) && {
    stretch = share;
    return std::move(*this);
  }
  [[nodiscard]] Layout wide(int count) && {
    characters = count;
    return std::move(*this);
  }
  [[nodiscard]] Layout keyed(char letter) && {
    key = letter;
    return std::move(*this);
  }
  [[nodiscard]] Layout high(int count) && {
    lines = count;
    return std::move(*this);
  }
};

namespace layout {

using Parts = std::vector<Layout>;

[[nodiscard]] inline Layout row(Parts parts) {
  return {.kind = Layout::Kind::Row, .parts = std::move(parts)};
}
[[nodiscard]] inline Layout column(Parts parts) {
  return {.kind = Layout::Kind::Column, .parts = std::move(parts)};
}
[[nodiscard]] inline Layout grid(int columns, Parts parts) {
  return {.kind = Layout::Kind::Grid, .parts = std::move(parts), .columns = columns};
}
[[nodiscard]] inline Layout stack(Parts parts) {
  return {.kind = Layout::Kind::Stack, .parts = std::move(parts)};
}
[[nodiscard]] inline Layout panel(std::string_view name, Panel& control, Layout part) {
  return {
      .kind = Layout::Kind::Panel, .name = name, .control = &control, .parts = {std::move(part)}};
}
[[nodiscard]] inline Layout space() {
  return {.kind = Layout::Kind::Space, .stretch = 1};
}
[[nodiscard]] inline Layout fixed(std::string_view text) {
  return {.kind = Layout::Kind::Caption, .caption = text};
}
[[nodiscard]] inline Layout label(std::string_view name, Label& control) {
  return {.kind = Layout::Kind::Label, .name = name, .control = &control};
}
[[nodiscard]] inline Layout statusBar(std::string_view name, StatusBar& control) {
  return {.kind = Layout::Kind::StatusBar, .name = name, .control = &control};
}
[[nodiscard]] inline Layout defaultButton(std::string_view name, Button& control) {
  return {.kind = Layout::Kind::DefaultButton, .name = name, .control = &control};
}
[[nodiscard]] inline Layout control(std::string_view name, ColouredLabel& it) {
  return {.kind = Layout::Kind::ColouredLabel, .name = name, .control = &it};
}
[[nodiscard]] inline Layout control(std::string_view name, TextBox& it) {
  return {.kind = Layout::Kind::TextBox, .name = name, .control = &it};
}
[[nodiscard]] inline Layout control(std::string_view name, Button& it) {
  return {.kind = Layout::Kind::Button, .name = name, .control = &it};
}
[[nodiscard]] inline Layout control(std::string_view name, OptionButton& it) {
  return {.kind = Layout::Kind::OptionButton, .name = name, .control = &it};
}
[[nodiscard]] inline Layout control(std::string_view name, CheckBox& it) {
  return {.kind = Layout::Kind::CheckBox, .name = name, .control = &it};
}
[[nodiscard]] inline Layout control(std::string_view name, ComboBox& it) {
  return {.kind = Layout::Kind::ComboBox, .name = name, .control = &it};
}
[[nodiscard]] inline Layout control(std::string_view name, ListView& it) {
  return {.kind = Layout::Kind::ListView, .name = name, .control = &it};
}
[[nodiscard]] inline Layout control(std::string_view name, TreeView& it) {
  return {.kind = Layout::Kind::TreeView, .name = name, .control = &it};
}
[[nodiscard]] inline Layout control(std::string_view name, ProgressBar& it) {
  return {.kind = Layout::Kind::ProgressBar, .name = name, .control = &it};
}
[[nodiscard]] inline Layout control(std::string_view name, Image& it) {
  return {.kind = Layout::Kind::Image, .name = name, .control = &it};
}

}  // namespace layout

}  // namespace vlout::ui
