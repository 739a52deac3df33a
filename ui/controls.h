// The controls of a form as plain state with events. A form owns its controls under their own names
// and sets their event handlers; a view attaches to their `changed` hooks and mirrors them. Setting
// a property that used to raise an event raises it here too: choosing an entry of a drop-down list
// and changing a check box's value run the click handler.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace vlout::ui {

class Control {
 public:
  Control() = default;
  Control(const Control&) = delete;
  Control& operator=(const Control&) = delete;

  [[nodiscard]] const std::string& text() const { return text_; }
  void setText(std::string_view text);
  [[nodiscard]] const std::string& tag() const { return tag_; }
  void setTag(std::string_view tag) { tag_ = tag; }
  [[nodiscard]] bool enabled() const { return enabled_; }
  void setEnabled(bool enabled);
  [[nodiscard]] bool visible() const { return visible_; }
  void setVisible(bool visible);
  [[nodiscard]] bool bold() const { return bold_; }
  void setBold(bool bold);

  // For the one view that shows the form.
  std::function<void()> changed;

 protected:
  void notify() const;

 private:
  std::string text_;
  std::string tag_;
  bool enabled_ = true;
  bool visible_ = true;
  bool bold_ = false;
};

using Label = Control;
using Panel = Control;

class TextBox : public Control {};

class Button : public Control {
 public:
  // What the user's click does; nothing while the button is disabled.
  void press() const;
  std::function<void()> clicked;
};

class OptionButton : public Control {
 public:
  void press() const;
  std::function<void()> clicked;
};

class CheckBox : public Control {
 public:
  static constexpr int kCleared = 0;
  static constexpr int kChecked = 1;
  static constexpr int kGrayed = 2;

  [[nodiscard]] int value() const { return value_; }
  [[nodiscard]] bool isChecked() const { return value_ == kChecked; }
  void setValue(int value);
  std::function<void()> clicked;

 private:
  int value_ = kCleared;
};

// A drop-down list.
class ComboBox : public Control {
 public:
  void addItem(std::string_view text);
  void clear();
  [[nodiscard]] const std::vector<std::string>& items() const { return items_; }
  [[nodiscard]] int index() const { return index_; }
  // Runs the click handler, also when the entry was chosen already.
  void setIndex(int index);
  std::function<void()> clicked;

 private:
  std::vector<std::string> items_;
  int index_ = -1;
};

// A report list: columns, and rows of as many cells.
class ListView : public Control {
 public:
  struct Column {
    std::string title;
    int width = 0;  // in twips
  };
  struct Row {
    std::vector<std::string> cells;
  };
  // What happened to which row; lists grow long, so a view is told exactly.
  struct Events {
    std::function<void(std::size_t row)> rowAdded;
    std::function<void(std::size_t row, std::size_t column)> cellSet;
    std::function<void(std::size_t row)> rowSelected;
    std::function<void()> cleared;
  };

  void addColumn(std::string_view title, int width);
  [[nodiscard]] const std::vector<Column>& columns() const { return columns_; }

  std::size_t addRow(std::string_view text);
  void setCell(std::size_t row, std::size_t column, std::string_view text);
  // The text of a cell; an empty one where the row has no such cell.
  [[nodiscard]] std::string_view cell(std::size_t row, std::size_t column) const;
  void select(std::size_t row);
  void clear();
  [[nodiscard]] const std::vector<Row>& rows() const { return rows_; }
  [[nodiscard]] int selected() const { return selected_; }

  Events events;

 private:
  std::vector<Column> columns_;
  std::vector<Row> rows_;
  int selected_ = -1;
};

class ProgressBar : public Control {
 public:
  [[nodiscard]] int value() const { return value_; }
  void setValue(int value);

 private:
  int value_ = 0;
};

// A status bar of one panel.
using StatusBar = Control;

// A picture, by its number in the form's image list; 0 for none.
class Image : public Control {
 public:
  [[nodiscard]] int image() const { return image_; }
  void setImage(int image);

 private:
  int image_ = 0;
};

}  // namespace vlout::ui
