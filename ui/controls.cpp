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

void TextBox::setLocked(bool locked) {
  if (locked_ == locked) return;
  locked_ = locked;
  notify();
}

void TextBox::setForeColour(Colour colour) {
  if (foreColour_ == colour) return;
  foreColour_ = colour;
  notify();
}

void TextBox::setBackColour(Colour colour) {
  if (backColour_ == colour) return;
  backColour_ = colour;
  notify();
}

void ColouredLabel::setForeColour(Colour colour) {
  if (foreColour_ == colour) return;
  foreColour_ = colour;
  notify();
}

int TreeView::add(int parent, Node node) {
  node.parent = parent;
  nodes_.push_back(std::move(node));
  notify();
  return count();
}

void TreeView::remove(int index) {
  // A node comes after its parent, so one pass finds the whole subtree.
  std::vector<int> newIndex(nodes_.size() + 1, 0);
  std::vector<Node> kept;
  for (int i = 1; i <= count(); ++i) {
    Node& each = node(i);
    const bool gone =
        i == index || (each.parent != 0 && newIndex[static_cast<std::size_t>(each.parent)] == 0);
    if (gone) continue;
    each.parent = newIndex[static_cast<std::size_t>(each.parent)];
    kept.push_back(std::move(each));
    newIndex[static_cast<std::size_t>(i)] = static_cast<int>(kept.size());
  }
  selected_ = newIndex[static_cast<std::size_t>(selected_)];
  nodes_ = std::move(kept);
  notify();
}

void TreeView::clear() {
  nodes_.clear();
  selected_ = 0;
  notify();
}

void TreeView::expand(int index) {
  node(index).expanded = true;
  if (nodeExpanded) nodeExpanded(index);
  notify();
}

void TreeView::select(int index) {
  selected_ = index;
  notify();
}

std::string TreeView::fullPath(int index) const {
  std::string path = node(index).text;
  for (int parent = node(index).parent; parent != 0; parent = node(parent).parent) {
    path.insert(0, node(parent).text + "/");
  }
  return path;
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
