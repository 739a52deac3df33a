// The address books of the desktop, as evolution-data-server keeps them: lists them, and opens one.
// This is the only place that knows libebook; the rest of the folder works on vCard texts. Every
// function throws ContactStoreError.
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
  // Known only for a book that could be opened.
  std::optional<bool> writable{};
  std::optional<std::size_t> contacts{};
  std::string failure{};  // why it could not be opened
};

// A contact of a book as it is stored.
struct StoredCard {
  std::string uid;
  std::string text;
};

// An open book. If the service goes away, the call that notices fails, and the next one opens the
// book again.
class Book {
 public:
  virtual ~Book() = default;

  [[nodiscard]] virtual const BookInfo& info() const = 0;
  // All contacts. What other devices have written to the account is fetched first. `meanwhile` is
  // done while the service gathers them.
  [[nodiscard]] virtual std::vector<StoredCard> list(
      const std::function<void()>& meanwhile = nullptr) = 0;
  // Nothing when there is none of that UID.
  [[nodiscard]] virtual std::optional<std::string> get(const std::string& uid) = 0;
  // The contacts with these UIDs, as far as they exist.
  [[nodiscard]] virtual std::vector<StoredCard> getAll(const std::vector<std::string>& uids) = 0;
  // Returns the UIDs that the contacts were given. If one fails, a local book has added none; a
  // server, which is asked for one after the other, may have added those before it.
  virtual std::vector<std::string> add(const std::vector<std::string>& texts) = 0;
  // Changes the contact that has the text's UID.
  virtual void modify(const std::string& text) = 0;
  virtual void remove(const std::string& uid) = 0;
};

// A contact's text including its pictures, which books keep in files of their own that go with the
// next change. A picture that cannot be read stays as it is.
[[nodiscard]] std::string withPictures(const std::string& cardText);
// One such picture; nothing if it cannot be read, or the address is none of a file.
[[nodiscard]] std::optional<std::string> readPicture(const std::string& address);

class Desktop {
 public:
  explicit Desktop(std::function<void()> whileWaiting,
                   std::chrono::milliseconds patience = Calls::kPatience);
  ~Desktop();
  // Calls a service again that was given up.
  void tryAgain();
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;

  // All books; each is opened to look at it.
  [[nodiscard]] std::vector<BookInfo> books();
  // The same without opening any, so that a server that does not answer holds nothing up.
  [[nodiscard]] std::vector<BookInfo> knownBooks();

  // A book by its UID or name, or the default one for an empty text, unopened.
  [[nodiscard]] BookInfo find(const std::string& name);
  // The book of that UID or name, or the default one for an empty text. Refused if it is read-only,
  // or if its account is offline or lacks its password. No other run can use it meanwhile.
  [[nodiscard]] std::unique_ptr<Book> open(const std::string& name);

  struct Session;

 private:
  std::shared_ptr<Session> session_;
};

}  // namespace vlout::outlook::evolution
