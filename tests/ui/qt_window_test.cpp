// The Qt windows off-screen: the scenarios are played with real clicks and keys. With
// VLOUT_TEST_PICTURES set to a folder, their "picture" actions save the window on top.
#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QStatusBar>
#include <QTest>
#include <QTimer>
#include <QTreeView>
#include <QTreeWidget>

#include <cstdlib>
#include <map>
#include <sstream>

#include "tests/scenarios/scenario_fixture.h"
#include "text/language.h"
#include "ui/frm_group_box.h"
#include "ui/qt/qt_toolkit.h"

namespace vlout::tests {
namespace {

QString qt(const std::string& text) {
  return QString::fromStdString(text);
}

// The pictures of the English guide are taken with the program's own words in English.
const bool kEnglish = std::getenv("VLOUT_ENGLISH_PICTURES") != nullptr;

QString titleOf(const std::string& korean) {
  if (kEnglish && korean == "현황과 기록") return QStringLiteral("Overview and history");
  return kEnglish && korean == "명함과 연락처" ? QStringLiteral("Card and contact") : qt(korean);
}

class QtWindowTest : public ScenarioFixture,
                     public testing::WithParamInterface<std::filesystem::path> {
 protected:
  QtWindowTest() : ScenarioFixture(std::make_unique<ui::qt::QtToolkit>()) {}

  // Does the next action once there is what it needs, and so on. The next step is arranged before
  // an action is done: a click may open a window and return only when that is closed.
  void step() {
    if (!actionsLeft()) return;
    QTimer::singleShot(1, &steps_, [this] { step(); });
    if (waiting_) return;
    QWidget* const top = QApplication::activeModalWidget();
    if (++idle_ > 20'000) {
      ADD_FAILURE() << "nothing happens at " << nextAction().verb << " " << nextAction().text;
      std::abort();  // the windows would wait for ever
    }
    if (auto* const box = qobject_cast<QMessageBox*>(top)) {
      confirm(*box);
    } else if (auto* const window = dynamic_cast<ui::qt::FormWindow*>(top)) {
      use(*window);
    }
  }

  void confirm(QMessageBox& box) {
    const Action& action = takeAction();
    idle_ = 0;
    EXPECT_EQ(action.verb, "message") << box.text().toStdString();
    EXPECT_TRUE(kEnglish || box.text().startsWith(qt(action.text))) << box.text().toStdString();
    QTest::mouseClick(box.buttons().front(), Qt::LeftButton);
  }

  void use(ui::qt::FormWindow& window) {
    const std::string verb = nextAction().verb;
    const auto* const main = dynamic_cast<const ui::frmOutlookSync*>(&window.form());
    if (!window.form().isVisible()) return;  // on its way out
    if (verb == "message" || (main != nullptr && main->isRunning())) return;
    if (verb == "again" && window.isVisible() && !reopened_) return;
    if (verb == "title" && window.windowTitle() != titleOf(nextAction().text)) return;
    const Action action = takeAction();
    idle_ = 0;
    reopened_ = false;
    expectNames(window);
    expectKeys(window);
    expectReadingOrder(window);
    expectReadable(window);
    expectCentred(window);
    perform(action, window);
  }

  void perform(const Action& action, ui::qt::FormWindow& window) {
    SCOPED_TRACE(action.verb + " " + action.control + " " + action.text);
    auto* const widget =
        action.control.empty() ? &window : window.findChild<QWidget*>(qt(action.control));
    ASSERT_NE(widget, nullptr);
    EXPECT_TRUE(widget->isVisible());
    if (action.verb == "press") {
      QTest::mouseClick(widget, Qt::LeftButton);
    } else if (action.verb == "tick") {
      auto& box = dynamic_cast<QCheckBox&>(*widget);
      if (box.isChecked() != (action.text == "1")) QTest::keyClick(&box, Qt::Key_Space);
    } else if (action.verb == "choose") {
      auto& combo = dynamic_cast<QComboBox&>(*widget);
      while (combo.currentIndex() > std::stoi(action.text)) QTest::keyClick(&combo, Qt::Key_Up);
      while (combo.currentIndex() < std::stoi(action.text)) QTest::keyClick(&combo, Qt::Key_Down);
    } else if (action.verb == "type") {
      QTest::keySequence(widget, QKeySequence::SelectAll);
      QTest::keyClick(widget, Qt::Key_Delete);
      QInputMethodEvent typed;  // as Korean is typed
      typed.setCommitString(qt(action.text));
      QApplication::sendEvent(widget, &typed);
    } else if (action.verb == "node") {
      selectNode(dynamic_cast<QTreeWidget&>(*widget), action.text);
    } else if (action.verb == "expect") {
      EXPECT_EQ(shownText(*widget).toStdString(), action.text);
    } else if (action.verb == "state") {
      EXPECT_EQ(dynamic_cast<QCheckBox&>(*widget).isChecked(), action.text == "1");
    } else if (action.verb == "line") {
      expectShownLine(*window.findChild<QTreeView*>("ListView1"), action.text);
    } else if (action.verb == "activate") {
      letViewsFollow();
      auto& list = *window.findChild<QTreeView*>("ListView1");
      const QModelIndex row = list.model()->index(std::stoi(action.text), 0);
      const QPoint place = list.visualRect(row).center();
      QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, place);
      QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, place);
    } else if (action.verb == "enter" || action.verb == "escape") {
      QTest::keyClick(&window, action.verb == "enter" ? Qt::Key_Return : Qt::Key_Escape);
    } else if (action.verb == "close") {
      reopened_ = actionsLeft();
      window.close();
    } else if (action.verb == "picture") {
      takePicture(window, action.text);
    }
  }

