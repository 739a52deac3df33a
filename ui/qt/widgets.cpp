#include "ui/qt/widgets.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QStatusBar>
#include <QTimer>
#include <QTreeView>
#include <QTreeWidget>

#include <exception>
#include <utility>

#include "text/language.h"
#include "ui/qt/list_model.h"
#include "ui/qt/picture_pixmap.h"
#include "ui/qt/qt_text.h"

namespace vlout::ui::qt {
namespace {

using Kind = Layout::Kind;

constexpr int kTwipsPerUnit = 15;

// Mirrors what all controls have; widgets add their own.
void mirrorCommon(const Control& control, QWidget& widget) {
  widget.setEnabled(control.enabled());
  widget.setVisible(control.visible());
  QFont font = widget.font();
  if (font.bold() != control.bold()) {
    font.setBold(control.bold());
    widget.setFont(font);
  }
}

// Calls `mirror` now and whenever the control changes, with the widget's signals held back.
template <typename Widget, typename Mirror>
void follow(Control& control, Widget& widget, Mirror mirror) {
  auto update = [&control, &widget, mirror] {
    const QSignalBlocker quiet(&widget);
    mirrorCommon(control, widget);
    mirror();
  };
  update();
  control.changed = update;
}

// Runs what the user has triggered. A failure is shown here, since exceptions must not pass through
// Qt.
template <typename Act>
auto shown(QWidget* widget, Act act) {
  return [widget, act](auto&&... arguments) {
    try {
      act(arguments...);
    } catch (const std::exception& error) {
      QMessageBox::critical(widget->window(), QStringLiteral("VLOUTSync"),
                            QString::fromUtf8(error.what()));
    }
  };
}

// The text with its key after it, as Korean programs show it.
QString withKey(const Layout& part) {
  QString text = textOf(part.control->text());
  text.replace('&', "&&");
  if (part.key == 0) return text;
  const qsizetype end = text.endsWith(':') ? text.size() - 1 : text.size();
  return text.insert(end, QStringLiteral("(&%1)").arg(QChar::fromLatin1(part.key)));
}

// The colours that a form asks for, in terms of the present palette, so that they are readable on a
// dark one too.
void colour(QWidget& widget, Colour text, Colour back) {
  QPalette palette;
  if (text == Colour::LightRed) {
    const QColor lightRed(0xFF, 0x55, 0x55);
    palette.setColor(QPalette::Text, lightRed);
    palette.setColor(QPalette::WindowText, lightRed);
  }
  if (back == Colour::ButtonFace) {
    palette.setColor(QPalette::Base, palette.color(QPalette::Window));
  }
  widget.setPalette(palette);
}

QWidget* makeLabel(const Layout& part, QWidget* parent) {
  auto* const label = new QLabel(textOf(part.caption), parent);
  label->setTextFormat(Qt::PlainText);
  if (part.control == nullptr) return label;
  Control& control = *part.control;
  // A long text, such as a path, does not make the window wide.
  if (part.characters > 0) label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  follow(control, *label, [&part, &control, label] {
    if (part.characters > 0) label->setToolTip(textOf(control.text()));
    label->setText(part.key == 0 ? textOf(control.text()) : withKey(part));
    if (part.kind != Kind::ColouredLabel) return;
    colour(*label, static_cast<const ColouredLabel&>(control).foreColour(), Colour::White);
  });
  return label;
}

// Not by colour alone: bold shows on any palette, and a screen reader is told. The tool tip shows
// what does not fit.
void dress(QWidget& edit, const TextBox& box) {
  colour(edit, box.foreColour(), box.backColour());
  const bool differs = box.foreColour() == Colour::LightRed;
  QFont font = edit.font();
  font.setBold(differs);
  edit.setFont(font);
  edit.setAccessibleDescription(differs ? textOf(text::say("다름", "differs")) : QString());
  edit.setToolTip(textOf(box.text()).toHtmlEscaped());
}

// The widget has its own line ends; a text that nobody edits keeps those that it has.
QWidget* makeParagraphs(const Layout& part, QWidget* parent) {
  auto* const edit = new QPlainTextEdit(parent);
  auto& box = static_cast<TextBox&>(*part.control);
  edit->setTabChangesFocus(true);
  edit->setMinimumHeight(edit->fontMetrics().lineSpacing() * (part.lines + 1));
  edit->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
  follow(box, *edit, [&box, edit] {
    QString text = textOf(box.text());
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    const QSignalBlocker unheard(edit);
    if (edit->toPlainText() != text) edit->setPlainText(text);
    edit->setReadOnly(box.locked());
    dress(*edit, box);
  });
  QObject::connect(edit, &QPlainTextEdit::textChanged, edit, shown(edit, [&box, edit] {
                     QString text = edit->toPlainText();
                     text.replace(QStringLiteral("\n"), QStringLiteral("\r\n"));
                     box.setText(text.toStdString());
                   }));
  return edit;
}

QWidget* makeEdit(const Layout& part, QWidget* parent) {
  if (part.lines > 1) return makeParagraphs(part, parent);
  auto* const edit = new QLineEdit(parent);
  auto& box = static_cast<TextBox&>(*part.control);
  edit->setMaxLength(0x7FFFFFF);
  follow(box, *edit, [&box, edit] {
    const QString text = textOf(box.text());
    if (edit->text() != text) {
      edit->setText(text);
      edit->setCursorPosition(0);
    }
    edit->setReadOnly(box.locked());
    dress(*edit, box);
  });
  QObject::connect(edit, &QLineEdit::textEdited, edit,
                   shown(edit, [&box](const QString& text) { box.setText(text.toStdString()); }));
  return edit;
}

QWidget* makeButton(const Layout& part, QWidget* parent) {
  auto* const button = new QPushButton(parent);
  const auto& control = static_cast<const Button&>(*part.control);
  const bool isDefault = part.kind == Kind::DefaultButton;
  button->setAutoDefault(isDefault);
  button->setDefault(isDefault);
  follow(*part.control, *button, [&part, button] { button->setText(withKey(part)); });
  QObject::connect(button, &QPushButton::clicked, button,
                   shown(button, [&control](bool) { control.press(); }));
  return button;
}

QWidget* makeOption(const Layout& part, QWidget* parent) {
  auto* const option = new QRadioButton(parent);
  const auto& control = static_cast<const OptionButton&>(*part.control);
  follow(*part.control, *option, [&part, option] { option->setText(withKey(part)); });
  QObject::connect(option, &QRadioButton::clicked, option,
                   shown(option, [&control](bool) { control.press(); }));
  return option;
}

QWidget* makeCheck(const Layout& part, QWidget* parent) {
  auto* const check = new QCheckBox(parent);
  auto& box = static_cast<CheckBox&>(*part.control);
  const auto mirror = [&part, &box, check] {
    check->setText(withKey(part));
    check->setCheckState(box.value() == CheckBox::kCleared   ? Qt::Unchecked
                         : box.value() == CheckBox::kChecked ? Qt::Checked
                                                             : Qt::PartiallyChecked);
    check->setTristate(box.value() == CheckBox::kGrayed);
  };
  follow(box, *check, mirror);
  QObject::connect(check, &QCheckBox::clicked, check, shown(check, [&box](bool) { box.press(); }));
  return check;
}

QWidget* makeCombo(const Layout& part, QWidget* parent) {
  auto* const list = new QComboBox(parent);
  auto& combo = static_cast<ComboBox&>(*part.control);
  follow(combo, *list, [&combo, list] {
    QStringList items;
    for (const std::string& item : combo.items()) items += textOf(item);
    QStringList shown;
    for (int i = 0; i < list->count(); ++i) shown += list->itemText(i);
    if (shown != items) {
      list->clear();
      list->addItems(items);
    }
    list->setCurrentIndex(combo.index());
  });
  QObject::connect(list, &QComboBox::activated, list,
                   shown(list, [&combo](int index) { combo.setIndex(index); }));
  return list;
}

QWidget* makeList(const Layout& part, QWidget* parent) {
  auto* const view = new QTreeView(parent);
  auto& list = static_cast<ListView&>(*part.control);
  auto* const model = new ListModel(list, view);
  view->setModel(model);
  view->setRootIsDecorated(false);
  view->setUniformRowHeights(true);
  view->setEditTriggers(QAbstractItemView::NoEditTriggers);
  view->setTabKeyNavigation(false);
  view->setMinimumHeight((part.lines + 2) * (view->fontMetrics().height() + 4));
  // The columns have fixed widths; any extra width goes to the first one.
  QHeaderView& header = *view->header();
  header.setStretchLastSection(false);
  for (int i = 1; i < header.count(); ++i) {
    header.resizeSection(i, list.columns()[static_cast<std::size_t>(i)].width / kTwipsPerUnit);
  }
  if (header.count() > 0) header.setSectionResizeMode(0, QHeaderView::Stretch);
  // Follows the run, unless the user has scrolled back to read.
  QObject::connect(model, &QAbstractItemModel::rowsAboutToBeInserted, view, [view] {
    const QScrollBar& bar = *view->verticalScrollBar();
    view->setProperty("follows", bar.value() == bar.maximum());
  });
  // On a small screen the list is below the visible part of the window until it has something to
  // show.
  QObject::connect(model, &QAbstractItemModel::rowsInserted, view,
                   [view](const QModelIndex&, int first) {
                     if (first != 0) return;
                     for (QWidget* outer = view->parentWidget(); outer != nullptr;
                          outer = outer->parentWidget()) {
                       auto* const area = qobject_cast<QScrollArea*>(outer);
                       if (area != nullptr) area->ensureWidgetVisible(view);
                     }
                   });
  model->newRowsShown = [view, model, &list] {
    if (!view->property("follows").toBool()) return;
    const int row = list.selected();
    if (row >= 0) view->setCurrentIndex(model->index(row, 0));
    view->scrollToBottom();
  };
  QObject::connect(view->selectionModel(), &QItemSelectionModel::currentChanged, view,
                   [&list](const QModelIndex& row) {
                     if (row.isValid()) list.selectAsShown(static_cast<std::size_t>(row.row()));
                   });
  QObject::connect(view, &QTreeView::activated, view, shown(view, [&list](const QModelIndex& row) {
                     list.activate(static_cast<std::size_t>(row.row()));
                   }));
  follow(list, *view, [] {});
  return view;
}

// Nodes carry their index in the control's tree.
class TreeWidget : public QTreeWidget {
 public:
  TreeWidget(TreeView& tree, QWidget* parent) : QTreeWidget(parent), tree_(tree) {
    setHeaderHidden(true);
    setTabKeyNavigation(false);
    setMinimumSize(240, 240);
    // Until changed nodes are shown, the items do not belong to them.
    connect(this, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) {
      if (item != nullptr && !stale_) tree_.quietly([&] { tree_.select(indexOf(*item)); });
    });
    connect(this, &QTreeWidget::itemExpanded, this, [this](QTreeWidgetItem* item) {
      if (stale_) return;
      tree_.quietly([&] { tree_.expand(indexOf(*item)); });
      showImage(*item);
    });
    connect(this, &QTreeWidget::itemCollapsed, this, [this](QTreeWidgetItem* item) {
      if (stale_) return;
      tree_.node(indexOf(*item)).expanded = false;
      showImage(*item);
    });
  }

