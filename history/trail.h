// Follows one thing, a file or a column of a row, through the runs that wrote it: what the first
// run found, and whether each later run found what the run before had left.
#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "history/row_key.h"

namespace vlout::history {

template <typename Value, typename Same = std::equal_to<>>
class Trail {
 public:
  // Adds the writes of the runs, in order.
  void write(int run, const Value& before, const Value& after) {
    if (run != run_) {
      if (left_.empty()) origin_ = before;
      if (!left_.empty() && !isLeft(before)) edit_ = Edit{run_, left_.back(), before};
      left_ = {before};
      run_ = run;
    }
    left_.push_back(after);
  }

  [[nodiscard]] const Value& origin() const { return origin_; }
  // True if the last of the runs may have left that value; any of its writes may have failed.
  [[nodiscard]] bool isLeft(const Value& value) const {
    return std::any_of(left_.begin(), left_.end(),
                       [&](const Value& given) { return Same()(given, value); });
  }

  // An edit by somebody else, after the run of that number.
  struct Edit {
    int run = 0;
    Value left{};
    Value found{};
  };
  // The last edit up to now, if it now has that value.
  [[nodiscard]] std::optional<Edit> edit(const Value& now) const {
    return isLeft(now) ? edit_ : Edit{run_, left_.back(), now};
  }

 private:
  int run_ = 0;
  Value origin_{};
  std::vector<Value> left_;  // what the last run found and wrote
  std::optional<Edit> edit_;
};

// By column; under the empty name, whether the row exists. A row that does not exist has the value
// nothing.
using RowTrail = std::map<std::string, Trail<std::optional<Cell>>, std::less<>>;

void addTo(RowTrail& trail, int run, const RowWrite& write);

}  // namespace vlout::history
