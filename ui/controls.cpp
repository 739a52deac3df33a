#include "ui/controls.h"

#include <algorithm>

namespace vlout::ui {

void Control::notify() const {
  if (changed) changed();
}

void Control::setText(std::string_view text) {
  if (text_ == text) return;
  text_ = text;
  notify();
}

void Control::setEnabled(bool enabled) {
  if (enabled_ == enabled) return;
  enabled_ = enabled;
  notify();
}

void Control::setVisible(bool visible) {
  if (visible_ == visible) return;
  visible_ = visible;
  notify();
}

void Control::setBold(bool bold) {
  if (bold_ == bold) return;
  bold_ = bold;
  notify();
}

void Button::press() const {
  if (enabled() && clicked) clicked();
}

void OptionButton::press() const {
  if (enabled() && clicked) clicked();
}

void CheckBox::setValue(int value) {
  if (value_ == value) return;
  value_ = value;
  notify();
  if (clicked) clicked();
}

void ComboBox::addItem(std::string_view text) {
  items_.emplace_back(text);
  notify();
}

void ComboBox::clear() {
  items_.clear();
  index_ = -1;
  notify();
}

void ComboBox::setIndex(int index) {
  index_ = index;
  notify();
  if (clicked) clicked();
}

void ListView::addColumn(std::string_view title, int width) {
  columns_.push_back({std::string(title), width});
  notify();
}

std::size_t ListView::addRow(std::string_view text) {
  Row row;
  row.cells.emplace_back(text);
  row.cells.resize(std::max<std::size_t>(columns_.size(), 1));
  rows_.push_back(std::move(row));
  if (events.rowAdded) events.rowAdded(rows_.size() - 1);
  return rows_.size() - 1;
}

void ListView::setCell(std::size_t row, std::size_t column, std::string_view text) {
  auto& cells = rows_.at(row).cells;
  if (cells.size() <= column) cells.resize(column + 1);
  cells[column] = text;
  if (events.cellSet) events.cellSet(row, column);
}

std::string_view ListView::cell(std::size_t row, std::size_t column) const {
  const auto& cells = rows_.at(row).cells;
  return column < cells.size() ? std::string_view(cells[column]) : std::string_view();
}

void ListView::select(std::size_t row) {
  selected_ = static_cast<int>(row);
  if (events.rowSelected) events.rowSelected(row);
}

void ListView::clear() {
  if (events.cleared) events.cleared();
  rows_.clear();
  selected_ = -1;
}

void ProgressBar::setValue(int value) {
  if (value_ == value) return;
  value_ = value;
  notify();
}

void Image::setImage(int image) {
  if (image_ == image) return;
  image_ = image;
  notify();
}

}  // namespace vlout::ui