  // A tree changes node by node; it is shown when the form has finished.
  void mirrorSoon() {
    if (std::exchange(stale_, true)) return;
    QTimer::singleShot(0, this, [this] { showNodes(); });
  }

  void showNodes() {
    const QSignalBlocker quiet(this);
    stale_ = false;
    clear();
    std::vector<QTreeWidgetItem*> items{nullptr};
    for (int i = 1; i <= tree_.count(); ++i) {
      const TreeView::Node& node = tree_.node(i);
      auto* const parent = items[static_cast<std::size_t>(node.parent)];
      auto* const item =
          parent == nullptr ? new QTreeWidgetItem(this) : new QTreeWidgetItem(parent);
      item->setText(0, textOf(node.text));
      item->setData(0, Qt::UserRole, i);
      items.push_back(item);
      showImage(*item);
    }
    for (int i = 1; i <= tree_.count(); ++i) {
      items[static_cast<std::size_t>(i)]->setExpanded(tree_.node(i).expanded);
    }
    setCurrentItem(items[static_cast<std::size_t>(tree_.selected())]);
  }

 private:
  static int indexOf(const QTreeWidgetItem& item) { return item.data(0, Qt::UserRole).toInt(); }

  void showImage(QTreeWidgetItem& item) const {
    const int offset = tree_.node(indexOf(item)).shownImage() - 1;
    const auto picture = static_cast<Picture>(static_cast<int>(Picture::OpenRoot) + offset);
    item.setIcon(0, pixmapOf(picture, 16, devicePixelRatioF()));
  }

