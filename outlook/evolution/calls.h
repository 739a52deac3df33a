// Calls into the desktop's services, which may be slow or never answer. Calls are made on a thread
// of their own, while the caller keeps its windows alive, and are given up after a while.
#pragma once

#include <chrono>
#include <functional>
#include <future>
#include <memory>

#include "outlook/contact_store.h"

// GLib's own name.
using GCancellable = struct _GCancellable;  // NOLINT(bugprone-reserved-identifier)

namespace vlout::outlook::evolution {

// A call was waited for and given up.
class NoAnswer : public ContactStoreError {
 public:
  using ContactStoreError::ContactStoreError;
};

class Calls {
 public:
  static constexpr std::chrono::milliseconds kPatience{30'000};

  // `whileWaiting` is called now and then during a call; it must not make calls here itself.
  explicit Calls(std::function<void()> whileWaiting,
                 std::chrono::milliseconds patience = kPatience);
  ~Calls();
  Calls(const Calls&) = delete;
  Calls& operator=(const Calls&) = delete;

  // Runs `job` and returns what it returns, or throws what it throws. `job` must own all that it
  // uses, since it outlives a call that was given up. Such a call throws NoAnswer. All later ones
  // throw ContactStoreError at once, or each record of a run would wait as long again. `meanwhile`
  // is done while the job begins.
  template <typename Job>
  auto run(Job job, const std::function<void()>& meanwhile = nullptr) {
    using Result = decltype(job(static_cast<GCancellable*>(nullptr)));
    GCancellable* const cancellable = begin();
    const auto task = std::make_shared<std::packaged_task<Result()>>(
        [job = std::move(job), cancellable] { return job(cancellable); });
    auto result = task->get_future();
    hand([task] { (*task)(); });
    if (meanwhile) meanwhile();
    wait([&](std::chrono::milliseconds time) {
      return result.wait_for(time) == std::future_status::ready;
    });
    return result.get();
  }

  // Lets calls be made again, provided that the one that was given up has ended.
  void tryAgain() { isGivenUp_ = isLost_; }

 private:
  struct Thread;
  using Ready = std::function<bool(std::chrono::milliseconds)>;

  [[nodiscard]] GCancellable* begin();
  void hand(std::function<void()> job);
  void wait(const Ready& ready);

  std::function<void()> whileWaiting_;
  std::chrono::milliseconds patience_;
  std::shared_ptr<Thread> thread_;
  bool isGivenUp_ = false;
  bool isLost_ = false;  // the call has not even ended when it was told to
};

}  // namespace vlout::outlook::evolution
