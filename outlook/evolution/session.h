// What desktop.cpp and open_book.cpp share: the connection to the desktop's registry of accounts,
// and how a book's client is made. Only these two include it.
#pragma once

#include <libebook/libebook.h>
#include <memory>
#include <string>
#include <utility>

#include "outlook/contact_store.h"
#include "outlook/evolution/calls.h"
#include "outlook/evolution/desktop.h"
#include "outlook/evolution/glib_ref.h"

namespace vlout::outlook::evolution {

template <typename T>
std::shared_ptr<T> shared(T* object) {
  return {object, Unref()};
}

using Registry = std::shared_ptr<ESourceRegistry>;
using Source = std::shared_ptr<ESource>;
using Client = std::shared_ptr<EBookClient>;

inline std::string asText(const char* text) {
  return text == nullptr ? std::string() : std::string(text);
}

inline EClient* base(const Client& client) {
  return reinterpret_cast<EClient*>(client.get());
}

struct Desktop::Session {
  Session(std::function<void()> whileWaiting, std::chrono::milliseconds patience)
      : calls(std::move(whileWaiting), patience) {}

  // Throws ContactStoreError with what to install.
  [[nodiscard]] const Registry& connected();

  Calls calls;
  Registry registry;
};

inline constexpr const char* kEveryContact = "(contains \"x-evolution-any-field\" \"\")";

// The following are for the thread of the calls. They throw ContactStoreError.

[[nodiscard]] Client connect(const Source& source, GCancellable* cancellable);

// Why a book's account cannot be used now; an empty text if it can. Passes on the password that the
// desktop keeps for it.
[[nodiscard]] std::string objectionTo(const Registry& registry, const Source& source,
                                      const Client& client, GCancellable* cancellable);

// True if the service waits for credentials, as it does after the server has refused a write.
[[nodiscard]] bool isRefused(const Source& source);

[[nodiscard]] bool isWritable(const Client& client, GCancellable* cancellable);

[[nodiscard]] std::unique_ptr<Book> openBook(std::shared_ptr<Desktop::Session> session,
                                             Source source, BookInfo info);

}  // namespace vlout::outlook::evolution
