#include "transfer/sync.h"

#include <algorithm>
#include <sys/stat.h>

#include "tests/transfer/transfer_test.h"

namespace vlout::transfer {
namespace {

using ui::frmOutlookSyncModify;

class SyncTest : public TransferTest {
 protected:
  // Card `id` and its contact in a file of the same name; `sides` tells which of them was edited
  // after the last transfer, the later one last: "", "r", "c", "rc", "cr".
  void makePair(int id, const std::string& sides) {
    const std::string name = std::to_string(id);
    addCard(id, {{"FullName", "이름" + name}, {"JobTitle", "행"}, {"company_fax1", "02-행"}});
    const auto time = [&](char side) -> std::string {
      const std::size_t place = sides.find(side);
      if (place == std::string::npos) return "2025/01/01 00:00:00";
      return place == 0 ? "2025/01/02 00:00:00" : "2025/01/03 00:00:00";
    };
    setStamps(id, time('r'));
    writeContact(name + ".vcf",
                 "N:이;름" + name +
                     ";;;\r\nTITLE:연락처\r\nTEL;TYPE=WORK,FAX:02-연락처\r\nX-VLID:" + name +
                     "\r\n",
                 time('c'));
  }
};

TEST_F(SyncTest, GoesInTheDirectionThatChanged) {
  makePair(1, "");
  makePair(2, "r");
  makePair(3, "c");
  addCard(4, {{"FullName", "짝 없는 행"}});
  writeContact("5.vcf", "N:짝;없음;;;\r\n", "2025/01/05 00:00:00");
  writeContact("6.vcf", "N:다른;행;;;\r\nX-VLID:99\r\n", "2025/01/05 00:00:00");
  EXPECT_THAT(sync(), ElementsAre("아웃룩 연결|100%|성공", "데이터 구성|100%|완료",
                                  "연락처 비교/갱신|100%|완료", "아웃룩→이름2|100%|완료",
                                  "벨모라→이름3|100%|완료", "갱신완료|벨모라=1/아웃룩=1|"));
  EXPECT_EQ(toolkit->messages.back().text, "상호갱신 작업이 완료되었습니다.\r\n벨모라=1/아웃룩=1");
  EXPECT_THAT(contactText("2.vcf"), HasSubstr("TITLE:행"));
  EXPECT_THAT(contactText("2.vcf"), HasSubstr("02-연락처"));    // the fax is protected
  EXPECT_THAT(contactText("2.vcf"), HasSubstr("N:이;름2;;;"));  // the name is the contact's own
  EXPECT_EQ(valueOf(3, "JobTitle"), "연락처");
  EXPECT_EQ(valueOf(3, "FullName"), "이름3");
  EXPECT_EQ(valueOf(3, "OutlookSync"), "0");
  for (const int id : {2, 3}) {
    EXPECT_EQ(valueOf(id, "Last_moddate"), valueOf(id, "VLLastsync_date"));
    EXPECT_EQ(valueOf(id, "Last_moddate"), valueOf(id, "Outlook_modate"));
  }
  EXPECT_EQ(cardFiles().size(), 5U);
  EXPECT_THAT(sync(), Contains("갱신완료|벨모라=0/아웃룩=0|"));
  EXPECT_EQ(valueOf(1, "JobTitle"), "행");
}

// Cards that share a file share its time. What was seen of each tells which of them has changed,
// also when a file of one card becomes one of two, or the other way round.
TEST_F(SyncTest, ACardDoesNotChangeWithAnotherOfItsFile) {
  struct Case {
    bool isShared, staysShared, isRemembered;
  };
  for (const Case& c : {Case{true, true, true}, Case{true, true, false}, Case{false, true, true},
                        Case{true, false, true}}) {
    startAfresh();
    // Whatever has the names of our own files is gone past, and stays.
    const auto obstacle = [&](const char* name) { return contactsFolder() / name; };
    ASSERT_EQ(mkfifo(obstacle(".vloutsync-journal").c_str(), 0600), 0);
    std::filesystem::create_directory(obstacle(".vloutsync-journal.1"));
    std::filesystem::create_symlink("precious", obstacle(".vloutsync-journal.2"));
    std::filesystem::create_directory(folder() / "history");
    static_cast<void>(mkfifo((folder() / "history" / "contacts.index.new").c_str(), 0600));
    makePair(1, "");
    makePair(2, "");
    const std::string first = contactText("1.vcf");
    std::string second = contactText("2.vcf");
    const auto write = [&](bool isShared, const char* time) {
      for (const char* name : {"1.vcf", "2.vcf"}) {
        const auto file = contactsFolder() / name;
        const bool isFirst = name[0] == '1';
        std::filesystem::remove(file);
        if (!isFirst && isShared) continue;
        tests::writeFile(file, !isFirst ? second : isShared ? first + second : first);
        tests::setModified(file, time);
      }
    };
    write(c.isShared, "2025/01/01 00:00:00");
    EXPECT_THAT(sync(), Contains("갱신완료|벨모라=0/아웃룩=0|"));
    if (!c.isRemembered) std::filesystem::remove(folder() / "history" / "contacts.index");
    second.replace(second.find("TITLE:연락처"), std::string("TITLE:연락처").size(), "TITLE:밖에서");
    write(c.staysShared, "2025/01/02 00:00:00");
    setStamps(1, "2025/01/03 00:00:00");
    const auto lines = sync();
    EXPECT_EQ(valueOf(2, "JobTitle"), "밖에서");
    EXPECT_THAT(lines,
                Contains(c.isRemembered ? "아웃룩→이름1|100%|완료" : "→충돌←(이름1)|0%|제외"));
    EXPECT_THAT(sync(), Contains("갱신완료|벨모라=0/아웃룩=0|"));
    EXPECT_EQ(tests::fileNames(contactsFolder()).size(), c.staysShared ? 4U : 5U);
  }
}

TEST_F(SyncTest, OfSeveralContactsWithOneKeyOneIsThePair) {
  struct Case {
    const char *firstName, *secondName;  // of the contacts a and b
    const char* secondTime;              // the row was last transferred at 2025/01/01
    char pair;
  };
  for (const Case& c : {Case{"다른사람", "다른사람", "2025/01/01 00:00:00", 'b'},
                        Case{"다른사람", "이름1", "2024/12/31 00:00:00", 'b'},
                        Case{"다른사람", "남", "2024/12/31 00:00:00", 'a'},
                        Case{"이름1", "이름1", "2024/12/31 00:00:00", 'a'}}) {
    for (const auto mode :
         {frmOutlookSync::kSync, frmOutlookSync::kExport, frmOutlookSync::kImport}) {
      startAfresh();
      makePair(1, "r");
      std::filesystem::remove(contactsFolder() / "1.vcf");
      const auto write = [&](const char* file, const char* name, const char* time) {
        writeContact(file, std::string("N:;") + name + ";;;\r\nTITLE:연락처\r\nX-VLID:1\r\n", time);
      };
      write("a.vcf", c.firstName, "2024/12/30 00:00:00");
      write("b.vcf", c.secondName, c.secondTime);
      const std::string other = c.pair == 'a' ? "b.vcf" : "a.vcf";
      const std::string before = contactText(other);
      const auto lines = run(mode);
      EXPECT_EQ(contactText(other), before) << c.secondName << mode;
      EXPECT_EQ(cardFiles().size(), 2U);
      const std::string report =
          std::string("VLID 중복(") + (c.pair == 'a' ? c.secondName : c.firstName) + "): 1|0%|제외";
      EXPECT_EQ(std::count(lines.begin(), lines.end(), report),
                mode == frmOutlookSync::kSync ? 0 : 1);
      if (mode == frmOutlookSync::kImport) continue;  // the row is the newer side
      EXPECT_THAT(contactText(std::string(1, c.pair) + ".vcf"), HasSubstr("TITLE:행"));
    }
  }
}

TEST_F(SyncTest, StopsFromTheWindowAndFromTheUserAlike) {
  for (const bool fromWindow : {true, false}) {
    startAfresh();
    for (const int id : {1, 2, 3}) makePair(id, id == 2 ? "rc" : "r");
    toolkit->dialog = [&](ui::Form& form) {
      auto& window = dynamic_cast<frmOutlookSyncModify&>(form);
      (fromWindow ? window.Command6 : window.Command4).press();
    };
    open([&](frmOutlookSync& window) {
      int pumps = 0;
      toolkit->onPump = [&] {
        if (++pumps == 3 && !fromWindow) window.requestClose();
      };
      window.Combo1.setIndex(frmOutlookSync::kSync);
      window.Command2.press();
      toolkit->onPump = nullptr;
      EXPECT_EQ(window.ListView1.rows().back().cells[0], "갱신중지");
      EXPECT_FALSE(window.isDone(frmOutlookSync::kSync));
      EXPECT_EQ(window.ListView2.size(), fromWindow ? 2U : 1U);  // with the pair it stopped at
    });
    EXPECT_EQ(toolkit->messages.back().text, "상호갱신 작업이 중지되었습니다!");
    EXPECT_THAT(contactText("1.vcf"), HasSubstr("TITLE:행"));
    EXPECT_THAT(contactText("3.vcf"), HasSubstr("TITLE:연락처"));
  }
}

TEST_F(SyncTest, ASaveThatFailsIsShownAndCountsNothing) {
  makePair(1, "rc");
  toolkit->dialog = [](ui::Form& form) {
    auto& window = dynamic_cast<frmOutlookSyncModify&>(form);
    window.Check1.setValue(1);
    window.Text3.setText("a' ,[FullName]='남의 이름");
    window.Command1.press();
  };
  EXPECT_THAT(sync(), Contains("갱신완료|벨모라=0/아웃룩=0|"));
  EXPECT_THAT(toolkit->messages.front().text, StartsWith("벨모라 저장실패!\r\n"));
  EXPECT_EQ(valueOf(1, "FullName") + valueOf(1, "JobTitle"), "이름1행");
  EXPECT_THAT(contactText("1.vcf"), HasSubstr("TITLE:연락처"));
  // The card's side is written, the contact's is not, for another program has edited it meanwhile:
  // still a conflict, with the dates of before.
  const auto dates = [&] {
    return valueOf(1, "Last_moddate") + valueOf(1, "Outlook_modate") +
           valueOf(1, "VLLastsync_date");
  };
  const std::string before = dates();
  int asked = 0;
  toolkit->dialog = [&](ui::Form& form) {
    auto& window = dynamic_cast<frmOutlookSyncModify&>(form);
    EXPECT_EQ(window.Text4.text(), ++asked == 1 ? "행" : "고침");
    window.Check1.setValue(1);
    window.Text4.setText("고침");
    if (asked == 1) tests::setModified(contactsFolder() / "1.vcf", "2025/01/05 00:00:00");
    window.Command1.press();
  };
  EXPECT_THAT(sync(), Contains(AllOf(StartsWith("실패→(이름1): "), HasSubstr("1.vcf"))));
  EXPECT_EQ(dates(), before);
  EXPECT_THAT(sync(), Contains("갱신완료|벨모라=0/아웃룩=1|"));
  EXPECT_EQ(asked, 2);
}

TEST_F(SyncTest, RefusesWithoutCards) {
  EXPECT_THAT(sync(), Not(Contains(HasSubstr("갱신완료"))));
  EXPECT_EQ(toolkit->messages.back().text, "연결할 데이터가 없습니다!");
}

}  // namespace
}  // namespace vlout::transfer
