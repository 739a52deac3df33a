// The loaded DLL: where its file is, whether anything still needs it, and the one Runtime of the
// process.
#pragma once

#include <windows.h>

#include <atomic>
#include <filesystem>

namespace vlout::entry::com {

[[nodiscard]] HINSTANCE module();
void setModule(HINSTANCE module);

// The DLL's own file; throws std::system_error.
[[nodiscard]] std::filesystem::path moduleFile();

// Counts what keeps the DLL loaded: objects, and locks that a host sets.
class InUse {
 public:
  InUse() { ++count_; }
  ~InUse() { --count_; }
  InUse(const InUse&) = delete;
  InUse& operator=(const InUse&) = delete;

  static void lock(bool set) { count_ += set ? 1 : -1; }
  [[nodiscard]] static bool any() { return count_ > 0; }

 private:
  inline static std::atomic<long> count_{0};
};

// A whole call of OUTSYNCRUN. Whatever goes wrong is shown to the user; nothing is thrown. During a
// call, another call only brings the window to the front.
void runComponent() noexcept;

}  // namespace vlout::entry::com
