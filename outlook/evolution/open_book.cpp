#include <algorithm>
#include <type_traits>
#include <utility>

#include "outlook/evolution/session.h"
#include "outlook/vcard/card_text.h"
#include "outlook/vcard/vcard_syntax.h"
#include "text/ascii.h"
#include "text/language.h"
#include "text/regular_file.h"

namespace vlout::outlook::evolution {
namespace {

// By default the service would overwrite what it has not yet heard of from the server.
constexpr guint32 kKeepOthersEdits = E_BOOK_OPERATION_FLAG_CONFLICT_FAIL;

// A call that failed because the service is gone.
class ServiceGone : public ContactStoreError {
 public:
  using ContactStoreError::ContactStoreError;
};

[[noreturn]] void fail(const std::string& book, const Error& error) {
  const std::string text = book + ": " + error.text();
  // A service that is just starting again answers in several ways.
  const bool isGone = error.is(G_DBUS_ERROR) || error.is(G_IO_ERROR) ||
                      error.is(E_CLIENT_ERROR, E_CLIENT_ERROR_DBUS_ERROR) ||
                      error.is(E_CLIENT_ERROR, E_CLIENT_ERROR_OTHER_ERROR) ||
                      error.is(E_CLIENT_ERROR, E_CLIENT_ERROR_NOT_OPENED);
  if (isGone) throw ServiceGone(text);
  throw ContactStoreError(text);
}

EVCard* cardOf(EContact* contact) {
  return reinterpret_cast<EVCard*>(contact);
}

std::string textOf(EContact* contact) {
  const Text text(e_vcard_to_string(cardOf(contact), EVC_FORMAT_VCARD_30));
  return asText(text.get());
}

// The UID if there is one line of it and nothing in that needs reading, as the service writes it.
std::optional<std::string_view> plainUid(std::string_view text) {
  constexpr std::string_view kLine = "\nUID:";
  const std::size_t at = text.find(kLine);
  if (at == text.npos || text.find(kLine.substr(0, kLine.size() - 1), at + 1) != text.npos) {
    return std::nullopt;
  }
  const std::size_t start = at + kLine.size();
  const std::size_t end = text.find("\r\n", start);
  if (end == text.npos || text.substr(end + 2).starts_with(' ')) return std::nullopt;
  const std::string_view uid = text.substr(start, end - start);
  if (uid.find_first_of("\\ \t") != uid.npos) return std::nullopt;
  return uid;
}

// Looks for the line alone; the library would parse the whole contact.
std::string uidOf(const std::string& text) {
  if (const auto uid = plainUid(text)) return std::string(*uid);
  vcard::LineReader reader(text);
  while (!reader.atEnd()) {
    const std::string_view line = reader.next();
    if (!text::equalsIgnoringAsciiCase(vcard::lineName(line), "UID")) continue;
    return vcard::readProperty(line, vcard::Version::V30, vcard::kUtf8, vcard::FileForm::Bytes)
        .whole();
  }
  return {};
}

// A list of contacts for a call, or of one.
class Contacts {
 public:
  explicit Contacts(const std::vector<std::string>& texts) {
    for (auto text = texts.rbegin(); text != texts.rend(); ++text) {
      list_ = g_slist_prepend(list_, e_contact_new_from_vcard(text->c_str()));
    }
  }
  ~Contacts() { g_slist_free_full(list_, g_object_unref); }
  Contacts(const Contacts&) = delete;
  Contacts& operator=(const Contacts&) = delete;
  [[nodiscard]] GSList* get() const { return list_; }
  [[nodiscard]] GSList** out() { return &list_; }
  [[nodiscard]] std::size_t size() const { return g_slist_length(list_); }
  // The first one, which is no longer in the list; null if it is empty.
  [[nodiscard]] Ref<EContact> take() {
    Ref<EContact> first(list_ == nullptr ? nullptr : static_cast<EContact*>(list_->data));
    list_ = g_slist_delete_link(list_, list_);
    return first;
  }

 private:
  GSList* list_ = nullptr;
};

// A name on the session bus that only one process can own. It keeps runs on the same book apart,
// and goes with the process.
class BusName {
 public:
  explicit BusName(const std::string& uid) {
    const Text digest(g_compute_checksum_for_string(G_CHECKSUM_SHA1, uid.c_str(), -1));
    name_ = "org.velmora.vloutsync.book_" + asText(digest.get());
  }
  ~BusName() {
    if (isTaken_) ask("ReleaseName", g_variant_new("(s)", name_.c_str()));
  }
  BusName(const BusName&) = delete;
  BusName& operator=(const BusName&) = delete;