  static QString shownText(const QWidget& widget) {
    const QVariant paragraphs = widget.property("plainText");
    if (paragraphs.isValid()) return paragraphs.toString();
    const auto* const status = qobject_cast<const QStatusBar*>(&widget);
    return status == nullptr ? widget.property("text").toString() : status->currentMessage();
  }

  static void selectNode(QTreeWidget& tree, const std::string& text) {
    std::istringstream path(text);
    QTreeWidgetItem* item = tree.invisibleRootItem();
    for (int number = 0; path >> number;) item = item->child(number - 1);
    tree.setCurrentItem(item);
  }

  void letViewsFollow() {
    waiting_ = true;  // the next step has to wait too
    QTest::qWait(120);
    waiting_ = false;
  }

  // What the user sees, which follows what the run writes some times a second.
  void expectShownLine(const QTreeView& view, const std::string& text) {
    letViewsFollow();
    const QAbstractItemModel& model = *view.model();
    std::string all;
    for (int row = 0; row < model.rowCount(); ++row) {
      QStringList cells;
      for (int column = 0; column < 3; ++column)
        cells += model.index(row, column).data().toString();
      const std::string line = cells.join('|').toStdString();
      if (line == text || kEnglish) return;
      all += line + "\n";
    }
    ADD_FAILURE() << "no line " << text << " among\n" << all;
  }

  void takePicture(QWidget& window, const std::string& name) {
    const char* const folder = std::getenv("VLOUT_TEST_PICTURES");
    if (folder == nullptr) return;
    letViewsFollow();
    EXPECT_TRUE(window.grab().save(qt(std::string(folder) + "/" + name + ".png")));
  }

  // Each window is looked at once and then moved, so that the next one cannot go by its place.
  static void expectCentred(QWidget& window) {
    if (window.property("seen").toBool()) return;
    const QPoint middle = window.screen()->availableGeometry().center();
    EXPECT_LE((window.frameGeometry().center() - middle).manhattanLength(), 2)
        << window.windowTitle().toStdString();
    window.setProperty("seen", true);
    window.move(30, 20);
  }

  // Whatever can be used has a name for those who cannot see it.
  static void expectNames(QWidget& window) {
    for (QWidget* const widget : window.findChildren<QWidget*>()) {
      if (widget->objectName().isEmpty() || widget->objectName().startsWith("qt_")) continue;
      if (widget->focusPolicy() == Qt::NoFocus || !widget->isVisible()) continue;
      QAccessibleInterface* const seen = QAccessible::queryAccessibleInterface(widget);
      ASSERT_NE(seen, nullptr);
      EXPECT_FALSE(seen->text(QAccessible::Name).trimmed().isEmpty())
          << widget->objectName().toStdString();
    }
  }

