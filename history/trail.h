// How one thing went through the runs that wrote it, a file or a column of a row: what the first of
// them found, and whether all that was found later is what the run before had left.
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
  // The writes of the runs, in their order.
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
  // Whether the last of the runs may have left it like that: any of its writes may have failed.
  [[nodiscard]] bool isLeft(const Value& value) const {
    return std::any_of(left_.begin(), left_.end(),
                       [&](const Value& given) { return Same()(given, value); });
  }

  // What somebody else did to it, after the run of that number.
  struct Edit {
    int run = 0;
    Value left{};
    Value found{};
  };
  // The last edit, up to now where it is like that.
  [[nodiscard]] std::optional<Edit> edit(const Value& now) const {
    return isLeft(now) ? edit_ : Edit{run_, left_.back(), now};
  }

 private:
  int run_ = 0;
  Value origin_{};
  std::vector<Value> left_;  // by the run, with what it found
  std::optional<Edit> edit_;
};

// By column; without a name, whether there is such a row. Nothing is the value of a row that is not
// there.
using RowTrail = std::map<std::string, Trail<std::optional<Cell>>, std::less<>>;

void addTo(RowTrail& trail, int run, const RowWrite& write);

}  // namespace vlout::history
