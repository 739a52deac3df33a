#include "outlook/person_name.h"

#include <vector>

#include <gtest/gtest.h>

namespace vlout::outlook {
namespace {

TEST(PersonName, SplitsAndJoinsAsOutlookDoes) {
  struct Case {
    const char* written;
    PersonName parts;
    const char* shown;
    const char* lastFirst;
  };
  const std::vector<Case> cases{
      {"Kim, Minsu", {.last = "Kim", .first = "Minsu"}, "Minsu Kim", "Kim, Minsu"},
      {"Minsu Kim", {.last = "Kim", .first = "Minsu"}, "Minsu Kim", "Kim, Minsu"},
      {"홍,길동", {.last = "홍", .first = "길동"}, "홍길동", "홍, 길동"},
      {"홍 길동", {.last = "홍", .first = "길동"}, "홍길동", "홍, 길동"},
      {"남궁민수", {.first = "남궁민수"}, "남궁민수", "남궁민수"},
      {"Cher", {.first = "Cher"}, "Cher", "Cher"},
      {"John Adam Doe",
       {.last = "Doe", .first = "John", .middle = "Adam"},
       "John Adam Doe",
       "Doe, John Adam"},
      {"Doe, John Adam",
       {.last = "Doe", .first = "John", .middle = "Adam"},
       "John Adam Doe",
       "Doe, John Adam"},
      {"Иван Петров", {.last = "Петров", .first = "Иван"}, "Иван Петров", "Петров, Иван"},
      {"홍길동 Jr", {.last = "홍길동", .first = "Jr"}, "홍길동 Jr", "홍길동, Jr"},
      {"  ", {}, "", ""},
      {"Kim,", {.last = "Kim"}, "Kim", "Kim"},
  };
  for (const Case& c : cases) {
    const PersonName parts = splitFullName(c.written);
    EXPECT_EQ(parts, c.parts) << c.written;
    EXPECT_EQ(fullName(parts), c.shown);
    EXPECT_EQ(lastNameAndFirstName(parts), c.lastFirst);
  }
}

}  // namespace
}  // namespace vlout::outlook
