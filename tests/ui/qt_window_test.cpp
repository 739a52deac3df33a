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
#include <QStatusBar>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include <cstdlib>
#include <sstream>

#include "tests/scenarios/scenario_fixture.h"
#include "ui/qt/qt_toolkit.h"

namespace vlout::tests {
namespace {

QString qt(const std::string& text) {
  return QString::fromStdString(text);
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
    EXPECT_TRUE(box.text().startsWith(qt(action.text))) << box.text().toStdString();
    QTest::mouseClick(box.buttons().front(), Qt::LeftButton);
  }

  void use(ui::qt::FormWindow& window) {
    const std::string verb = nextAction().verb;
    const auto* const main = dynamic_cast<const ui::frmOutlookSync*>(&window.form());
    if (!window.form().isVisible()) return;  // on its way out
    if (verb == "message" || (main != nullptr && main->isRunning())) return;
    if (verb == "again" && window.isVisible() && !reopened_) return;
    if (verb == "title" && window.windowTitle() != qt(nextAction().text)) return;
    const Action action = takeAction();
    idle_ = 0;
    reopened_ = false;
    expectNames(window);
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
      expectLine(dynamic_cast<ui::frmOutlookSync&>(window.form()).ListView1, action.text);
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
    const auto* const status = qobject_cast<const QStatusBar*>(&widget);
    return status == nullptr ? widget.property("text").toString() : status->currentMessage();
  }

  static void selectNode(QTreeWidget& tree, const std::string& text) {
    std::istringstream path(text);
    QTreeWidgetItem* item = tree.invisibleRootItem();
    for (int number = 0; path >> number;) item = item->child(number - 1);
    tree.setCurrentItem(item);
  }

  static void takePicture(QWidget& window, const std::string& name) {
    const char* const folder = std::getenv("VLOUT_TEST_PICTURES");
    if (folder == nullptr) return;
    EXPECT_TRUE(window.grab().save(qt(std::string(folder) + "/" + name + ".png")));
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

  QObject steps_;  // ends what is arranged with the test
  int idle_ = 0;
  bool reopened_ = false;
};

TEST_P(QtWindowTest, EndsAsItSays) {
  layOut(GetParam());
  QTimer::singleShot(0, &steps_, [this] { step(); });
  do {
    entry::ORUN(*runtime).OUTSYNCRUN();
  } while (actionsLeft());
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
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  QApplication application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
