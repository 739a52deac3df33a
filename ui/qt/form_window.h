// The window that shows one form: its controls' widgets in the form's arrangement. QtToolkit makes
// one for the length of a modal call.
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

  // Moves the window to where the form belongs on the screen; its middle stays there when the
  // controls need more room than the form says.
  void place(const QScreen& screen);

  // The Esc key and the frame's close box: the form decides.
  void reject() override { form_.keyPress(kEscape); }

 protected:
  void closeEvent(QCloseEvent* event) override;
  // Enter presses the button that has the focus, and only without one the usual button.
  void keyPressEvent(QKeyEvent* event) override;

 private:
  // `label` names what has no text of its own, for those who cannot see what stands beside it.
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
  QLabel* lastLabel_ = nullptr;       // of the widget that was made last, if that is one
};

}  // namespace vlout::ui::qt