  TreeView& tree_;
  bool stale_ = false;
};

QWidget* makeTree(const Layout& part, QWidget* parent) {
  auto& tree = static_cast<TreeView&>(*part.control);
  auto* const widget = new TreeWidget(tree, parent);
  widget->showNodes();
  follow(tree, *widget, [widget] { widget->mirrorSoon(); });
  return widget;
}

QWidget* makeProgress(const Layout& part, QWidget* parent) {
  auto* const progress = new QProgressBar(parent);
  auto& bar = static_cast<ProgressBar&>(*part.control);
  progress->setRange(0, 100);
  QSizePolicy policy = progress->sizePolicy();
  policy.setRetainSizeWhenHidden(true);
  progress->setSizePolicy(policy);
  follow(bar, *progress, [&bar, progress] { progress->setValue(bar.value()); });
  return progress;
}

QWidget* makeStatus(const Layout& part, QWidget* parent) {
  auto* const status = new QStatusBar(parent);
  Control& control = *part.control;
  status->setSizeGripEnabled(false);
  follow(control, *status, [&control, status] { status->showMessage(textOf(control.text())); });
  return status;
}

QWidget* makeImage(const Layout& part, QWidget* parent) {
  auto* const label = new QLabel(parent);
  auto& image = static_cast<Image&>(*part.control);
  constexpr int kHeight = 40;
  follow(image, *label, [&image, label] {
    if (image.image() < 1) return;
    const auto picture = static_cast<Picture>(image.image() - 1);
    label->setPixmap(pixmapOf(picture, kHeight, label->devicePixelRatioF()));
  });
  return label;
}

}  // namespace

QWidget* makeWidget(const Layout& part, QWidget* parent) {
  switch (part.kind) {
    case Kind::TextBox:
      return makeEdit(part, parent);
    case Kind::Button:
    case Kind::DefaultButton:
      return makeButton(part, parent);
    case Kind::OptionButton:
      return makeOption(part, parent);
    case Kind::CheckBox:
      return makeCheck(part, parent);
    case Kind::ComboBox:
      return makeCombo(part, parent);
    case Kind::ListView:
      return makeList(part, parent);
    case Kind::TreeView:
      return makeTree(part, parent);
    case Kind::ProgressBar:
      return makeProgress(part, parent);
    case Kind::StatusBar:
      return makeStatus(part, parent);
    case Kind::Image:
      return makeImage(part, parent);
    default:
      return makeLabel(part, parent);
  }
}

void releaseControl(const Layout& part) {
  if (part.control != nullptr) part.control->changed = nullptr;
}

}  // namespace vlout::ui::qt
