#include "ui/frm_group_box.h"

#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/component_fixture.h"

namespace vlout::ui {
namespace {

using testing::ElementsAre;

class GroupPickerTest : public tests::ComponentFixture {
 protected:
  // Opens the main window, presses its button and lets `user` have the picker.
  void pick(const std::function<void(frmGroupBox&)>& user) {
    toolkit->dialog = [&](Form& form) {
      user(dynamic_cast<frmGroupBox&>(form));
      form.requestClose();
    };
    open([&](frmOutlookSync& window) {
      window.Command7.press();
      chosen = window.Text1.text() + " " + window.Text1.tag();
    });
  }
  void addFolder(int key, int parent, const std::string& name) {
    execute("INSERT INTO tbl_folder(f_idx,p_idx,folder_name) VALUES(" + std::to_string(key) + "," +
            std::to_string(parent) + ",'" + name + "')");
  }
  static std::vector<std::string> nodes(const frmGroupBox& picker) {
    std::vector<std::string> result;
    for (int i = 1; i <= picker.TreeView1.count(); ++i) {
      const auto& node = picker.TreeView1.node(i);
      result.push_back(picker.TreeView1.fullPath(i) + " " + node.tag + " " +
                       std::to_string(node.image));
    }
    return result;
  }

  std::string chosen;  // the group's name and number
};

TEST_F(GroupPickerTest, BuildsTheTreeWithoutTrashOrphansAndCycles) {
  addFolder(20, 1, "거래처");
  addFolder(5, 20, "먼저 오는 하위");
  addFolder(21, 1, "미지정");
  addFolder(22, 20, "미정");
  addFolder(30, 1000, "버린 것");
  addFolder(31, 30, "버린 것의 하위");
  addFolder(40, 77, "고아");
  addFolder(50, 51, "순환");
  addFolder(51, 50, "순환");
  pick([](frmGroupBox& picker) {
    EXPECT_THAT(nodes(picker), ElementsAre("전체 1|0 0", "전체/미정 2|1 3", "전체/거래처 20|1 2",
                                           "전체/미지정 21|1 3", "전체/거래처/미정 22|20 3",
                                           "전체/거래처/먼저 오는 하위 5|20 2"));
    EXPECT_TRUE(picker.TreeView1.node(1).expanded);
    EXPECT_EQ(picker.TreeView1.node(1).expandedImage, 1);
    picker.TreeView1.expand(2);
    EXPECT_EQ(picker.TreeView1.node(2).expandedImage, 3);
    picker.TreeView1.expand(5);  // of that name, but not at the top
    EXPECT_EQ(picker.TreeView1.node(5).expandedImage, 0);
    EXPECT_EQ(picker.T_INDEX(20), 3);
    EXPECT_EQ(picker.T_INDEX(2), 2);
    EXPECT_EQ(picker.T_INDEX(999), -1);
    std::set<std::string> keys;
    for (int i = 1; i <= picker.TreeView1.count(); ++i) keys.insert(picker.TreeView1.node(i).key);
    EXPECT_EQ(keys.size(), 6U);
    EXPECT_EQ(keys.begin()->size(), 32U);
    picker.TreeView1.select(3);
    picker.Command7.press();
    EXPECT_EQ(picker.TreeView1.count(), 6);
    EXPECT_EQ(picker.TreeView1.selected(), 0);
  });
}

TEST_F(GroupPickerTest, AnEmptyTableLeavesTheTrash) {
  execute("DELETE FROM tbl_folder");
  pick([](frmGroupBox& picker) {
    EXPECT_THAT(nodes(picker), ElementsAre("전체 1|0 0", "휴지통 1000|1000 0"));
    EXPECT_FALSE(picker.TreeView1.node(1).expanded);
  });
}

TEST_F(GroupPickerTest, HandsTheChoiceBackOrNone) {
  addFolder(20, 1, "거래처");
  addFolder(21, 20, "  ");
  const auto choose = [](int node, Button frmGroupBox::*button = &frmGroupBox::Command1) {
    return [=](frmGroupBox& picker) {
      if (node > 0) picker.TreeView1.select(node);
      if (button != nullptr) (picker.*button).press();
      if (button == nullptr) picker.keyPress(kEscape);
    };
  };
  struct Case {
    const char* name;
    std::function<void(frmGroupBox&)> user;
    std::string chosen;
    std::size_t messages = 0;
  };
  for (const Case& c :
       {Case{"a folder", choose(3), "거래처 20"}, Case{"unassigned", choose(2), "미정 2"},
        Case{"nothing", choose(0), "미정 2", 1}, Case{"the root", choose(1), "미정 2", 1},
        Case{"a blank name", choose(4), "미정 2"},
        Case{"cancel", choose(3, &frmGroupBox::Command2), "미정 2"},
        Case{"escape", choose(3, nullptr), "미정 2"}}) {
    toolkit->messages.clear();
    pick(c.user);
    EXPECT_EQ(chosen, c.chosen) << c.name;
    EXPECT_EQ(toolkit->messages.size(), c.messages) << c.name;
  }
  pick(choose(3));
  EXPECT_EQ(runtime->results().groupKey, 20);
  EXPECT_EQ(runtime->results().groupParent, 1);
  addFolder(-5, 1, "음수");  // comes first; what is below it follows
  addFolder(-4, -5, "하위");
  pick(choose(3));
  EXPECT_EQ(runtime->results().groupKey, -4);
  EXPECT_EQ(runtime->results().groupParent, -5);
}

}  // namespace
}  // namespace vlout::ui
