#include "ui/qt/qt_toolkit.h"

#include <QApplication>
#include <QEventLoop>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QThread>

#include <exception>

#include "text/file_path.h"
#include "text/language.h"
#include "ui/listed.h"
#include "ui/qt/qt_text.h"
#include "ui/qt/skins.h"

namespace vlout::ui::qt {
namespace {

constexpr int kTwipsPerUnit = 15;
constexpr int kEventsEvery = 60;     // milliseconds; a window that follows as often is smooth
constexpr qint64 kWait = 1'000'000;  // nanoseconds

QMessageBox::Icon iconOf(MessageIcon icon) {
  switch (icon) {
    case MessageIcon::Information:
      return QMessageBox::Information;
    case MessageIcon::Exclamation:
      return QMessageBox::Warning;
    case MessageIcon::Critical:
      return QMessageBox::Critical;
    default:
      return QMessageBox::NoIcon;
  }
}

}  // namespace

bool Application::notify(QObject* receiver, QEvent* event) {
  try {
    return QApplication::notify(receiver, event);
  } catch (const std::exception& error) {
    QMessageBox::critical(activeModalWidget(), QStringLiteral("VLOUTSync"),
                          QString::fromUtf8(error.what()));
    return true;
  }
}

void QtToolkit::showModal(Form& form) {
  const QScreen& where = screen();  // of the owner, which the window itself is from now on
  FormWindow window(form, owner());
  const Listed listed(windows_, window);
  window.setWindowModality(Qt::ApplicationModal);
  window.place(where);
  window.show();
  window.place(where);  // the system has put its frame around it
  while (form.isVisible()) QApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void QtToolkit::messageBox(MessageIcon icon, std::string_view text) {
  QMessageBox box(iconOf(icon), QStringLiteral("VLOUTSync"), textOf(text).replace("\r\n", "\n"),
                  QMessageBox::NoButton, owner());
  box.setTextFormat(Qt::PlainText);
  box.addButton(textOf(text::say("확인", "OK")), QMessageBox::AcceptRole);
  box.exec();
}

bool QtToolkit::ask(std::string_view question) {
  QMessageBox box(QMessageBox::Question, QStringLiteral("VLOUTSync"),
                  textOf(question).replace("\r\n", "\n"), QMessageBox::NoButton, owner());
  box.setTextFormat(Qt::PlainText);
  const auto* const yes = box.addButton(textOf(text::say("예", "Yes")), QMessageBox::YesRole);
  box.setDefaultButton(box.addButton(textOf(text::say("아니요", "No")), QMessageBox::NoRole));
  box.exec();
  return box.clickedButton() == yes;
}

std::filesystem::path QtToolkit::chooseFolder(std::string_view title,
                                              const std::filesystem::path& start) {
  const QString chosen =
      QFileDialog::getExistingDirectory(owner(), textOf(title), textOf(text::pathText(start)));
  return text::pathOf(chosen.toStdString());
}

// The owner's screen, if a window has an owner.
const QScreen& QtToolkit::screen() const {
  const QWidget* const window = owner();
  return window == nullptr ? *QApplication::primaryScreen() : *window->screen();
}

ScreenSize QtToolkit::screenSize() const {
  const QSize size = screen().availableSize();
  return {size.width() * kTwipsPerUnit, size.height() * kTwipsPerUnit};
}

void QtToolkit::applySkin(const std::filesystem::path& skinFile) {
  const auto skin = skinOf(skinFile);
  QApplication::setPalette(skin ? skin->palette : QPalette());
  qApp->setStyleSheet(skin ? skin->styleSheet : QString());
}

void QtToolkit::repaint() {
  QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void QtToolkit::pump() {
  if (ahead_ >= kWait) {
    ahead_ -= kWait;
  } else {
    QThread::usleep(kWait / 1000);
  }
  if (sinceEvents_.isValid() && sinceEvents_.elapsed() < kEventsEvery) return;
  sinceEvents_.start();
  QApplication::processEvents();
  // Time spent on a repaint counts as waiting, since repainting is what the waits are for.
  ahead_ += sinceEvents_.nsecsElapsed();
  sinceEvents_.start();
}

}  // namespace vlout::ui::qt
