// vloutsync-window: hosts the component in windows. `vloutsync window` starts it with the component
// folder and the folder of vCards as its two arguments.
#include <QApplication>
#include <QIcon>
#include <QLibraryInfo>
#include <QTimer>
#include <QTranslator>

#include <csignal>
#include <exception>
#include <iostream>
#include <optional>

#include "entry/cli/book_side.h"
#include "entry/cli/contacts_place.h"
#include "entry/cli/desk.h"
#include "entry/cli/platform.h"
#include "entry/cli/users_language.h"
#include "entry/orun.h"
#include "text/file_path.h"
#include "text/language.h"
#include "ui/qt/picture_pixmap.h"
#include "ui/qt/qt_toolkit.h"

namespace {

volatile std::sig_atomic_t interrupted = 0;

// An interrupt closes the window, which stops a run; a second one ends the program.
void closeWhenInterrupted(QTimer& timer) {
  for (const int signal : {SIGINT, SIGTERM}) {
    struct sigaction action {};
    action.sa_handler = [](int) { interrupted = 1; };
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    sigaction(signal, &action, nullptr);
  }
  QObject::connect(&timer, &QTimer::timeout, [] {
    QWidget* const top = QApplication::activeModalWidget();
    if (interrupted != 0 && top != nullptr) top->close();
  });
  constexpr int kLook = 200;  // milliseconds
  timer.start(kLook);
}

QIcon icon() {
  QIcon result;
  for (const int size : {16, 32, 64}) {
    result.addPixmap(vlout::ui::qt::pixmapOf(vlout::ui::Picture::Sync, size, 1));
  }
  return result;
}

using Move = vlout::entry::cli::LinuxDesk::Move;

// Opens the main window once. Returns the folder and contacts that the user wants to go on with, if
// any.
std::optional<Move> run(const Move& here) {
  const vlout::history::EmptiedFolder emptied{
      .askAgain = true,
      .howToGoOn = vlout::text::say("그래도 하려면 한 번 더 시작하십시오.",
                                    "To go on anyway, start it again.")};
  const auto say = [](const std::string& text) {
    vlout::ui::qt::QtToolkit().messageBox(vlout::ui::MessageIcon::Critical, text);
  };
  try {
    auto toolkit = std::make_unique<vlout::ui::qt::QtToolkit>();
    auto platform =
        vlout::entry::cli::makePlatform(here.folder, here.contacts, std::move(toolkit), emptied);
    const auto desk = std::static_pointer_cast<vlout::entry::cli::LinuxDesk>(platform.desk);
    vlout::entry::Runtime runtime(here.folder, std::move(platform));
    vlout::entry::ORUN(runtime).OUTSYNCRUN();
    return desk->next();
  } catch (const vlout::outlook::ContactStoreError& error) {
    const auto folder = here.folder / "contacts";
    if (!vlout::entry::cli::bookIn(here.contacts)) {
      say(error.what());
      return std::nullopt;
    }
    // Whoever has lost the book of the last run has to get at the choice of another place.
    say(error.what() + std::string("\r\n") +
        vlout::text::say("창은 다음 연락처 폴더로 엽니다: %1",
                         "The window opens with this folder: %1", {vlout::text::pathText(folder)}));
    return Move{here.folder, folder};
  } catch (const std::exception& error) {
    say(error.what());
    return std::nullopt;
  }
}

}  // namespace

int main(int argc, char** argv) {
  vlout::ui::qt::Application application(argc, argv);
  vlout::entry::cli::speakUsersLanguage();  // after Qt, which sets the locale
  QTranslator ofQt;
  if (vlout::text::language() == vlout::text::Language::Korean &&
      ofQt.load(QStringLiteral("qtbase_ko"), QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
    QApplication::installTranslator(&ofQt);
  }
  QApplication::setApplicationName(QStringLiteral("vloutsync"));
  QGuiApplication::setDesktopFileName(QStringLiteral("vloutsync"));
  QApplication::setWindowIcon(icon());
  QTimer timer;
  closeWhenInterrupted(timer);
  const QStringList arguments = QApplication::arguments();
  if (arguments.size() != 3) {
    std::cerr << "vloutsync window\n";
    return 2;
  }
  std::optional<Move> here = Move{vlout::text::pathOf(arguments[1].toStdString()),
                                  vlout::text::pathOf(arguments[2].toStdString())};
  while (here) {
    here->contacts = vlout::entry::cli::contactsPlace(here->contacts, here->folder);
    here = run(*here);
  }
  return 0;
}
