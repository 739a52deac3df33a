// Keeps a window in a toolkit's list of open ones for as long as it is shown.
#pragma once

#include <vector>

namespace vlout::ui {

template <typename Window>
class Listed {
 public:
  Listed(std::vector<Window*>& list, Window& window) : list_(list) { list_.push_back(&window); }
  ~Listed() { list_.pop_back(); }
  Listed(const Listed&) = delete;
  Listed& operator=(const Listed&) = delete;

 private:
  std::vector<Window*>& list_;
};

}  // namespace vlout::ui