  // Text stands out from what is behind it, whatever the palette.
  static void expectReadable(const QWidget& window) {
    const auto light = [](const QColor& colour) { return qGray(colour.rgb()); };
    for (const QWidget* const widget : window.findChildren<QWidget*>()) {
      const bool isText = widget->inherits("QLineEdit") || widget->inherits("QPlainTextEdit") ||
                          widget->inherits("QTreeView");
      if (!widget->isVisible() || !widget->isEnabled() || !(isText || widget->inherits("QLabel")))
        continue;
      const QPalette& colours = widget->palette();
      const int text = light(colours.color(isText ? QPalette::Text : QPalette::WindowText));
      const int back = light(colours.color(isText ? QPalette::Base : QPalette::Window));
      EXPECT_GT(std::abs(text - back), 70) << widget->objectName().toStdString();
    }
  }

  bool waiting_ = false;
  QObject steps_;  // ends what is arranged with the test
  // No two controls that can be seen answer to the same key.
  static void expectKeys(const QWidget& window) {
    std::map<QString, QString> keys;
    for (const QWidget* const widget : window.findChildren<QWidget*>()) {
      const QKeySequence key = QKeySequence::mnemonic(widget->property("text").toString());
      if (key.isEmpty() || !widget->isVisible() || widget->inherits("QLineEdit")) continue;
      const auto [place, added] = keys.emplace(key.toString(), widget->objectName());
      EXPECT_TRUE(added) << key.toString().toStdString() << ": " << place->second.toStdString()
                         << " and " << widget->objectName().toStdString();
    }
    EXPECT_GE(keys.size(), 2U);
  }

  // The Tab key goes through a window as the eye does: down, or to the right.
  static void expectReadingOrder(const QWidget& window) {
    const QWidget* last = nullptr;
    QRect lastPlace;
    for (const QWidget* widget = window.nextInFocusChain(); widget != &window;
         widget = widget->nextInFocusChain()) {
      if ((widget->focusPolicy() & Qt::TabFocus) == 0 || !widget->isVisibleTo(&window)) continue;
      const QRect place(widget->mapTo(&window, QPoint()), widget->size());
      // What scrolls may lie behind what does not.
      const bool isNext = last != nullptr && last->parentWidget() == widget->parentWidget();
      EXPECT_TRUE(!isNext || place.top() > lastPlace.center().y() ||
                  place.left() >= lastPlace.right())
          << widget->objectName().toStdString() << " after " << last->objectName().toStdString();
      last = widget;
      lastPlace = place;
    }
    EXPECT_NE(last, nullptr);
  }

  int idle_ = 0;
  bool reopened_ = false;
};

TEST_P(QtWindowTest, EndsAsItSays) {
  layOut(GetParam());
  const QPalette usual = QApplication::palette();
  const bool isDark = GetParam().stem() == "sync";
  if (isDark) QApplication::setPalette(QPalette(QColor(50, 50, 50), QColor(35, 35, 35)));
  QTimer::singleShot(0, &steps_, [this] { step(); });
  do {
    call();
  } while (actionsLeft());
  QApplication::setPalette(usual);
  expectOutcome();
}

// The windows without a scenario: `act` is called some times a second while they are open.
class QtTest : public ComponentFixture {
 protected:
  QtTest() : ComponentFixture(std::make_unique<ui::qt::QtToolkit>()) {}

  void open(const std::function<void(ui::qt::FormWindow&)>& act) {
    QObject steps;
    // Arranged anew before each act, which may last as long as a whole run.
    const std::function<void()> step = [&] {
      QTimer::singleShot(20, &steps, step);
      auto* const window = dynamic_cast<ui::qt::FormWindow*>(QApplication::activeModalWidget());
      if (window != nullptr) act(*window);
    };
    step();
    entry::ORUN(*runtime).OUTSYNCRUN();
  }
};

TEST_F(QtTest, ClosingDuringARunStopsItAtTheNextCard) {
  for (int i = 1; i <= 400; ++i) addCard(i, {{"FullName", "홍길동" + std::to_string(i)}});
  open([&](ui::qt::FormWindow& window) {
    auto& form = dynamic_cast<ui::frmOutlookSync&>(window.form());
    if (form.isRunning()) {
      if (cardFiles().empty()) return;
      window.close();
      window.close();  // asked twice, as an impatient user does
    } else {
      form.Combo1.setIndex(ui::frmOutlookSync::kExport);
      form.Combo2.setIndex(ui::frmOutlookSync::kAllCards);
      QTest::mouseClick(window.findChild<QPushButton*>("Command2"), Qt::LeftButton);
    }
  });
  const auto sent = cardFiles().size();
  EXPECT_GT(sent, 0U);
  EXPECT_LT(sent, 400U);
  const auto stamped =
      database.query("SELECT i_idx FROM tbl_namecard where [VLLastsync_date] like '2%'");
  EXPECT_EQ(stamped->rowCount(), sent);
}

