#include "ui/frm_outlook_sync.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/component_fixture.h"

namespace vlout::ui {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class MainWindowTest : public tests::ComponentFixture {
 protected:
  void writeExportList(const std::string& content) {
    tests::writeFile(folder() / "temp" / "exportlist.txt", content);
  }
  std::vector<std::string> messageTexts() const {
    std::vector<std::string> texts;
    for (const auto& message : toolkit->messages) texts.push_back(message.text);
    return texts;
  }
  static constexpr const char* kStoreFailed =
      "아웃룩 연결에 실패하였습니다!\r\n(Outlook Express는 지원하지 않습니다)";
};

TEST_F(MainWindowTest, OpensAsTheOptionsAndTheHostSay) {
  struct Case {
    const char* list;
    const char* range;
    const char* group;
    const char* tag;
    int parent;
  };
  execute("INSERT INTO tbl_folder(f_idx,p_idx,folder_name) VALUES(12,5,'거래처')");
  for (const Case& c :
       {Case{"12\r\n7\r\n", "그룹(거래처)", "거래처", "12", 5},
        Case{" 0012 \n", "그룹(거래처)", "거래처", "12", 5},
        Case{"1\r\n", "그룹(전체)", "미정", "2", 1}, Case{"99\r\n", "그룹()", "미정", "2", 1},
        Case{"", "그룹()", "미정", "2", 1}, Case{"12 OR 1=1\r\n", "그룹()", "미정", "2", 1}}) {
    writeExportList(c.list);
    open([&](frmOutlookSync& window) {
      EXPECT_THAT(window.Combo1.items(),
                  ElementsAre("1. 벨모라 ← 아웃룩", "2. 벨모라 → 아웃룩", "3. 벨모라 ↔ 아웃룩"));
      EXPECT_THAT(window.Combo2.items(), ElementsAre("선택항목", c.range, "전체자료"));
      EXPECT_EQ(window.Text1.text(), c.group);
      EXPECT_EQ(window.Text1.tag(), c.tag);
      EXPECT_EQ(runtime->selectedGroupParent(), c.parent);
      EXPECT_EQ(window.Combo1.index(), 0);
      EXPECT_TRUE(window.P1.visible() && !window.P2.visible() && !window.P3.visible());
      EXPECT_FALSE(window.Check3.enabled());
      EXPECT_EQ(window.left, (20000 - window.width) / 2);
    });
  }
  EXPECT_THAT(toolkit->messages, IsEmpty());
}

TEST_F(MainWindowTest, EachOptionIsKeptInItsPlace) {
  open([](frmOutlookSync& window) {
    window.Check1.setValue(CheckBox::kChecked);  // is kept, though it always opens cleared
    window.Export_Check3.setValue(CheckBox::kCleared);
    window.Sync_Check2.setValue(CheckBox::kGrayed);
  });
  EXPECT_EQ(tests::readFile(folder() / "VelmoraOlSync.ini"),
            "[SET]\r\nOUT_CHECK1=1\r\nOUT_CHECK2=1\r\nOUT_CHECK3=1\r\nOUT_CHECK4=1\r\n"
            "OUT_CHECK5=1\r\nOUT_CHECK6=1\r\nOUT_CHECK7=0\r\nOUT_CHECK8=2\r\nOUT_CHECK9=1\r\n"
            "OUT_CHECK10=1\r\n");
}

TEST_F(MainWindowTest, AModeRunsOnceUntilAnOptionChanges) {
  addCard(1, {{"FullName", "홍길동"}});
  open([&](frmOutlookSync& window) {
    window.Combo1.setIndex(frmOutlookSync::kExport);
    window.Combo2.setIndex(frmOutlookSync::kAllCards);
    toolkit->onPump = [&] {
      EXPECT_FALSE(window.Command2.enabled());
      window.Command2.clicked();  // a second press during a run does nothing
    };
    window.Command2.press();
    EXPECT_EQ(cardFiles().size(), 1U);
    EXPECT_TRUE(window.isDone(frmOutlookSync::kExport));
    EXPECT_FALSE(window.Command2.enabled());
    window.Combo1.setIndex(frmOutlookSync::kImport);
    EXPECT_TRUE(window.Command2.enabled());
    window.Combo1.setIndex(frmOutlookSync::kExport);
    EXPECT_FALSE(window.Command2.enabled());
    window.Option2.press();
    EXPECT_TRUE(window.P2.visible() && window.Option2.bold() && !window.Option1.bold());
    EXPECT_EQ(window.Image2.image(), 2);
    EXPECT_EQ(window.StatusBar1.text(), "VL의 고객자료를 아웃룩으로 보냅니다.");
    EXPECT_FALSE(window.Command2.enabled());
    window.Export_Check2.setValue(CheckBox::kCleared);
    EXPECT_TRUE(window.Command2.enabled());
    EXPECT_EQ(window.Option2.tag(), "");
  });
  open([](frmOutlookSync& window) {
    window.Combo1.setIndex(frmOutlookSync::kExport);
    EXPECT_TRUE(window.Command2.enabled());  // a fresh window starts afresh
    window.keyPress(kEscape);
    EXPECT_FALSE(window.isLoaded());
  });
}

TEST_F(MainWindowTest, RefusalsSayWhyAndTouchNothing) {
  struct Case {
    const char* name;
    std::function<void(frmOutlookSync&)> prepare;
    std::vector<std::string> beginnings;  // of the messages, in order
  };
  const auto exportRange = [](frmOutlookSync::Range range) {
    return [range](frmOutlookSync& window) {
      window.Combo1.setIndex(frmOutlookSync::kExport);
      window.Combo2.setIndex(range);
    };
  };
  const std::vector<Case> cases{
      {"no target",
       [](frmOutlookSync& window) { window.chadd.setValue(CheckBox::kCleared); },
       {"작업 대상을 선택해 주십시오!"}},
      {"no cards", exportRange(frmOutlookSync::kAllCards), {"내보내기할 데이터가 없습니다!"}},
      {"no export list",
       exportRange(frmOutlookSync::kSelectedCards),
       {"데이터 연결이 실패되었습니다!", "데이터 연결이 실패되었습니다!"}},
      {"no table",
       [&](frmOutlookSync& window) {
         execute("DROP TABLE tbl_namecard");
         exportRange(frmOutlookSync::kAllCards)(window);
       },
       {"데이터 연결이 실패되었습니다!\r\n"}},
      {"no contact folder",
       [&](frmOutlookSync& window) {
         std::filesystem::remove_all(contactsFolder());
         exportRange(frmOutlookSync::kAllCards)(window);
       },
       {kStoreFailed}},
  };
  for (const Case& c : cases) {
    toolkit->messages.clear();
    // The store connects once for a process, so each refusal meets a fresh component.
    auto contacts = std::make_unique<outlook::vcard::VCardStore>(contactsFolder().string());
    auto scripted = std::make_unique<tests::ScriptedToolkit>();
    toolkit = scripted.get();
    runtime.reset();
    runtime = std::make_unique<entry::Runtime>(
        folder(),
        entry::Platform{[] { return std::make_unique<store::sqlite::SqliteConnection>(); },
                        [&] { return std::move(contacts); }, std::move(scripted)});
    open([&](frmOutlookSync& window) {
      c.prepare(window);
      window.Command2.press();
      EXPECT_TRUE(window.Command2.enabled()) << c.name;
      EXPECT_FALSE(window.isDone(frmOutlookSync::kExport)) << c.name;
    });
    const auto texts = messageTexts();
    ASSERT_EQ(texts.size(), c.beginnings.size()) << c.name;
    for (std::size_t i = 0; i < texts.size(); ++i) {
      EXPECT_THAT(texts[i], StartsWith(c.beginnings[i])) << c.name;
    }
  }
}

TEST_F(MainWindowTest, RangesTakeTheCardsThatTheHostMeans) {
  execute("INSERT INTO tbl_folder(f_idx,p_idx,folder_name) VALUES(10,1,'상위')");
  execute("INSERT INTO tbl_folder(f_idx,p_idx,folder_name) VALUES(5,10,'하위')");
  for (const int id : {5, 7, 9, 12}) addCard(id, {{"FullName", "카드" + std::to_string(id)}});
  execute("UPDATE tbl_namecard SET f_idx=10 where i_idx=7");
  execute("UPDATE tbl_namecard SET f_idx=5 where i_idx=9");
  struct Case {
    const char* list;
    frmOutlookSync::Range range;
    bool subgroups;
    std::vector<std::string> ids;
  };
  for (const Case& c :
       {Case{"10\r\n12\r\n7\r\n\r\n7\r\n", frmOutlookSync::kSelectedCards, false, {"7", "12"}},
        Case{"10\r\n", frmOutlookSync::kGroup, false, {"7"}},
        Case{"10\r\n", frmOutlookSync::kGroup, true, {"7", "9"}},
        Case{"1\r\n", frmOutlookSync::kGroup, true, {"12", "5", "7", "9"}},
        Case{"\r\n", frmOutlookSync::kGroup, false, {}},
        Case{"10\r\n", frmOutlookSync::kAllCards, false, {"12", "5", "7", "9"}}}) {
    writeExportList(c.list);
    open([&](frmOutlookSync& window) {
      window.Combo1.setIndex(frmOutlookSync::kExport);
      window.Combo2.setIndex(c.range);
      window.Check3.setValue(c.subgroups ? 1 : 0);
      window.Export_Check1.setValue(CheckBox::kCleared);
      window.Command2.press();
      std::vector<std::string> ids;
      for (const auto position : window.ListView2.remaining()) {
        ids.push_back(window.ListView2.row(position).id);
      }
      EXPECT_EQ(ids, c.ids) << c.list;
      EXPECT_TRUE(window.isDone(frmOutlookSync::kExport));
    });
  }
  writeExportList("10\r\n7\r\n8\r\n");  // a card that is not there ends the run
  toolkit->messages.clear();
  open([&](frmOutlookSync& window) {
    window.Combo1.setIndex(frmOutlookSync::kExport);
    window.Command2.press();
    EXPECT_FALSE(window.isDone(frmOutlookSync::kExport));
  });
  EXPECT_THAT(messageTexts(),
              ElementsAre("데이터 연결이 실패되었습니다!\r\n선택한 명함이 데이터베이스에 없습니다: "
                          "0000008"));
}

}  // namespace
}  // namespace vlout::ui
