#include "outlook/evolution/calls.h"

#include <condition_variable>
#include <gio/gio.h>
#include <malloc.h>
#include <mutex>
#include <thread>
#include <utility>

#include "outlook/evolution/glib_ref.h"
#include "text/language.h"

namespace vlout::outlook::evolution {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kLook{20};
constexpr milliseconds kEnding{2'000};  // for a call that was told to end

// Signals of the services are delivered here, during the calls, and not into somebody else's loop.
// A process has one registry of accounts, which stays with the context that it began in.
struct Signals {
  GMainContext* context = g_main_context_new();
  std::mutex mutex;
};

std::shared_ptr<Signals>& signalsOfServices() {
  static auto signals = std::make_shared<Signals>();
  return signals;
}

}  // namespace

struct Calls::Thread {
  std::mutex mutex;
  std::condition_variable woken;
  std::function<void()> job;
  bool ends = false;
  Ref<GCancellable> cancellable{g_cancellable_new()};
  std::thread thread;

  void work() {
    for (;;) {
      std::unique_lock lock(mutex);
      woken.wait(lock, [&] { return ends || job; });
      if (!job) break;
      const auto next = std::exchange(job, nullptr);
      lock.unlock();
      const auto signals = signalsOfServices();
      const std::lock_guard alone(signals->mutex);
      g_main_context_push_thread_default(signals->context);
      next();
      while (g_main_context_iteration(signals->context, FALSE) != FALSE) {
      }
      g_main_context_pop_thread_default(signals->context);
    }
  }
};

Calls::Calls(std::function<void()> whileWaiting, milliseconds patience)
    : whileWaiting_(std::move(whileWaiting)),
      patience_(patience),
      thread_(std::make_shared<Thread>()) {
  // All contacts are read on that thread, and memory of its own would grow by a page and a call of
  // the system at a time.
  ::mallopt(M_ARENA_MAX, 1);
  thread_->thread = std::thread([own = thread_] { own->work(); });
}

Calls::~Calls() {
  {
    const std::lock_guard lock(thread_->mutex);
    thread_->ends = true;
  }
  thread_->woken.notify_one();
  // A thread that hangs is left until the process ends.
  isLost_ ? thread_->thread.detach() : thread_->thread.join();
}

GCancellable* Calls::begin() {
  if (isGivenUp_)
    throw ContactStoreError(
        text::say("주소록 서비스가 응답하지 않습니다", "The address book service does not answer"));
  return thread_->cancellable.get();
}

void Calls::hand(std::function<void()> job) {
  {
    const std::lock_guard lock(thread_->mutex);
    thread_->job = std::move(job);
  }
  thread_->woken.notify_one();
}

void Calls::wait(const Ready& ready) {
  const auto start = std::chrono::steady_clock::now();
  while (!ready(kLook)) {
    whileWaiting_();
    if (std::chrono::steady_clock::now() - start < patience_) continue;
    g_cancellable_cancel(thread_->cancellable.get());
    isGivenUp_ = true;
    isLost_ = !ready(kEnding);
    if (isLost_) {
      signalsOfServices() = std::make_shared<Signals>();  // the other is the thread's that hangs
    } else {
      g_cancellable_reset(thread_->cancellable.get());
    }
    throw NoAnswer(text::say("주소록 서비스가 %1초 동안 응답하지 않아 그만 기다립니다",
                             "The address book service has not answered for %1 seconds",
                             {std::to_string(patience_.count() / 1000)}));
  }
}

}  // namespace vlout::outlook::evolution
