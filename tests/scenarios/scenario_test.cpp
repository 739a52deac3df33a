// The scenarios on the native component: the forms are driven through their controls, as the user
// of the DLL drives its windows.
#include "tests/scenarios/scenario.h"

#include <cstdlib>
#include <sstream>

#include "tests/support/component_fixture.h"
#include "ui/frm_group_box.h"

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

int childOf(const ui::TreeView& tree, int parent, int number) {
  for (int i = 1; i <= tree.count(); ++i) {
    if (tree.node(i).parent == parent && --number == 0) return i;
  }
  return 0;
}

class ScenarioTest : public ComponentFixture,
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
    } else if (action.verb == "title") {
      EXPECT_EQ(form.caption, action.text);
    } else if (action.verb == "line") {
      expectLine(dynamic_cast<ui::frmOutlookSync&>(form).ListView1, action.text);
    } else if (action.verb == "escape") {
      form.keyPress(ui::kEscape);
    } else if (action.verb == "close") {
      form.requestClose();
    } else {
      EXPECT_EQ(action.verb, "picture");
    }
  }

  static void expectLine(const ui::ListView& list, const std::string& text) {
    std::string all;
    for (const auto& row : list.rows()) {
      const std::string line = row.cells[0] + "|" + row.cells[1] + "|" + row.cells[2];
      if (line == text) return;
      all += line + "\n";
    }
    ADD_FAILURE() << "no line " << text << " among\n" << all;
  }

  void play(ui::Form& form) {
    while (form.isVisible() && next_ < actions_.size()) {
      const Action& action = actions_[next_++];
      if (action.verb == "again") return;
      perform(action, form);
    }
  }

  std::vector<Action> actions_;
  std::size_t next_ = 0;
};

TEST_P(ScenarioTest, EndsAsItSays) {
  const Scenario scenario = Scenario::read(GetParam());
  scenario.fillDatabase(database);
  scenario.writeFiles(folder());
  {
    outlook::vcard::VCardStore store(contactsFolder().string());
    ASSERT_TRUE(store.connect());
    for (const std::string& line : scenario.lines("[contacts]")) {
      const auto before = cardFiles();
      const Record record(line);
      createContact(store, record);
      for (const std::string& name : cardFiles()) {
        if (std::find(before.begin(), before.end(), name) != before.end()) continue;
        // The folder's order is that of the names.
        const auto file = contactsFolder() / ("c" + std::to_string(100 + before.size()) + ".vcf");
        std::filesystem::rename(contactsFolder() / name, file);
        setModified(file, record.get("modified").substr(0, 19));
      }
    }
  }
  actions_ = scenario.actions();
  toolkit->dialog = [&](ui::Form& form) { play(form); };
  toolkit->onMessage = [&](const std::string& text) {
    ASSERT_LT(next_, actions_.size()) << text;
    const Action& action = actions_[next_++];
    EXPECT_EQ(action.verb, "message") << text;
    EXPECT_TRUE(text.starts_with(action.text)) << text << "\nis not\n" << action.text;
  };
  do {
    open([&](ui::frmOutlookSync& window) { play(window); });
  } while (next_ < actions_.size());
  std::string after;
  outlook::vcard::VCardStore store(contactsFolder().string());
  ASSERT_TRUE(store.connect());
  for (const std::string& line : outcome(database, contactRecords(store))) {
    after += line + "\n";
  }
  std::string expected;
  for (const std::string& line : scenario.lines("[after]")) expected += line + "\n";
  EXPECT_EQ(after, expected);
}

std::vector<std::filesystem::path> scenarioFiles() {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(VLOUT_SCENARIOS)) {
    if (entry.path().extension() != ".scenario") continue;
    if (Scenario::read(entry.path()).sections.contains("[only under Wine]")) continue;
    files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

INSTANTIATE_TEST_SUITE_P(All, ScenarioTest, testing::ValuesIn(scenarioFiles()),
                         [](const auto& info) {
                           std::string name = info.param.stem().string();
                           std::replace(name.begin(), name.end(), '-', '_');
                           return name;
                         });

}  // namespace
}  // namespace vlout::tests
