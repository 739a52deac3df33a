#include "transfer/work_list.h"

#include <vector>

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace vlout::transfer