// Messages are confirmed as they come, and counted.
TEST_F(QtTest, ThePickerSurvivesALostTableAndEnterPressesWhatHasTheFocus) {
  int messages = 0;
  QObject steps;
  const std::function<void()> confirm = [&] {
    QTimer::singleShot(20, &steps, confirm);
    auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (box == nullptr) return;
    ++messages;
    box->close();
  };
  confirm();
  int turn = 0;
  open([&](ui::qt::FormWindow& window) {
    const bool isPicker = dynamic_cast<ui::frmGroupBox*>(&window.form()) != nullptr;
    const auto button = [&](const char* name) { return window.findChild<QPushButton*>(name); };
    if (!isPicker && turn < 2) {
      QTest::mouseClick(button("Command7"), Qt::LeftButton);
    } else if (!isPicker) {
      EXPECT_EQ(window.findChild<QLineEdit*>("Text1")->text(), "미정");
      window.close();
    } else if (++turn == 1) {
      auto& tree = *window.findChild<QTreeWidget*>("TreeView1");
      tree.setCurrentItem(tree.topLevelItem(0)->child(0));
      button("Command2")->setFocus();
      QTest::keyClick(button("Command2"), Qt::Key_Return);
      EXPECT_FALSE(runtime->results().chosen);
    } else {
      execute("DROP TABLE tbl_folder");
      QTest::mouseClick(button("Command7"), Qt::LeftButton);
      QTest::qWait(60);
      EXPECT_TRUE(window.isVisible());
      QTest::keyClick(&window, Qt::Key_Escape);
    }
  });
  EXPECT_GE(messages, 1);
}

TEST_F(QtTest, EveryButtonIsWithinASmallScreen) {
  const QFont usual = QApplication::font();
  QFont large = usual;
  large.setPointSizeF(usual.pointSizeF() * 2);
  QApplication::setFont(large);
  open([&](ui::qt::FormWindow& window) {
    const QSize screen = window.screen()->availableSize();
    EXPECT_LE(window.width(), screen.width());
    EXPECT_LE(window.height(), screen.height());
    auto* const run = window.findChild<QPushButton*>("Command2");
    EXPECT_TRUE(window.rect().contains(run->mapTo(&window, run->rect().bottomRight())));
    EXPECT_FALSE(run->visibleRegion().isEmpty());
    auto& list = dynamic_cast<ui::frmOutlookSync&>(window.form()).ListView1;
    if (list.rows().empty()) list.addRow("the first line of a run");
    const auto* const view = window.findChild<QTreeView*>("ListView1");
    if (view->model()->rowCount() == 0) return;  // it follows some times a second
    EXPECT_GT(view->visibleRegion().boundingRect().height(), view->height() / 2);
    window.close();
  });
  QApplication::setFont(usual);
}

TEST_F(QtTest, SkinsComeAndGoWithTheHostsSetting) {
  const QPalette usual;
  writeFile(folder() / "Styles" / "Office2007.cjstyles", "");
  for (const bool skinned : {true, false, true}) {
    writeFile(folder() / "settings.ini",
              skinned ? "[COMMON]\r\nSKIN_THEME=2\r\n" : "[COMMON]\r\nSKIN_THEME=8\r\n");
    open([&](ui::qt::FormWindow& window) {
      EXPECT_EQ(window.palette().color(QPalette::Window) == usual.color(QPalette::Window),
                !skinned);
      EXPECT_EQ(qApp->styleSheet().isEmpty(), !skinned);
      window.close();
    });
  }
}

INSTANTIATE_TEST_SUITE_P(All, QtWindowTest, testing::ValuesIn(scenarioFiles()), scenarioName);

}  // namespace
}  // namespace vlout::tests

int main(int argc, char** argv) {
  setenv("QT_QPA_PLATFORM", "offscreen:configfile=" VLOUT_SCREEN, 0);  // 1366 x 768
  if (vlout::tests::kEnglish) vlout::text::setLanguage(vlout::text::Language::English);
  vlout::ui::qt::Application application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
