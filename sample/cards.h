// Fills a freshly made database with invented folders and name cards, so that the component can be
// tried and measured without anybody's data. The same size and seed give the same bytes, and a
// bigger sample starts with the cards of a smaller one. `vloutsync sample` calls it.
#pragma once

#include <cstdint>
#include <vector>

#include "store/connection.h"

namespace vlout::sample {

struct SampleSize {
  int cards = 0;           // 0 to 32767
  std::uint64_t seed = 0;  // which of the many samples of that size
};

// What was open and selected in the host, for its export list.
struct SampleSelection {
  std::int64_t folder = 0;
  std::vector<std::int64_t> cards;  // ascending; about one card in ten, none only without cards
};

// Adds all rows in one transaction. Throws std::invalid_argument when the number of cards is out of
// range, and store::DatabaseError when a row cannot be written; the database is unchanged then.
SampleSelection fillWithSampleCards(store::Connection& connection, const SampleSize& size);

}  // namespace vlout::sample
