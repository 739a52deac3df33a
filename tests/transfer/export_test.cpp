#include "transfer/export.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "outlook/pairing.h"
#include "tests/support/component_fixture.h"
#include "text/ascii.h"

namespace vlout::transfer {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using ui::frmOutlookSync;

class ExportTest : public tests::ComponentFixture {
 protected:
  std::vector<std::string> exportAll(const std::function<void(frmOutlookSync&)>& prepare =
                                         [](frmOutlookSync&) {}) {
    return run(frmOutlookSync::kExport, prepare);
  }
  std::string summary() const { return toolkit->messages.back().text; }
};

TEST_F(ExportTest, AddsEveryCardOnceAndThenHasNothingToDo) {
  addCard(
      1, {{"FullName", "홍길동"}, {"cellphone", "010-1"}, {"Last_moddate", "2025/01/01 00:00:00"}});
  addCard(2, {{"FullName", "O'Brien, Pat"}});
  execute("INSERT INTO tbl_namecard(i_idx,p_idx,FullName) VALUES(3,9,'숨은 카드')");
  EXPECT_THAT(exportAll(), ElementsAre("아웃룩 연결|100%|성공", "데이터 구성|100%|완료",
                                       "연락처 비교/갱신|100%|완료", "연락처 추가|100%|완료",
                                       "추가→(O'Brien, Pat)|100%|완료", "추가→(홍길동)|100%|완료",
                                       "내보내기 완료|추가=2/갱신=0|"));
  EXPECT_EQ(summary(), "내보내기를 완료하였습니다.\r\n추가=2/갱신=0");
  EXPECT_EQ(toolkit->messages.back().icon, MessageIcon::Information);
  EXPECT_EQ(valueOf(1, "Last_moddate"), valueOf(1, "Outlook_modate"));
  EXPECT_EQ(valueOf(1, "Last_moddate"), valueOf(1, "VLLastsync_date"));
  const auto store = openContacts();
  ASSERT_EQ(store->count(), 2U);

  const auto files = cardFiles();
  const std::string before = contactText(files[0]) + contactText(files[1]);
  EXPECT_THAT(exportAll(), Contains("내보내기 완료|추가=0/갱신=0|"));
  EXPECT_EQ(cardFiles(), files);
  EXPECT_EQ(contactText(files[0]) + contactText(files[1]), before);
}

TEST_F(ExportTest, PairsContactsWithoutAUsableKeyByPerson) {
  struct Case {
    const char* name;
    const char* lines;
    bool byPerson;  // merged with the card; otherwise the card goes out as a second contact
    std::string card = "홍 길동";
  };
  const std::vector<Case> cases{
      {"same number", "N:홍;길동;;;\r\nTEL;TYPE=CELL:010 1234\r\n", true},
      {"name in one word", "N:;홍길동;;;\r\nTEL;TYPE=CELL:0101234\r\n", true},
      {"another number", "N:홍;길동;;;\r\nTEL;TYPE=CELL:010-9\r\n", false},
      {"Latin name", "N:Kim;Minsu;;;\r\nTEL;TYPE=CELL:010-1234\r\n", true, "Minsu Kim"},
      {"family name first", "N:Kim;Minsu;;;\r\nTEL;TYPE=CELL:010-1234\r\n", true, "Kim, Minsu"},
      {"nobody", "N:김;철수;;;\r\nTEL;TYPE=CELL:010-1234\r\n", false},
      // A key of no card in the list, but the person is there: left alone.
      {"stray key", "N:홍;길동;;;\r\nTEL;TYPE=CELL:010-1234\r\nX-VLID:99\r\n", false},
      {"key that is no number", "N:김;철수;;;\r\nX-VLID:1 OR 1=1\r\n", false},
  };
  for (const Case& c : cases) {
    startAfresh();
    addCard(1, {{"FullName", c.card}, {"cellphone", "010-1234"}, {"JobTitle", "부장"}});
    writeContact("a.vcf", c.lines, "2025/01/01 00:00:00");
    const std::string before = contactText("a.vcf");
    const auto lines = exportAll();
    EXPECT_EQ(cardFiles().size(), c.byPerson ? 1U : 2U) << c.name;
    if (c.byPerson) {
      EXPECT_THAT(lines, Contains("↔갱신(" + c.card + ")|100%|완료")) << c.name;
      EXPECT_THAT(contactText("a.vcf"), AllOf(HasSubstr("X-VLID:1\r\n"), HasSubstr("부장")));
    } else {
      EXPECT_THAT(lines, Contains("추가→(홍 길동)|100%|완료")) << c.name;
      EXPECT_EQ(contactText("a.vcf"), before) << c.name;
    }
  }
}

TEST_F(ExportTest, ADoubleDoesNotTakeTheRowOfTheContactWithTheKey) {
  addCard(1, {{"FullName", "홍길동"}, {"cellphone", "010-1"}});
  writeContact("a.vcf", "N:홍;길동;;;\r\nTEL;TYPE=CELL:010-1\r\nNOTE:double\r\n",
               "2030/01/01 00:00:00");
  writeContact("b.vcf", "N:홍;길동;;;\r\nTEL;TYPE=CELL:010-1\r\nX-VLID:1\r\n",
               "2030/01/01 00:00:00");
  EXPECT_THAT(exportAll(), Contains("내보내기 완료|추가=0/갱신=0|"));
  EXPECT_THAT(contactText("a.vcf"), Not(HasSubstr("X-VLID")));
  EXPECT_EQ(valueOf(1, "Memo_"), "NULL");
}

TEST_F(ExportTest, MergesFieldByFieldAndLosesNothing) {
  for (const bool contactNewer : {false, true}) {
    startAfresh();
    addCard(1, {{"FullName", "홍길동"},
                {"Last_moddate", contactNewer ? "2024/01/01 00:00:00" : "2025/06/01 00:00:00"},
                {"CompanyName", "(주)가나"},
                {"JobTitle", "행의 직함"},
                {"company_fax1", "02-1"},
                {"home_zipcode", "11111"},
                {"company_addr", "서울 강남구"},
                {"Birthday", "1980/1/2"}});
    writeContact("a.vcf",
                 "N:홍;길동;;;\r\nTITLE:연락처 직함\r\nORG:㈜가나;연구소\r\nNOTE:it's\r\n"
                 "ADR;TYPE=WORK:;;테헤란로;강남구;서울;;대한민국\r\nX-KEEP:me\r\n",
                 "2025/01/01 00:00:00");
    EXPECT_THAT(exportAll(), Contains("내보내기 완료|추가=0/갱신=1|"));
    EXPECT_EQ(valueOf(1, "JobTitle"), contactNewer ? "연락처 직함" : "행의 직함");
    EXPECT_EQ(valueOf(1, "company_addr"), contactNewer ? "서울 강남구 테헤란로" : "서울 강남구");
    EXPECT_EQ(valueOf(1, "CompanyName"), "㈜가나");
    EXPECT_EQ(valueOf(1, "Department"), "연구소");
    EXPECT_EQ(valueOf(1, "Memo_"), "it's");
    EXPECT_EQ(valueOf(1, "Birthday"), "1980-01-02");
    EXPECT_EQ(valueOf(1, "Anniversary"), "NULL");
    EXPECT_EQ(valueOf(1, "home_zipcode"), "11111");
    EXPECT_EQ(valueOf(1, "OutlookSync"), "1");
    // The contact keeps its fax numbers, the card its own.
    EXPECT_EQ(valueOf(1, "company_fax1"), "02-1");
    const std::string text = contactText("a.vcf");
    EXPECT_THAT(text, AllOf(HasSubstr("X-KEEP:me"), HasSubstr("BDAY:1980-01-02"),
                            HasSubstr("X-VLID:1"), Not(HasSubstr("02-1"))));
    EXPECT_EQ(valueOf(1, "Last_moddate"), valueOf(1, "VLLastsync_date"));
    EXPECT_THAT(exportAll(), Contains("내보내기 완료|추가=0/갱신=0|"));
  }
}

TEST_F(ExportTest, ADeletedContactComesBackAndListsArePassedOver) {
  addCard(1, {{"FullName", "홍길동"}});
  exportAll();
  std::filesystem::remove(contactsFolder() / cardFiles().at(0));
  writeContact("list.vcf", "X-ADDRESSBOOKSERVER-KIND:group\r\nFN:홍길동\r\nX-VLID:1\r\n",
               "2020/01/01 00:00:00");
  EXPECT_THAT(exportAll(), Contains("추가→(홍길동)|100%|완료"));
  ASSERT_EQ(cardFiles().size(), 2U);
}

TEST_F(ExportTest, BadContactsAreReportedAndDoNoHarm) {
  addCard(1, {{"FullName", "홍길동"}});
  writeContact("a.vcf", "N:홍;길동;;;\r\nX-VLID:1\r\n", "2025/01/01 00:00:00");
  writeContact("b.vcf", "N:홍;길동;;;\r\nX-VLID:1\r\n", "2025/01/01 00:00:00");
  writeContact("c.vcf", "N:김;철수;;;\r\nX-VLID:일곱\r\n", "2025/01/01 00:00:00");
  addCard(2, {{"FullName", "이영희"}});
  tests::writeFile(contactsFolder() / "d.vcf", "BEGIN:VCARD\r\nFN:cut off");
  const std::string before = contactText("b.vcf") + contactText("c.vcf") + contactText("d.vcf");
  const auto lines = exportAll();
  EXPECT_THAT(lines, Contains(AllOf(HasSubstr("d.vcf"), HasSubstr("|0%|제외"))));
  EXPECT_THAT(lines, Contains("VLID 중복(홍길동): 1|0%|제외"));
  EXPECT_THAT(lines, Contains("VLID 오류(김철수): 일곱|0%|제외"));
  EXPECT_THAT(lines, Contains("내보내기 완료|추가=1/갱신=0|"));
  EXPECT_EQ(contactText("b.vcf") + contactText("c.vcf") + contactText("d.vcf"), before);
}

TEST_F(ExportTest, ARecordThatFailsIsNamedAndTheOthersGoOn) {
  addCard(1, {{"FullName", "가"}, {"JobTitle", "새 직함"}});
  addCard(2, {{"FullName", "나"}});
  setStamps(1, "2025/02/01 00:00:00", "2025/01/01 00:00:00", "2025/01/01 00:00:00");
  writeContact("a.vcf", "N:;가;;;\r\nX-VLID:1\r\n", "2025/01/01 00:00:00");
  addCard(3, {{"FullName", "다"}});
  writeContact("b.vcf", "N:;다;;;\r\n", "2025/01/01 00:00:00");
  bool changed = false;
  toolkit->onPump = [&] {  // another program writes the contacts while the run is going on
    if (!changed) writeContact("a.vcf", "N:;남;;;\r\nX-VLID:1\r\n", "2025/01/01 00:00:01");
    if (!changed) writeContact("b.vcf", "N:;라;;;\r\n", "2025/01/01 00:00:01");
    changed = true;
  };
  const auto lines = exportAll();
  EXPECT_THAT(lines, Contains(AllOf(StartsWith("실패→(가): "), HasSubstr("a.vcf"))));
  EXPECT_THAT(lines, Contains(AllOf(StartsWith("실패→(다): "), HasSubstr("b.vcf"))));
  EXPECT_THAT(lines, Contains("내보내기 완료|추가=1/갱신=0|"));
  EXPECT_THAT(contactText("a.vcf"), HasSubstr("남"));
  EXPECT_EQ(cardFiles().size(), 3U);  // no second contact for the cards that failed
  EXPECT_EQ(valueOf(1, "Last_moddate"), "2025/02/01 00:00:00");
}

// Pairs without anything to do are read together; what is sent is what the row says now.
TEST_F(ExportTest, ARowThatAnotherProgramChangesMeanwhileIsSentAsItIs) {
  for (const int id : {1, 2}) addCard(id, {{"FullName", "사람" + std::to_string(id)}});
  exportAll();
  execute("UPDATE tbl_namecard SET JobTitle='가',Last_moddate='2040/01/01 00:00:00'");
  // The pair that comes first has nothing to do.
  const std::string first = contactText(cardFiles().front());
  execute("UPDATE tbl_namecard SET Last_moddate=Outlook_modate where i_idx=" +
          std::string(1, first.at(first.find("X-VLID:") + 7)));
  int pumps = 0;
  toolkit->onPump = [&] {
    if (++pumps == 2) execute("UPDATE tbl_namecard SET JobTitle='나'");
  };
  exportAll();
  toolkit->onPump = nullptr;
  EXPECT_THAT(contactText(cardFiles().back()), HasSubstr("TITLE:나\r\n"));
}

TEST_F(ExportTest, StopsAtTheNextRecordWithEverythingSoFarInOrder) {
  for (int i = 1; i <= 5; ++i) addCard(i, {{"FullName", "사람" + std::to_string(i)}});
  int pumps = 0;
  std::vector<std::string> lines;
  bool done = true;
  bool enabled = false;
  open([&](frmOutlookSync& window) {
    toolkit->onPump = [&] {
      if (++pumps == 3) window.requestClose();
    };
    window.Combo1.setIndex(frmOutlookSync::kExport);
    window.Combo2.setIndex(frmOutlookSync::kAllCards);
    window.ListView1.events.rowAdded = [&](std::size_t) { EXPECT_TRUE(window.isLoaded()); };
    window.Command2.press();
    EXPECT_FALSE(window.isLoaded());  // the close was held until the run had ended
    for (const auto& row : window.ListView1.rows())
      lines.push_back(row.cells[0] + "|" + row.cells[2]);
    done = window.isDone(frmOutlookSync::kExport);
    enabled = window.Command2.enabled();
  });
  EXPECT_FALSE(done);
  EXPECT_TRUE(enabled);
  EXPECT_THAT(lines, Contains("연락처 추가|중지"));
  EXPECT_THAT(lines, Contains("내보내기 중지|중지"));
  EXPECT_THAT(toolkit->messages, IsEmpty());
  EXPECT_EQ(cardFiles().size(), 2U);
  toolkit->onPump = nullptr;
  EXPECT_THAT(exportAll(), Contains("내보내기 완료|추가=3/갱신=0|"));
  EXPECT_EQ(cardFiles().size(), 5U);
}

}  // namespace
}  // namespace vlout::transfer
