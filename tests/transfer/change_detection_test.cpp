#include "transfer/change_detection.h"

#include <vector>

#include <gtest/gtest.h>

namespace vlout::transfer {
namespace {

using text::DateTime;

// Every relation of the four stamps on a short time line, with and without stamps, against the rule
// in its own words.
TEST(ClassifyPair, FollowsTheRuleForEveryRelationOfTheStamps) {
  const std::vector<std::optional<DateTime>> times{std::nullopt, DateTime{100}, DateTime{101},
                                                   DateTime{102}};
  const auto later = [](std::optional<DateTime> a, std::optional<DateTime> b) {
    return a && (!b || a->seconds > b->seconds);
  };
  int conflicts = 0;
  for (const auto& l : times) {
    for (const auto& o : times) {
      for (const auto& s : times) {
        for (const std::int64_t seconds : {100, 101, 102}) {
          const DateTime c{seconds, 999'999'999};  // its fraction does not count
          const RowStamps row{.lastModified = l, .outlookModified = o, .lastSync = s};
          const Side newer = later(l, c) ? Side::Row : later(c, l) ? Side::Contact : Side::Neither;
          const bool changed = newer != Side::Neither;
          const bool straight = changed && later(l, s) && later(c, o);
          const bool crosswise = changed && later(l, o) && later(c, s);
          EXPECT_EQ(classifyPair(row, c, ConflictTest::Off), (PairState{newer, false}));
          EXPECT_EQ(classifyPair(row, c, ConflictTest::Straight), (PairState{newer, straight}));
          EXPECT_EQ(classifyPair(row, c, ConflictTest::Crosswise), (PairState{newer, crosswise}));
          conflicts += straight ? 1 : 0;
        }
      }
    }
  }
  EXPECT_GT(conflicts, 0);
}

}  // namespace
}  // namespace vlout::transfer
