// The component's one public class and its one method. A host creates ORUN and calls OUTSYNCRUN.
// The call opens the window and returns when the user has closed it. It reports nothing to the
// host.
#pragma once

#include "entry/runtime.h"

namespace vlout::entry {

class ORUN {
 public:
  explicit ORUN(Runtime& runtime) : runtime_(runtime) {}

  void OUTSYNCRUN();

 private:
  Runtime& runtime_;
};

}  // namespace vlout::entry
