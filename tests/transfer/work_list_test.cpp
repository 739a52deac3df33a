#include "transfer/work_list.h"

#include "tests/transfer/transfer_test.h"

namespace vlout::transfer {
namespace {

TEST(WorkList, FindsTheSamePersonAndNoOther) {
  struct Case {
    std::vector<WorkListRow> rows;  // numbered from 1; "taken" stands for a row with its contact
    Person person;
    const char* found;  // the number, "taken" behind it when the row has its contact; or ""
    Evidence evidence = Evidence::NameAlone;
  };
  const auto row = [](const char* name, const char* mobile, const char* email,
                      const char* taken = "") {
    return WorkListRow{.name = name, .mobile = mobile, .email = email, .folderName = taken};
  };
  const std::vector<Case> cases{
      {{row("홍길동", "0101", "a@x.kr")}, {"홍길동", "010-1", "A@X.KR"}, "1"},
      // A value that differs is outweighed by one that is equal.
      {{row("홍길동", "0101", "a@x.kr")}, {"홍길동", "010-1", "b@x.kr"}, "1"},
      {{row("홍길동", "0101", "a@x.kr")}, {"홍길동", "010-2", "a@x.kr"}, "1"},
      {{row("홍길동", "0101", "a@x.kr")}, {"홍길동", "010-2", ""}, ""},
      // Nothing that both have speaks neither for it nor against it.
      {{row("홍길동", "0101", "")}, {"홍길동", "", "b@x.kr"}, "1"},
      {{row("홍길동", "", "")}, {"홍길동", "010-1", "b@x.kr"}, "1"},
      {{row("홍길동", "", "")}, {"홍길동", "", ""}, "1"},
      {{row("홍길동", "", "")}, {"홍길동", "", ""}, "", Evidence::EqualValue},
      {{row("홍길순", "0101", "")}, {"홍길동", "010-1", ""}, ""},
      {{row("홍, 길동", "0101", "")}, {"홍길동", "010-1", ""}, "1"},
      {{row("", "", "")}, {"", "", ""}, ""},  // nobody is nobody's double
      {{row("", "0101", "")}, {"", "010-1", ""}, "1"},
      // Of several rows the one that is most alike, else the only one that may be it.
      {{row("홍길동", "", ""), row("홍길동", "0101", "")}, {"홍길동", "0101", ""}, "2"},
      {{row("홍길동", "0109", "a@x.kr"), row("홍길동", "0101", "a@x.kr")},
       {"홍길동", "0101", "a@x.kr"},
       "2"},
      {{row("홍길동", "0109", ""), row("홍길동", "", "")}, {"홍길동", "0101", ""}, "2"},
      {{row("홍길동", "", ""), row("홍길동", "", "")}, {"홍길동", "0101", ""}, ""},
      // A row that has its contact is found only when no other is as much alike.
      {{row("홍길동", "0101", "", "taken"), row("홍길동", "", "")},
       {"홍길동", "0101", ""},
       "1taken"},
      {{row("홍길동", "0101", "", "taken"), row("홍길동", "0101", "")},
       {"홍길동", "0101", ""},
       "2"},
      {{row("홍길동", "", "", "taken"), row("홍길동", "", "")}, {"홍길동", "0101", ""}, "2"},
      {{row("홍길동", "", "", "taken")}, {"홍길동", "0101", ""}, "1taken"},
  };
  for (const Case& c : cases) {
    WorkList list;
    for (WorkListRow each : c.rows) {
      each.id = std::to_string(list.size() + 1);
      list.add(each);
      if (!each.folderName.empty()) list.reserve(each.id);
    }
    const auto shown = [&](const std::optional<PersonMatch::Choice>& choice) {
      return choice ? list.row(choice->candidate).id + (choice->taken ? "taken" : "") : "";
    };
    EXPECT_EQ(shown(list.findByNormalizedName(c.person, c.evidence)), c.found)
        << c.rows[0].name << c.rows[0].mobile << " / " << c.person.mobile << c.person.email;
    if (c.rows[0].name == c.person.name && c.evidence == Evidence::NameAlone) {
      EXPECT_EQ(shown(list.findByName(c.person)), c.found);
    }
  }
}

TEST(WorkList, KeepsItsOrderAndEachCardOnce) {
  WorkList list;
  for (const char* id : {"3", "1", "2", "1"}) list.add({.name = "홍길동", .id = id});
  EXPECT_EQ(list.size(), 3U);
  list.remove(*list.findById("3"));
  list.remove(0);  // once more changes nothing
  EXPECT_TRUE(list.isTaken("3"));
  EXPECT_FALSE(list.isTaken("9"));
  EXPECT_FALSE(list.findById("3"));
  EXPECT_EQ(list.size(), 2U);
  EXPECT_EQ(list.remaining(), (std::vector<WorkList::Position>{1, 2}));
}

using PairingTest = TransferTest;

// The rules are the list's; each transfer follows them, with either of its boxes and with both.
TEST_F(PairingTest, EachTransferFindsThePersonOrAddsOne) {
  struct Case {
    const char* what;
    const char* card;  // name|mobile|e-mail
    const char* contact;
    const char* imported;  // as the summary has it
    const char* exported;
  };
  const char* const nothing = "추가=0/갱신=0";
  const char* const added = "추가=1/갱신=0";
  const char* const merged = "추가=0/갱신=1";
  for (const Case& c :
       {Case{"same number", "홍 길동|010-1|", "N:홍;길동;;;\r\nTEL;TYPE=CELL:0101\r\n", merged,
             merged},
        Case{"in one word", "홍 길동|010-1|", "N:;홍길동;;;\r\nTEL;TYPE=CELL:010 1\r\n", merged,
             merged},
        Case{"empty key", "홍길동||", "N:홍;길동;;;\r\nX-VLID: \r\n", merged, merged},
        Case{"parts swapped, no value", "지민||", "N:민;지;;;\r\n", added, added},
        Case{"parts swapped, Latin", "Minsu Kim||", "N:Kim;Minsu;;;\r\n", merged, merged},
        Case{"family name first", "Kim, Minsu|1|", "N:Kim;Minsu;;;\r\nTEL;TYPE=CELL:1\r\n", merged,
             merged},
        Case{"parts swapped, lost key", "길동홍||a@x.kr",
             "N:홍;길동;;;\r\nEMAIL:A@X.kr\r\nX-VLID:9\r\n", added, added},
        Case{"parts swapped", "길동홍||a@x.kr", "N:홍;길동;;;\r\nEMAIL:A@X.kr\r\n", merged, merged},
        Case{"another number", "홍길동|010-1|", "N:홍;길동;;;\r\nTEL;TYPE=CELL:0102\r\n", added,
             added},
        Case{"quote in the name", "O'Brien|010-1|", "N:;O'Brien;;;\r\n", merged, merged},
        Case{"no name, no value", "||", "ORG:회사\r\nFN:회사\r\n", added, added},
        Case{"lost key, person there", "홍길동|010-1|",
             "N:홍;길동;;;\r\nTEL;TYPE=CELL:0101\r\nX-VLID:99\r\n", nothing, added},
        Case{"lost key, nobody", "김철수|010-1|", "N:홍;길동;;;\r\nX-VLID:99\r\n", added, added},
        Case{"no number", "김철수|010-1|", "N:홍;길동;;;\r\nX-VLID:1 OR 1\r\n", added, added},
        Case{"list", "홍길동|010-1|", "KIND:group\r\nFN:홍길동\r\nX-VLID:1\r\n", nothing, added}}) {
    for (const auto mode : {frmOutlookSync::kImport, frmOutlookSync::kExport}) {
      for (const int boxes : {0, 1, 2, 3}) {
        SCOPED_TRACE(testing::Message() << c.what << ", mode " << mode << ", boxes " << boxes);
        const bool add = boxes % 2 != 0;
        const bool compare = boxes >= 2;
        startAfresh();
        const std::string card = c.card;
        const std::size_t bar = card.find('|');
        const std::size_t second = card.find('|', bar + 1);
        addCard(1, {{"FullName", card.substr(0, bar)},
                    {"cellphone", card.substr(bar + 1, second - bar - 1)},
                    {"email", card.substr(second + 1)},
                    {"JobTitle", "부장"}});
        writeContact("a.vcf", c.contact);
        const std::string before = contactText("a.vcf");
        const auto lines = run(mode, [&](frmOutlookSync& window) {
          const bool isImport = mode == frmOutlookSync::kImport;
          (isImport ? window.import_check1 : window.Export_Check1).setValue(add ? 1 : 0);
          (isImport ? window.import_check2 : window.Export_Check2).setValue(compare ? 1 : 0);
        });
        const std::string whole = mode == frmOutlookSync::kImport ? c.imported : c.exported;
        const std::string expected =
            (add && whole == added) || (compare && whole == merged) ? whole : nothing;
        EXPECT_THAT(lines.back(), HasSubstr("완료|" + expected + "|"));
        EXPECT_THAT(lines, Contains("연락처 비교/갱신|100%|완료").Times(compare ? 1 : 0));
        const bool stays =
            expected == nothing || (expected == added && mode == frmOutlookSync::kExport);
        EXPECT_EQ(contactText("a.vcf") == before, stays);
        EXPECT_EQ(valueOf(1, "JobTitle"), "부장");  // a merge loses nothing
        const bool isOdd = std::string_view(c.contact).ends_with(" OR 1\r\n");
        EXPECT_THAT(
            lines,
            Contains("VLID 오류(홍길동): 1 OR 1|0%|제외").Times(isOdd && boxes != 0 ? 1 : 0));
      }
    }
  }
}

}  // namespace
}  // namespace vlout::transfer
