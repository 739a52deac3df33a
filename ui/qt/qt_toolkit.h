// The toolkit port on Qt Widgets: forms are dialogs, each modal over the one before. An
// `Application` must exist.
#pragma once

#include <QApplication>
#include <QElapsedTimer>

#include <vector>

#include "ui/qt/form_window.h"
#include "ui/toolkit.h"

namespace vlout::ui::qt {

// The application. Widgets show the failures of what the user does; any others are shown here.
class Application : public QApplication {
 public:
  using QApplication::QApplication;
  bool notify(QObject* receiver, QEvent* event) override;
};

class QtToolkit : public Toolkit {
 public:
  void showModal(Form& form) override;
  void messageBox(MessageIcon icon, std::string_view text) override;
  [[nodiscard]] bool ask(std::string_view question) override;
  [[nodiscard]] std::filesystem::path chooseFolder(std::string_view title,
                                                   const std::filesystem::path& start) override;
  [[nodiscard]] ScreenSize screenSize() const override;
  void applySkin(const std::filesystem::path& skinFile) override;
  [[nodiscard]] bool hasParagraphs() const override { return true; }
  void repaint() override;
  void pump() override;

 private:
  [[nodiscard]] const QScreen& screen() const;
  [[nodiscard]] QWidget* owner() const { return windows_.empty() ? nullptr : windows_.back(); }

  std::vector<FormWindow*> windows_;  // the open ones, the topmost last
  QElapsedTimer sinceEvents_;
  qint64 ahead_ = 0;  // nanoseconds already spent of the next waits
};

}  // namespace vlout::ui::qt
