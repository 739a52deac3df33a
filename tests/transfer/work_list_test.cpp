#include "transfer/work_list.h"

#include <vector>

#include <gtest/gtest.h>

namespace vlout::transfer {
namespace {

TEST(WorkList, FindsTheSamePersonAndNoOther) {
  struct Case {
    WorkListRow row;
    Person person;
    bool found;
  };
  const auto row = [](const char* name, const char* mobile, const char* email) {
    return WorkListRow{.name = name, .mobile = mobile, .email = email, .id = "1"};
  };
  const std::vector<Case> cases{
      {row("홍길동", "0101", "a@x.kr"), {"홍길동", "010-1", "A@X.KR"}, true},
      {row("홍길동", "0101", "a@x.kr"), {"홍길동", "010-1", "b@x.kr"}, false},
      {row("홍길동", "0101", "a@x.kr"), {"홍길동", "010-2", "a@x.kr"}, false},
      {row("홍길동", "0101", ""), {"홍길동", "010-1", "b@x.kr"}, true},
      {row("홍길동", "0101", ""), {"홍길동", "", "b@x.kr"}, false},  // nothing that both have
      {row("홍길동", "0101", ""), {"홍길동", "", ""}, false},
      {row("홍길동", "", ""), {"홍길동", "", ""}, true},  // the name is all there is
      {row("홍길동", "", ""), {"홍길동", "010-1", ""}, false},
      {row("홍길순", "0101", ""), {"홍길동", "010-1", ""}, false},
      {row("홍, 길동", "0101", ""), {"홍길동", "010-1", ""}, true},
      {row("", "", ""), {"", "", ""}, false},  // nobody is nobody's double
      {row("", "0101", ""), {"", "010-1", ""}, true},
  };
  for (const Case& c : cases) {
    WorkList list;
    list.add(c.row);
    EXPECT_EQ(list.findByNormalizedName(c.person).has_value(), c.found)
        << c.row.name << c.row.mobile << c.row.email << " / " << c.person.mobile << c.person.email;
    const bool sameAsItStands = c.found && c.row.name == c.person.name;
    EXPECT_EQ(list.findByName(c.person).has_value(), sameAsItStands);
  }
}

TEST(WorkList, KeepsItsOrderAndEachCardOnce) {
  WorkList list;
  for (const char* id : {"3", "1", "2", "1"}) list.add({.name = "홍길동", .id = id});
  EXPECT_EQ(list.size(), 3U);
  const Person person{"홍길동", "", ""};
  EXPECT_EQ(list.row(*list.findByName(person)).id, "3");
  list.remove(*list.findById("3"));
  list.remove(0);  // once more changes nothing
  EXPECT_EQ(list.row(*list.findByName(person)).id, "1");
  EXPECT_TRUE(list.wasRemoved("3"));
  EXPECT_FALSE(list.wasRemoved("9"));
  EXPECT_FALSE(list.findById("3"));
  EXPECT_EQ(list.size(), 2U);
  EXPECT_EQ(list.remaining(), (std::vector<WorkList::Position>{1, 2}));
}

}  // namespace
}  // namespace vlout::transfer
