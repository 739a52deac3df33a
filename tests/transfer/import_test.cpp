#include "transfer/import.h"

#include "tests/transfer/transfer_test.h"
#include "text/ascii.h"

namespace vlout::transfer {
namespace {

using ImportTest = TransferTest;

TEST_F(ImportTest, NewRowsTakeTheNextNumbers) {
  // Card 2 was deleted; its contact still carries its number, and is about to get another.
  addCard(1, {{"FullName", "이영희"}});
  writeContact("a.vcf", "N:김;철수;;;\r\nTEL;TYPE=CELL:1\r\n");
  writeContact("b.vcf", "N:홍;길동;;;\r\nTEL;TYPE=CELL:2\r\nX-VLID:2\r\n");
  const auto lines = run(frmOutlookSync::kImport, [&](frmOutlookSync& window) {
    toolkit->onPump = [&] { window.requestClose(); };  // which does not stop an import
  });
  toolkit->onPump = nullptr;
  EXPECT_THAT(lines, Contains("가져오기 완료|추가=2/갱신=0|"));
  EXPECT_THAT(contactText("a.vcf"), HasSubstr("X-VLID:2\r\n"));
  EXPECT_THAT(contactText("b.vcf"), HasSubstr("X-VLID:3\r\n"));
  EXPECT_EQ(valueOf(2, "FullName") + valueOf(3, "FullName"), "김철수홍길동");
  EXPECT_THAT(importAll(), Contains("가져오기 완료|추가=0/갱신=0|"));
}

TEST_F(ImportTest, ANumberIsTakenWhileAContactMayCarryIt) {
  // Card 2 was deleted. Its contact changes before its turn to be numbered anew, which fails.
  for (const bool carrierFirst : {true, false}) {
    startAfresh();
    addCard(1, {{"FullName", "이영희"}});
    const std::string carrier = carrierFirst ? "a.vcf" : "b.vcf";
    const std::string other = carrierFirst ? "b.vcf" : "a.vcf";
    const std::string lines = "N:홍;길동;;;\r\nTEL;TYPE=CELL:2\r\nX-VLID:2\r\n";
    writeContact(carrier, lines);
    writeContact(other, "N:김;철수;;;\r\nTEL;TYPE=CELL:1\r\n");
    int pumps = 0;
    toolkit->onPump = [&] {
      if (++pumps == 3) writeContact(carrier, lines, "2025/01/01 00:00:01");
    };
    EXPECT_THAT(importAll(), AllOf(Contains(StartsWith("실패→(홍길동)")),
                                   Contains("가져오기 완료|추가=1/갱신=0|")));
    toolkit->onPump = nullptr;
    EXPECT_THAT(contactText(other), HasSubstr("X-VLID:3\r\n")) << carrierFirst;
    EXPECT_THAT(importAll(), Contains("가져오기 완료|추가=1/갱신=0|"));
  }
}

TEST_F(ImportTest, ADoubleIsLeftAloneAndItsNumberToo) {
  // Two cards of one person were imported and the second deleted: its contact is a double now, and
  // keeps the number that the next new row would get.
  addCard(1, {{"FullName", "홍길동"}, {"cellphone", "1"}});
  setStamps(1, "2025/01/01 00:00:00", "", "");
  writeContact("a.vcf", "N:홍;길동;;;\r\nTEL;TYPE=CELL:1\r\nX-VLID:1\r\n");
  writeContact("b.vcf", "N:홍;길동;;;\r\nTEL;TYPE=CELL:1\r\nX-VLID:2\r\n");
  writeContact("c.vcf", "N:박;새롬;;;\r\nTEL;TYPE=CELL:3\r\n");
  EXPECT_THAT(importAll(), Contains("가져오기 완료|추가=1/갱신=0|"));
  EXPECT_THAT(contactText("c.vcf"), HasSubstr("X-VLID:3\r\n"));

  startAfresh();
  addCard(1, {{"FullName", "홍길동"}, {"cellphone", "1"}});
  writeContact("a.vcf", "N:홍;길동;;;\r\nTEL;TYPE=CELL:1\r\nNOTE:one\r\n");
  writeContact("b.vcf", "N:홍;길동;;;\r\nTEL;TYPE=CELL:1\r\nNOTE:two\r\n");
  EXPECT_THAT(importAll(), AllOf(Contains("동일인 중복(홍길동): 1|0%|제외"),
                                 Contains("가져오기 완료|추가=0/갱신=1|")));
  EXPECT_EQ(valueOf(1, "Memo_"), "one");
  EXPECT_THAT(contactText("b.vcf"), AllOf(HasSubstr("NOTE:two"), Not(HasSubstr("X-VLID"))));
}

TEST_F(ImportTest, WhatCannotBeInsertedIsReportedAndKeepsNoNumber) {
  execute("CREATE UNIQUE INDEX one_each ON tbl_namecard (JobTitle)");
  addCard(1, {{"FullName", "사장"}, {"JobTitle", "나"}});
  for (const std::string name : {"가", "나", "다"}) {
    const std::string lines = text::replaceAll("N:;@;;;\r\nTITLE:@\r\n", "@", name);
    writeContact(name + ".vcf", lines);
  }
  auto lines = importAll();
  EXPECT_THAT(lines, Contains(AllOf(StartsWith("실패→(나): "), HasSubstr("JobTitle"))));
  EXPECT_THAT(lines, Contains("가져오기 완료|추가=2/갱신=0|"));
  EXPECT_THAT(contactText("나.vcf"), Not(HasSubstr("X-VLID:3")));
  EXPECT_EQ(valueOf(3, "FullName"), "다");
  execute("DROP INDEX one_each");
  execute("UPDATE tbl_namecard SET i_idx=32767 where i_idx=1");
  lines = importAll();
  EXPECT_THAT(lines, Contains(AllOf(StartsWith("실패→(나): "), HasSubstr("32767"))));
  EXPECT_THAT(lines, Contains("가져오기 완료|추가=0/갱신=0|"));
  EXPECT_EQ(rows(), 3U);
}

TEST_F(ImportTest, WhatCannotBeReadOfAContactIsWrittenNeitherWayAndTheRestIs) {
  const std::string lost = "ORG;CHARSET=EUC-KR:\xB1\r\nBDAY;CHARSET=EUC-KR:\xFF\r\n";
  const std::string company = "회사";
  struct Case {
    const char* name;
    frmOutlookSync::Mode mode;
    std::string lines;  // beside those that cannot be read
    std::string company;
    const char* contact;  // its time; the row's is 2025/01/02
    const char* title;    // what the row has then
    const char* line;
  };
  const std::vector<Case> cases{
      {"import by key", frmOutlookSync::kImport, "N:홍;길동\r\nTITLE:새\r\nX-VLID:7\r\n", company,
       "2025/01/03 00:00:00", "새", "←갱신(홍길동)|100%|완료"},
      {"import by person", frmOutlookSync::kImport, "N:홍;길동\r\nTITLE:새\r\n", company,
       "2025/01/03 00:00:00", "새", "↔갱신(홍길동)|100%|완료"},
      {"sync to the row, nameless", frmOutlookSync::kSync,
       "N;CHARSET=EUC-KR:\xB1\r\nTITLE:새\r\nX-VLID:7\r\n", company, "2025/01/03 00:00:00", "새",
       "벨모라→홍길동|100%|완료"},
      {"sync to the contact", frmOutlookSync::kSync, "N:홍;길동\r\nX-VLID:7\r\n", "",
       "2025/01/01 00:00:00", "행", "아웃룩→홍길동|100%|완료"},
      {"import, whose is not known", frmOutlookSync::kImport, "N;CHARSET=EUC-KR:\xB1\r\n", company,
       "2025/01/03 00:00:00", "행", "실패→(#1): a.vcf: N의 글자를 읽을 수 없습니다|0%|실패"},
  };
  for (const Case& c : cases) {
    startAfresh();
    addCard(7, {{"FullName", "홍길동"},
                {"CompanyName", c.company},
                {"Birthday", "1980-03-22"},
                {"JobTitle", "행"}});
    const bool sync = c.mode == frmOutlookSync::kSync;
    setStamps(7, "2025/01/02 00:00:00", sync ? c.contact : "2025/01/02 00:00:00",
              "2025/01/02 00:00:00");
    writeContact("a.vcf", lost + c.lines, c.contact);
    const auto lines = run(c.mode);
    EXPECT_THAT(lines, Contains(c.line)) << c.name;
    const auto notice = HasSubstr("a.vcf 3행: ORG의 글자를 EUC-KR");
    EXPECT_THAT(lines, Contains(notice).Times(sync ? 0 : 1)) << c.name;
    EXPECT_EQ(valueOf(7, "CompanyName"), c.company) << c.name;
    EXPECT_EQ(valueOf(7, "Birthday"), "1980-03-22") << c.name;
    EXPECT_EQ(valueOf(7, "JobTitle"), c.title) << c.name;
    EXPECT_EQ(rows(), 1U) << c.name;
    EXPECT_EQ(contactText("a.vcf").find(c.company.empty() ? lost.substr(0, 22) : lost), 26U)
        << c.name;
  }
}

}  // namespace
}  // namespace vlout::transfer