  [[nodiscard]] bool take() {
    constexpr guint32 kDoNotQueue = 4;
    constexpr guint32 kIsAnothers = 3;
    isTaken_ = ask("RequestName", g_variant_new("(su)", name_.c_str(), kDoNotQueue)) != kIsAnothers;
    return isTaken_;
  }

 private:
  static guint32 ask(const char* method, GVariant* arguments) {
    const Ref<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
    GVariant* const reply = g_dbus_connection_call_sync(
        bus.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method,
        arguments, G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
    guint32 answer = 0;
    if (reply == nullptr) return answer;
    g_variant_get(reply, "(u)", &answer);
    g_variant_unref(reply);
    return answer;
  }

  std::string name_;
  bool isTaken_ = false;
};

std::vector<StoredCard> storedCards(Contacts& contacts) {
  std::vector<StoredCard> result;
  result.reserve(contacts.size());
  while (const auto contact = contacts.take()) {
    std::string text = textOf(contact.get());
    result.push_back({uidOf(text), std::move(text)});
  }
  return result;
}

// Asks for the contacts of those UIDs.
Text queryFor(const std::vector<std::string>& uids) {
  std::vector<EBookQuery*> each;
  each.reserve(uids.size());
  for (const std::string& uid : uids) {
    each.push_back(e_book_query_field_test(E_CONTACT_UID, E_BOOK_QUERY_IS, uid.c_str()));
  }
  EBookQuery* const query = e_book_query_or(static_cast<gint>(each.size()), each.data(), TRUE);
  Text result(e_book_query_to_string(query));
  e_book_query_unref(query);
  return result;
}

class OpenBook : public Book {
 public:
  OpenBook(std::shared_ptr<Desktop::Session> session, Source source, BookInfo info)
      : session_(std::move(session)),
        source_(std::move(source)),
        info_(std::move(info)),
        name_(info_.uid) {
    if (!name_.take())
      throw ContactStoreError(text::say("%1: 다른 실행이 이 주소록을 사용하고 있습니다",
                                        "%1: another run is using this address book",
                                        {info_.name}));
    explainRefusal([&] { open(); });
  }

 private:
  // If the server refuses a write, the service waits for somebody to log in, and then even a new
  // client waits with it.
  template <typename Ask>
  std::invoke_result_t<Ask> explainRefusal(Ask ask) {
    try {
      return ask();
    } catch (const NoAnswer& error) {
      client_.reset();
      if (!isRefused(source_)) throw;
      throw NoAnswer(text::say(
          "%1: 서버가 받아들이지 않습니다. 쓸 수 있는 계정인지, 암호가 맞는지 데스크톱의 계정 "
          "설정에서 "
          "확인하십시오 (%2)",
          "%1: the server refuses. See in the desktop's account settings whether the account may "
          "write and its password is right (%2)",
          {info_.name, error.what()}));
    }
  }

  template <typename Job>
  auto call(Job job, const std::function<void()>& meanwhile = nullptr) {
    return explainRefusal([&] {
      if (!client_) open();
      try {
        return session_->calls.run([job, client = client_, book = info_.name](
                                       GCancellable* c) { return job(client, book, c); },
                                   meanwhile);
      } catch (const ServiceGone&) {
        client_.reset();
        throw;
      }
    });
  }

 public:
  [[nodiscard]] const BookInfo& info() const override { return info_; }

  [[nodiscard]] std::vector<StoredCard> list(const std::function<void()>& meanwhile) override {
    const auto job = [registry = session_->connected(), source = source_](
                         const Client& client, const std::string& book, GCancellable* cancellable) {
      if (e_client_check_refresh_supported(base(client)) != FALSE) {
        // What it finds is there before the next call is answered. If it fails, the contacts are as
        // the service has them.
        e_client_refresh_sync(base(client), cancellable, nullptr);
      }
      Contacts contacts({});
      Error error;
      if (e_book_client_get_contacts_sync(client.get(), kEveryContact, contacts.out(), cancellable,
                                          error.out()) == FALSE) {
        fail(book, error);
      }
      // Only now is it certain that the account can be used.
      const std::string objection = objectionTo(registry, source, client, cancellable);
      if (!objection.empty()) throw ContactStoreError(book + ": " + objection);
      return storedCards(contacts);
    };
    try {
      return call(job, meanwhile);
    } catch (const ServiceGone&) {
      return call(job, meanwhile);  // it may have died long ago, while nothing was asked of it
    }
  }

