#include "ui/qt/form_window.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QPushButton>
#include <QScrollArea>
#include <QStyle>

#include <algorithm>

#include "text/language.h"
#include "ui/qt/qt_text.h"
#include "ui/qt/widgets.h"

namespace vlout::ui::qt {
namespace {

using Kind = Layout::Kind;

constexpr int kTwipsPerUnit = 15;

bool isLabel(const Layout& part) {
  return part.kind == Kind::Caption || part.kind == Kind::Label;
}

QString labelText(const Layout& part) {
  QString text = textOf(part.control == nullptr ? part.caption : part.control->text());
  if (text.endsWith(':')) text.chop(1);
  return text;
}

// The name of a control that has no label beside it.
QString usualName(Kind kind) {
  switch (kind) {
    case Kind::Image:
      return textOf(text::say("싱크 방향 그림", "Picture of the direction"));
    case Kind::ProgressBar:
      return textOf(text::say("진행율", "Progress"));
    case Kind::StatusBar:
      return textOf(text::say("상태", "Status"));
    case Kind::TreeView:
      return textOf(text::say("그룹", "Groups"));
    default:
      return {};
  }
}

bool hasOwnText(Kind kind) {
  return kind == Kind::Button || kind == Kind::DefaultButton || kind == Kind::CheckBox ||
         kind == Kind::OptionButton || kind == Kind::Label || kind == Kind::ColouredLabel ||
         kind == Kind::Caption;
}

}  // namespace

FormWindow::FormWindow(Form& form, QWidget* parent)
    : QDialog(parent), form_(form), layout_(form.layout()) {
  setWindowTitle(textOf(form_.caption));
  setWindowFlag(Qt::WindowMaximizeButtonHint);
  // If the screen is too small, the content scrolls. What is below the part that grows stays in
  // view, above all the buttons.
  const auto grows = [](const Layout& part) { return part.stretch > 0; };
  const auto below = std::find_if(layout_.parts.rbegin(), layout_.parts.rend(), grows).base();
  const std::span<const Layout> parts(layout_.parts);
  const auto found = static_cast<std::size_t>(below - layout_.parts.begin());
  const std::size_t scrolled = found == 0 ? parts.size() : found;
  auto* const content = new QWidget;
  content->setLayout(buildBox(layout_.kind, parts.first(scrolled), {}));
  auto* const scroll = new QScrollArea(this);
  scroll->setFrameShape(QFrame::NoFrame);
  scroll->setWidgetResizable(true);
  scroll->setFocusPolicy(Qt::NoFocus);
  scroll->setWidget(content);
  auto* const whole = new QVBoxLayout(this);
  whole->setContentsMargins(0, 0, 0, 0);
  whole->addWidget(scroll);
  auto* const footer = new QWidget;
  footer->setLayout(buildBox(layout_.kind, parts.subspan(scrolled), {}));
  QMargins margins = footer->layout()->contentsMargins();
  margins.setTop(0);
  if (scrolled == parts.size()) margins.setBottom(0);
  footer->layout()->setContentsMargins(margins);
  whole->addWidget(footer);
  const QSize formSize(form_.width / kTwipsPerUnit, form_.height / kTwipsPerUnit);
  constexpr QSize kFrame(16, 48);  // what the window's frame and a panel take, at the least
  const QSize room = screen()->availableSize() - kFrame;
  QSize size = content->sizeHint();
  size.setWidth(std::max(size.width(), footer->sizeHint().width()));
  size.rheight() += footer->sizeHint().height();
  if (size.height() > room.height()) {
    // One more, since at a scale of one and a half the window may be rounded down.
    size.rwidth() += style()->pixelMetric(QStyle::PM_ScrollBarExtent) + 1;
  }
  resize(formSize.expandedTo(size).boundedTo(room));
}

FormWindow::~FormWindow() {
  for (const Layout* part : shown_) releaseControl(*part);
}

void FormWindow::place(const QScreen& screen) {
  if (!form_.centred) return;
  const QRect area = screen.availableGeometry();
  const QPoint middle =
      area.topLeft() +
      QPoint(form_.left + form_.width / 2, form_.top + form_.height / 2) / kTwipsPerUnit;
  QRect frame = frameGeometry();
  frame.moveCenter(middle);
  // A window as large as the screen keeps its title in view.
  move(std::max(frame.left(), area.left()), std::max(frame.top(), area.top()));
}

void FormWindow::closeEvent(QCloseEvent* event) {
  event->ignore();
  form_.requestClose();
}

void FormWindow::keyPressEvent(QKeyEvent* event) {
  auto* const button = qobject_cast<QPushButton*>(focusWidget());
  const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (isEnter && button != nullptr) {
    button->click();
  } else {
    QDialog::keyPressEvent(event);
  }
}

QWidget* FormWindow::buildWidget(const Layout& part, const QString& label) {
  QWidget* const widget = makeWidget(part, this);
  widget->setObjectName(textOf(part.name));
  if (part.characters > 0) {
    widget->setMinimumWidth(widget->fontMetrics().averageCharWidth() * part.characters);
  }
  QString name = label.isEmpty() ? usualName(part.kind) : label;
  if (hasOwnText(part.kind)) {
    const QString own = labelText(part);
    name = label.isEmpty() || isLabel(part) ? own : label + ' ' + own;
  } else if (lastLabel_ != nullptr) {
    lastLabel_->setBuddy(widget);
  }
  widget->setAccessibleName(name);
  lastLabel_ = isLabel(part) ? qobject_cast<QLabel*>(widget) : nullptr;
  shown_.push_back(&part);
  return widget;
}

QWidget* FormWindow::buildPanel(const Layout& part, const QString& label) {
  auto* const panel = new QWidget(this);
  Control& control = *part.control;
  panel->setLayout(build(part.parts.front(), label));
  panel->layout()->setContentsMargins(0, 0, 0, 0);
  control.changed = [panel, &control] { panel->setVisible(control.visible()); };
  control.changed();
  shown_.push_back(&part);
  return panel;
}

QLayout* FormWindow::build(const Layout& part, const QString& label) {
  if (part.kind == Kind::Grid) return buildGrid(part, label);
  if (part.kind == Kind::Stack) return buildStack(part, label);
  return buildBox(part.kind, part.parts, label);
}

QLayout* FormWindow::buildBox(Layout::Kind kind, std::span<const Layout> parts,
                              const QString& label) {
  auto* const box = kind == Kind::Row ? static_cast<QBoxLayout*>(new QHBoxLayout)
                                      : static_cast<QBoxLayout*>(new QVBoxLayout);
  QString beside = label;
  for (const Layout& each : parts) {
    addTo(*box, each, beside);
    if (isLabel(each) && !labelText(each).trimmed().isEmpty()) beside = labelText(each);
    if (!isLabel(each)) beside = label;
  }
  return box;
}

// The first cell of a row names the others; so does the first one of a column, where the corner is
// empty.
QLayout* FormWindow::buildGrid(const Layout& part, const QString& label) {
  auto* const grid = new QGridLayout;
  const auto columns = static_cast<std::size_t>(part.columns);
  const bool headed = isLabel(part.parts.front()) && labelText(part.parts.front()).isEmpty();
  for (std::size_t i = 0; i < part.parts.size(); ++i) {
    QString name = label;
    const Layout& first = part.parts[i - i % columns];
    if (i % columns > 0 && isLabel(first)) name = labelText(first);
    if (headed && i >= columns && i % columns > 0) {
      name = labelText(part.parts[i % columns]) + ' ' + name;
    }
    const auto row = static_cast<int>(i / columns);
    const auto column = static_cast<int>(i % columns);
    addTo(*grid, part.parts[i], row, column, name);
    const bool besideStack = i + 1 < part.parts.size() && part.parts[i + 1].kind == Kind::Stack;
    if (besideStack) grid->itemAtPosition(row, column)->setAlignment(Qt::AlignTop);
    if (part.parts[i].stretch > 0) grid->setColumnStretch(column, part.parts[i].stretch);
  }
  return grid;
}

QLayout* FormWindow::buildStack(const Layout& part, const QString& label) {
  auto* const stack = new QGridLayout;
  for (const Layout& each : part.parts) {
    QWidget* const panel = buildPanel(each, label);
    // All parts keep their room, so that the window does not change when another one is shown.
    QSizePolicy policy = panel->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    panel->setSizePolicy(policy);
    stack->addWidget(panel, 0, 0, Qt::AlignTop);
  }
  return stack;
}

void FormWindow::addTo(QGridLayout& grid, const Layout& part, int row, int column,
                       const QString& label) {
  if (part.kind < Kind::Panel) {
    grid.addLayout(build(part, label), row, column);
  } else {
    const auto alignment = isLabel(part) ? Qt::AlignVCenter : Qt::Alignment();
    grid.addWidget(buildWidget(part, label), row, column, alignment);
  }
}

void FormWindow::addTo(QBoxLayout& box, const Layout& part, const QString& label) {
  if (part.kind < Kind::Panel) {
    box.addLayout(build(part, label), part.stretch);
  } else if (part.kind == Kind::Space) {
    box.addStretch(1);
  } else {
    box.addWidget(buildWidget(part, label), part.stretch);
  }
}

}  // namespace vlout::ui::qt
