// The window of a form: the widgets of its controls, arranged as the form says. QtToolkit makes one
// for each modal call.
#pragma once

#include <QBoxLayout>
#include <QDialog>
#include <QGridLayout>
#include <QLabel>
#include <QScreen>

#include <span>
#include <vector>

#include "ui/form.h"

namespace vlout::ui::qt {

class FormWindow : public QDialog {
 public:
  explicit FormWindow(Form& form, QWidget* parent);
  ~FormWindow() override;
  FormWindow(const FormWindow&) = delete;
  FormWindow& operator=(const FormWindow&) = delete;

  [[nodiscard]] Form& form() const { return form_; }

  // Moves the window to the form's place on the screen; if the controls need more room than the
  // form says, the window stays centred there.
  void place(const QScreen& screen);

  // For the Esc key and the close button, the form decides.
  void reject() override { form_.keyPress(kEscape); }

 protected:
  void closeEvent(QCloseEvent* event) override;
  // Enter presses the button with the focus or, if there is none, the default button.
  void keyPressEvent(QKeyEvent* event) override;

 private:
  // `label` names what has no text of its own, for people who cannot see what is beside it.
  QLayout* build(const Layout& part, const QString& label);
  QLayout* buildBox(Layout::Kind kind, std::span<const Layout> parts, const QString& label);
  QLayout* buildGrid(const Layout& part, const QString& label);
  QLayout* buildStack(const Layout& part, const QString& label);
  QWidget* buildPanel(const Layout& part, const QString& label);
  QWidget* buildWidget(const Layout& part, const QString& label);
  void addTo(QGridLayout& grid, const Layout& part, int row, int column, const QString& label);
  void addTo(QBoxLayout& box, const Layout& part, const QString& label);

  Form& form_;
  Layout layout_;
  std::vector<const Layout*> shown_;  // what has to be released
  QLabel* lastLabel_ = nullptr;       // the widget that was made last, if it is a label
};

}  // namespace vlout::ui::qt
