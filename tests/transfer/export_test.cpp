#include "transfer/export.h"

#include "tests/transfer/transfer_test.h"

namespace vlout::transfer {
namespace {

using ExportTest = TransferTest;

TEST_F(ExportTest, AddsEveryCardOnceAndThenHasNothingToDo) {
  addCard(
      1, {{"FullName", "홍길동"}, {"cellphone", "010-1"}, {"Last_moddate", "2025/01/01 00:00:00"}});
  addCard(2, {{"FullName", "O'Brien, Pat"}});
  execute("INSERT INTO tbl_namecard(i_idx,p_idx,FullName) VALUES(3,9,'숨은 카드')");
  EXPECT_THAT(exportAll(), ElementsAre("아웃룩 연결|100%|성공", "데이터 구성|100%|완료",
                                       "연락처 비교/갱신|100%|완료", "연락처 추가|100%|완료",
                                       "추가→(O'Brien, Pat)|100%|완료", "추가→(홍길동)|100%|완료",
                                       "내보내기 완료|추가=2/갱신=0|"));
  EXPECT_EQ(toolkit->messages.back().text, "내보내기를 완료하였습니다.\r\n추가=2/갱신=0");
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
                 "N:홍;길동;;;\r\nTITLE:연락처 직함\r\nORG:(주)가나;연구소\r\nNOTE:it's\r\n"
                 "ADR;TYPE=WORK:;;테헤란로;강남구;서울;;대한민국\r\nX-KEEP:me\r\n");
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
    EXPECT_THAT(text,
                AllOf(HasSubstr("X-KEEP:me"), HasSubstr("BDAY:1980-01-02"), HasSubstr("ORG:㈜가나"),
                      HasSubstr("X-VLID:1"), Not(HasSubstr("02-1"))));
    EXPECT_EQ(valueOf(1, "Last_moddate"), valueOf(1, "VLLastsync_date"));
    EXPECT_THAT(exportAll(), Contains("내보내기 완료|추가=0/갱신=0|"));
  }
}

TEST_F(ExportTest, ARecordThatFailsIsNamedAndTheOthersGoOn) {
  addCard(1, {{"FullName", "가"}, {"JobTitle", "새 직함"}});
  addCard(2, {{"FullName", "나"}});
  setStamps(1, "2025/02/01 00:00:00");
  writeContact("a.vcf", "N:;가;;;\r\nX-VLID:1\r\n");
  addCard(3, {{"FullName", "다"}});
  writeContact("b.vcf", "N:;다;;;\r\n");
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

}  // namespace
}  // namespace vlout::transfer