  [[nodiscard]] std::vector<StoredCard> getAll(const std::vector<std::string>& uids) override {
    return call([uids](const Client& client, const std::string& book, GCancellable* cancellable) {
      Contacts contacts({});
      Error error;
      if (e_book_client_get_contacts_sync(client.get(), queryFor(uids).get(), contacts.out(),
                                          cancellable, error.out()) == FALSE) {
        fail(book, error);
      }
      return storedCards(contacts);
    });
  }

  [[nodiscard]] std::optional<std::string> get(const std::string& uid) override {
    return call([uid](const Client& client, const std::string& book,
                      GCancellable* cancellable) -> std::optional<std::string> {
      EContact* found = nullptr;
      Error error;
      if (e_book_client_get_contact_sync(client.get(), uid.c_str(), &found, cancellable,
                                         error.out()) == FALSE) {
        if (error.is(E_BOOK_CLIENT_ERROR, E_BOOK_CLIENT_ERROR_CONTACT_NOT_FOUND))
          return std::nullopt;
        fail(book, error);
      }
      return textOf(Ref<EContact>(found).get());
    });
  }

  std::vector<std::string> add(const std::vector<std::string>& texts) override {
    return call([texts](const Client& client, const std::string& book, GCancellable* cancellable) {
      const Contacts contacts(texts);
      GSList* uids = nullptr;
      Error error;
      if (e_book_client_add_contacts_sync(client.get(), contacts.get(), kKeepOthersEdits, &uids,
                                          cancellable, error.out()) == FALSE) {
        fail(book, error);
      }
      std::vector<std::string> result;
      for (const GSList* each = uids; each != nullptr; each = each->next) {
        result.push_back(asText(static_cast<const char*>(each->data)));
      }
      g_slist_free_full(uids, g_free);
      return result;
    });
  }

  void modify(const std::string& text) override {
    call([text](const Client& client, const std::string& book, GCancellable* cancellable) {
      const Ref<EContact> contact(e_contact_new_from_vcard(text.c_str()));
      Error error;
      if (e_book_client_modify_contact_sync(client.get(), contact.get(), kKeepOthersEdits,
                                            cancellable, error.out()) == FALSE) {
        fail(book, error);
      }
      return true;
    });
  }

  void remove(const std::string& uid) override {
    call([uid](const Client& client, const std::string& book, GCancellable* cancellable) {
      Error error;
      if (e_book_client_remove_contact_by_uid_sync(client.get(), uid.c_str(), kKeepOthersEdits,
                                                   cancellable, error.out()) == FALSE) {
        fail(book, error);
      }
      return true;
    });
  }

 private:
  void open() {
    client_ = session_->calls.run(
        [registry = session_->connected(), source = source_, name = info_.name](GCancellable* c) {
          Client client = connect(source, c);
          const std::string objection = objectionTo(registry, source, client, c);
          if (!objection.empty()) throw ContactStoreError(name + ": " + objection);
          if (!isWritable(client, c))
            throw ContactStoreError(text::say("%1: 읽기 전용 주소록입니다",
                                              "%1: the address book is read-only", {name}));
          return client;
        });
  }

  std::shared_ptr<Desktop::Session> session_;
  Source source_;
  BookInfo info_;
  BusName name_;
  Client client_;
};

}  // namespace

std::string withPictures(const std::string& cardText) {
  if (text::replaceAll(cardText, "\r\n ", "").find("file:") == std::string::npos) return cardText;
  const Ref<EContact> contact(e_contact_new_from_vcard(cardText.c_str()));
  const bool isWhole = e_contact_inline_local_photos(contact.get(), nullptr) != FALSE;
  return isWhole ? textOf(contact.get()) : cardText;
}

std::optional<std::string> readPicture(const std::string& address) {
  const Text file(g_filename_from_uri(address.c_str(), nullptr, nullptr));
  if (!file) return std::nullopt;
  try {
    return text::readRegularFile(file.get(), text::kLargestOwn);
  } catch (const std::system_error&) {
    return std::nullopt;
  }
}

std::unique_ptr<Book> openBook(std::shared_ptr<Desktop::Session> session, Source source,
                               BookInfo info) {
  return std::make_unique<OpenBook>(std::move(session), std::move(source), std::move(info));
}

}  // namespace vlout::outlook::evolution
