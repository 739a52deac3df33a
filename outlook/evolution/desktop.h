// The address books of the desktop as evolution-data-server keeps them: which there are, and one of
// them open. This is the only place that knows libebook; the rest of the folder works on vCard
// texts. Every function throws ContactStoreError.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "outlook/evolution/calls.h"

namespace vlout::outlook::evolution {

struct BookInfo {
  std::string uid;
  std::string name;
  std::string account;
  std::string kind;  // the service's word: local, carddav, google, ews …
  bool isDefault = false;
  // Known of a book that could be opened.
  std::optional<bool> writable{};
  std::optional<std::size_t> contacts{};
  std::string failure{};  // why it could not
};

// A contact of a book as it is stored.
struct StoredCard {
  std::string uid;
  std::string text;
};

// An open book. Where the service has gone away, the call that meets it fails and the next one
// opens the book again.
class Book {
 public:
  virtual ~Book() = default;

  [[nodiscard]] virtual const BookInfo& info() const = 0;
  // All contacts; what other devices have written on the account is fetched first.
  [[nodiscard]] virtual std::vector<StoredCard> list() = 0;
  // Nothing when there is none of that UID.
  [[nodiscard]] virtual std::optional<std::string> get(const std::string& uid) = 0;
  // The same with its pictures in it, which some books keep in files beside their contacts.
  [[nodiscard]] virtual std::optional<std::string> getWhole(const std::string& uid) = 0;
  // The UIDs that they were given. Either all are added or none.
  virtual std::vector<std::string> add(const std::vector<std::string>& texts) = 0;
  // The contact with the text's own UID.
  virtual void modify(const std::string& text) = 0;
  virtual void remove(const std::string& uid) = 0;
};

class Desktop {
 public:
  explicit Desktop(std::function<void()> whileWaiting,
                   std::chrono::milliseconds patience = Calls::kPatience);
  ~Desktop();
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;

  // Each book is opened to look at it.
  [[nodiscard]] std::vector<BookInfo> books();
  // The same without opening any, which a server that does not answer would hold up.
  [[nodiscard]] std::vector<BookInfo> knownBooks();

  // A book by its UID or name, or the default one for an empty text, unopened.
  [[nodiscard]] BookInfo find(const std::string& name);
  // The number of its contacts.
  [[nodiscard]] std::size_t count(const std::string& name);

  // The book of that UID or name, or the default one for an empty text. Refused when it is
  // read-only, or its account is offline or lacks its password. It is this process's alone.
  [[nodiscard]] std::unique_ptr<Book> open(const std::string& name);

  struct Session;

 private:
  std::shared_ptr<Session> session_;
};

}  // namespace vlout::outlook::evolution
