// The scenarios on the native component: the forms are driven through their controls, as the user
// of the DLL drives its windows.
#include <sstream>

#include "tests/scenarios/scenario_fixture.h"

namespace vlout::tests {
namespace {

using ui::Layout;
using Kind = Layout::Kind;

const Layout* findPart(const Layout& layout, const std::string& name) {
  if (layout.name == name && layout.kind != Kind::Panel) return &layout;
  for (const Layout& part : layout.parts) {
    if (const Layout* const found = findPart(part, name)) return found;
  }
  return nullptr;
}

void pressDefault(const Layout& layout) {
  if (layout.kind == Kind::DefaultButton) {
    static_cast<const ui::Button&>(*layout.control).press();
  }
  for (const Layout& part : layout.parts) pressDefault(part);
}

int childOf(const ui::TreeView& tree, int parent, int number) {
  for (int i = 1; i <= tree.count(); ++i) {
    if (tree.node(i).parent == parent && --number == 0) return i;
  }
  return 0;
}

class ScenarioTest : public ScenarioFixture,
                     public testing::WithParamInterface<std::filesystem::path> {
 protected:
  void perform(const Action& action, ui::Form& form) {
    SCOPED_TRACE(action.verb + " " + action.control + " " + action.text);
    const Layout layout = form.layout();
    const bool named = !action.control.empty();
    const Layout* const part = named ? findPart(layout, action.control) : nullptr;
    ASSERT_EQ(part != nullptr, named);
    if (action.verb == "press") {
      static_cast<const ui::Button&>(*part->control).press();
    } else if (action.verb == "choose") {
      static_cast<ui::ComboBox&>(*part->control).setIndex(std::stoi(action.text));
    } else if (action.verb == "tick") {
      static_cast<ui::CheckBox&>(*part->control).setValue(std::stoi(action.text));
    } else if (action.verb == "type") {
      static_cast<ui::TextBox&>(*part->control).setText(action.text);
    } else if (action.verb == "node") {
      auto& tree = static_cast<ui::TreeView&>(*part->control);
      std::istringstream path(action.text);
      int node = 0;
      for (int number = 0; path >> number;) node = childOf(tree, node, number);
      tree.select(node);
    } else if (action.verb == "expect") {
      EXPECT_EQ(part->control->text(), action.text);
    } else if (action.verb == "state") {
      EXPECT_EQ(static_cast<ui::CheckBox&>(*part->control).value(), std::stoi(action.text));
    } else if (action.verb == "title") {
      EXPECT_EQ(form.caption, action.text);
    } else if (action.verb == "line") {
      expectLine(static_cast<ui::ListView&>(*findPart(layout, "ListView1")->control), action.text);
    } else if (action.verb == "activate") {
      const auto& list = static_cast<ui::ListView&>(*findPart(layout, "ListView1")->control);
      list.activate(std::stoul(action.text));
    } else if (action.verb == "enter") {
      pressDefault(layout);
    } else if (action.verb == "escape") {
      form.keyPress(ui::kEscape);
    } else if (action.verb == "close") {
      form.requestClose();
    } else {
      EXPECT_TRUE(action.verb == "picture" || action.verb == "middle") << action.verb;
    }
  }

  void play(ui::Form& form) {
    while (form.isVisible() && actionsLeft()) {
      const Action& action = takeAction();
      if (action.verb == "again") return;
      perform(action, form);
    }
  }
};

TEST_P(ScenarioTest, EndsAsItSays) {
  layOut(GetParam());
  toolkit->dialog = [&](ui::Form& form) { play(form); };
  toolkit->onMessage = [&](const std::string& text) {
    ASSERT_TRUE(actionsLeft()) << text;
    const Action& action = takeAction();
    EXPECT_EQ(action.verb, "message") << text;
    EXPECT_TRUE(text.starts_with(action.text)) << text << "\nis not\n" << action.text;
  };
  do {
    open([&](ui::frmOutlookSync& window) { play(window); });
  } while (actionsLeft());
  expectOutcome();
}

INSTANTIATE_TEST_SUITE_P(All, ScenarioTest, testing::ValuesIn(scenarioFiles()), scenarioName);

}  // namespace
}  // namespace vlout::tests
