// The controls of a form as plain state with events. A form owns its controls under their own names
// and sets their event handlers; a view attaches to their `changed` hooks and mirrors them. Setting
// a property that used to raise an event raises it here too: choosing an entry of a drop-down list
// and changing a check box's value run the click handler.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
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

  // Changes the state without telling the view, which shows it already.
  template <typename Change>
  void quietly(Change change) {
    auto hook = std::exchange(changed, nullptr);
    change();
    changed = std::move(hook);
  }

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

// The colours that the windows use: some of the sixteen QBColor ones, and a system colour.
enum class Colour : std::uint32_t {
  Black = 0x000000,         // QBColor 0
  LightRed = 0x5555FF,      // QBColor 12, as blue, green, red
  White = 0xFFFFFF,         // QBColor 15
  ButtonFace = 0x8000000F,  // the system's
};

class TextBox : public Control {
 public:
  [[nodiscard]] bool locked() const { return locked_; }
  void setLocked(bool locked);
  [[nodiscard]] Colour foreColour() const { return foreColour_; }
  void setForeColour(Colour colour);
  [[nodiscard]] Colour backColour() const { return backColour_; }
  void setBackColour(Colour colour);

 private:
  bool locked_ = false;
  Colour foreColour_ = Colour::Black;
  Colour backColour_ = Colour::White;
};

// A label whose text has a colour.
class ColouredLabel : public Control {
 public:
  [[nodiscard]] Colour foreColour() const { return foreColour_; }
  void setForeColour(Colour colour);

 private:
  Colour foreColour_ = Colour::Black;
};

class Button : public Control {
 public:
  // Acts as the user's click; does nothing while the button is disabled.
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
  // Acts as the user's click; a grayed box is cleared.
  void press() { setValue(value_ == kCleared ? kChecked : kCleared); }
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
  // Runs the click handler, even if the entry was already chosen.
  void setIndex(int index);
  std::function<void()> clicked;

 private:
  std::vector<std::string> items_;
  int index_ = -1;
};

// A report list: columns, and rows with a cell for each.
class ListView : public Control {
 public:
  struct Column {
    std::string title;
    int width = 0;  // in twips
  };
  struct Row {
    std::vector<std::string> cells;
  };
  // What happened to which row. Lists grow long, so a view is told exactly.
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
  // The text of a cell; empty if the row has no such cell.
  [[nodiscard]] std::string_view cell(std::size_t row, std::size_t column) const;
  void select(std::size_t row);
  // Act as the user's click and double click on a row.
  void selectAsShown(std::size_t row) { selected_ = static_cast<int>(row); }
  void activate(std::size_t row) const {
    if (activated) activated(row);
  }
  void clear();
  [[nodiscard]] const std::vector<Row>& rows() const { return rows_; }
  [[nodiscard]] int selected() const { return selected_; }

  Events events;
  std::function<void(std::size_t row)> activated;

 private:
  std::vector<Column> columns_;
  std::vector<Row> rows_;
  int selected_ = -1;
};

// A tree of nodes, numbered in the order in which they were added.
class TreeView : public Control {
 public:
  struct Node {
    std::string key{};
    std::string text{};
    std::string tag{};
    int image = 0;
    int expandedImage = 0;  // 0: the same as `image`
    int parent = 0;         // 1-based, 0 for a root
    bool expanded = false;

    // The number of the image to show now.
    [[nodiscard]] int shownImage() const {
      const int number = expanded && expandedImage != 0 ? expandedImage : image;
      return number < 1 ? 1 : number;
    }
  };

  // Adds a node as the last child of `parent` (1-based, 0 for a root) and returns its 1-based
  // index.
  int add(int parent, Node node);
  // Removes a node and everything below it; the indexes of later nodes move down.
  void remove(int index);
  void clear();
  // Expands a node and runs `nodeExpanded`.
  void expand(int index);
  void select(int index);

  [[nodiscard]] int count() const { return static_cast<int>(nodes_.size()); }
  [[nodiscard]] Node& node(int index) { return nodes_.at(static_cast<std::size_t>(index - 1)); }
  [[nodiscard]] const Node& node(int index) const {
    return nodes_.at(static_cast<std::size_t>(index - 1));
  }
  // The texts from the root to the node, joined with "/".
  [[nodiscard]] std::string fullPath(int index) const;
  // 1-based, 0 for none.
  [[nodiscard]] int selected() const { return selected_; }

  std::function<void(int index)> nodeExpanded;

 private:
  std::vector<Node> nodes_;
  int selected_ = 0;
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

// A picture, chosen by its number in the form's image list; 0 for none.
class Image : public Control {
 public:
  [[nodiscard]] int image() const { return image_; }
  void setImage(int image);

 private:
  int image_ = 0;
};

}  // namespace vlout::ui
