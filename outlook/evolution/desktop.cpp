#include "outlook/evolution/desktop.h"

#include <algorithm>
#include <memory>
#include <thread>
#include <utility>

#include "outlook/evolution/session.h"
#include "text/language.h"

namespace vlout::outlook::evolution {
namespace {

using std::chrono::milliseconds;

constexpr text::Words kInstall{
    "데스크톱 주소록을 쓰려면 evolution-data-server 패키지와 사용자 세션 버스(D-Bus)가 필요합니다",
    "Address books of the desktop need the package evolution-data-server and a session bus "
    "(D-Bus)"};
constexpr guint32 kDoNotWait = static_cast<guint32>(-1);
constexpr milliseconds kLong{5'000};

std::string nameOf(const Source& source) {
  return asText(e_source_get_display_name(source.get()));
}

std::vector<Source> sourcesOf(const Registry& registry) {
  std::vector<Source> result;
  GList* const list =
      e_source_registry_list_enabled(registry.get(), E_SOURCE_EXTENSION_ADDRESS_BOOK);
  for (const GList* each = list; each != nullptr; each = each->next) {
    result.push_back(shared(static_cast<ESource*>(each->data)));
  }
  g_list_free(list);
  return result;
}

Source defaultSource(const Registry& registry) {
  return shared(e_source_registry_ref_default_address_book(registry.get()));
}

BookInfo infoOf(const Registry& registry, const Source& source) {
  auto* const backend = static_cast<ESourceBackend*>(
      e_source_get_extension(source.get(), E_SOURCE_EXTENSION_ADDRESS_BOOK));
  BookInfo info;
  info.uid = asText(e_source_get_uid(source.get()));
  info.name = nameOf(source);
  info.kind = asText(e_source_backend_get_backend_name(backend));
  info.isDefault = defaultSource(registry) == source;
  if (const char* const parent = e_source_get_parent(source.get()); parent != nullptr) {
    const Source account = shared(e_source_registry_ref_source(registry.get(), parent));
    if (account) info.account = nameOf(account);
  }
  return info;
}

// Changes of a source's state arrive as signals.
template <typename IsThere>
void waitFor(IsThere isThere, GCancellable* cancellable, milliseconds patience = kLong) {
  constexpr milliseconds kLook{2};
  for (milliseconds waited{0};
       waited < patience && g_cancellable_is_cancelled(cancellable) == FALSE; waited += kLook) {
    while (g_main_context_iteration(g_main_context_get_thread_default(), FALSE) != FALSE) {
    }
    if (isThere()) return;
    std::this_thread::sleep_for(kLook);
  }
}

// What keeps the service from its server, other than the password.
std::string connectionFailure(const Source& source, GCancellable* cancellable) {
  ESourceCredentialsReason reason = E_SOURCE_CREDENTIALS_REASON_UNKNOWN;
  char* certificate = nullptr;
  GTlsCertificateFlags flags{};
  GError* cause = nullptr;
  e_source_get_last_credentials_required_arguments_sync(source.get(), &reason, &certificate, &flags,
                                                        &cause, cancellable, nullptr);
  g_free(certificate);
  const Error error(cause);
  const bool isAway = reason == E_SOURCE_CREDENTIALS_REASON_ERROR || error.is(G_IO_ERROR) ||
                      error.is(G_RESOLVER_ERROR);
  return isAway ? error.text() : "";
}

struct FreeParameters {
  void operator()(ENamedParameters* parameters) const { e_named_parameters_free(parameters); }
};
using Password = std::unique_ptr<ENamedParameters, FreeParameters>;

// The password that the desktop keeps; nobody is asked for it. Null if there is none.
Password passwordFor(const Registry& registry, const Source& source, GCancellable* cancellable) {
  const Ref<ESourceCredentialsProvider> provider(e_source_credentials_provider_new(registry.get()));
  ENamedParameters* found = nullptr;
  e_source_credentials_provider_lookup_sync(provider.get(), source.get(), cancellable, &found,
                                            nullptr);
  return Password(found);
}

// Some servers tell what they can do before they ask for a password, and until they ask, the
// service takes the account to be connected. So that is believed at once if the account needs no
// password; after a moment if the desktop has one; and otherwise only after a longer time, in which
// the server will have asked.
milliseconds timeUntilBelieved(const Registry& registry, const Source& source,
                               GCancellable* cancellable) {
  constexpr milliseconds kAtOnce{0};
  constexpr milliseconds kWithPassword{300};
  constexpr milliseconds kWithout{3'000};
  if (e_source_has_extension(source.get(), E_SOURCE_EXTENSION_AUTHENTICATION) == FALSE) {
    return kAtOnce;
  }
  auto* const authentication = static_cast<ESourceAuthentication*>(
      e_source_get_extension(source.get(), E_SOURCE_EXTENSION_AUTHENTICATION));
  if (e_source_authentication_required(authentication) == FALSE) return kAtOnce;
  return passwordFor(registry, source, cancellable) ? kWithPassword : kWithout;
}

bool handOverPassword(const Registry& registry, const Source& source, GCancellable* cancellable) {
  const Password password = passwordFor(registry, source, cancellable);
  return password && e_source_invoke_authenticate_sync(source.get(), password.get(), cancellable,
                                                       nullptr) != FALSE;
}

// What is known of a book once it is open.
BookInfo lookAt(const Registry& registry, const Source& source, GCancellable* cancellable) {
  BookInfo info;
  const Client client = connect(source, cancellable);
  info.failure = objectionTo(registry, source, client, cancellable);
  if (info.failure.empty()) info.writable = isWritable(client, cancellable);
  GSList* uids = nullptr;
  if (e_book_client_get_contacts_uids_sync(client.get(), kEveryContact, &uids, cancellable,
                                           nullptr) != FALSE) {
    if (info.failure.empty()) info.contacts = g_slist_length(uids);
    g_slist_free_full(uids, g_free);
  }
  return info;
}

Source choose(const Registry& registry, const std::string& name) {
  if (name.empty()) {
    if (Source standard = defaultSource(registry)) return standard;
    throw ContactStoreError(
        text::say("데스크톱에 기본 주소록이 없습니다", "The desktop has no default address book"));
  }
  std::vector<Source> named;
  for (Source& source : sourcesOf(registry)) {
    if (asText(e_source_get_uid(source.get())) == name) return source;
    if (nameOf(source) == name) named.push_back(std::move(source));
  }
  if (named.size() == 1) return named.front();
  if (named.empty()) {
    throw ContactStoreError(
        text::say("%1: 그런 주소록이 없습니다. vloutsync books 로 볼 수 있습니다",
                  "%1: no such address book; vloutsync books lists them", {name}));
  }
  std::string uids;
  for (const Source& source : named) uids += " book:" + asText(e_source_get_uid(source.get()));
  throw ContactStoreError(
      text::say("%1: 같은 이름의 주소록이 여럿입니다. 다음 가운데 하나를 쓰십시오:%2",
                "%1: several address books have that name. Use one of these:%2", {name, uids}));
}

}  // namespace

const Registry& Desktop::Session::connected() {
  if (registry) return registry;
  registry = calls.run([](GCancellable* cancellable) {
    Error error;
    ESourceRegistry* const made = e_source_registry_new_sync(cancellable, error.out());
    if (made == nullptr) throw ContactStoreError(text::say(kInstall) + ": " + error.text());
    return shared(made);
  });
  return registry;
}

Client connect(const Source& source, GCancellable* cancellable) {
  // The name of a killed service stays for a moment; after that the service is started again.
  constexpr int kAttempts = 5;
  constexpr gulong kPause = 200'000;  // microseconds
  Error error;
  for (int i = 0; i < kAttempts; ++i) {
    // If the call is given a time to wait for the account, it takes all of it, even for a local
    // book.
    EClient* const client =
        e_book_client_connect_sync(source.get(), kDoNotWait, cancellable, error.out());
    if (client != nullptr) return shared(reinterpret_cast<EBookClient*>(client));
    if (!error.is(G_DBUS_ERROR) && !error.is(G_IO_ERROR)) break;
    g_usleep(kPause);
  }
  throw ContactStoreError(nameOf(source) + ": " + error.text());
}

bool isRefused(const Source& source) {
  constexpr int kLooks = 10;
  constexpr gulong kLook = 20'000;  // microseconds; the thread of the calls hears of it
  for (int i = 0; i < kLooks; ++i) {
    if (e_source_get_connection_status(source.get()) ==
        E_SOURCE_CONNECTION_STATUS_AWAITING_CREDENTIALS) {
      return true;
    }
    g_usleep(kLook);
  }
  return false;
}

bool isWritable(const Client& client, GCancellable* cancellable) {
  // A book that is just being opened passes for a read-only one.
  const auto isIt = [&] { return e_client_is_readonly(base(client)) == FALSE; };
  waitFor(isIt, cancellable, milliseconds(2'000));
  return isIt();
}

std::string objectionTo(const Registry& registry, const Source& source, const Client& client,
                        GCancellable* cancellable) {
  const auto is = [&](ESourceConnectionStatus status) {
    return e_source_get_connection_status(source.get()) == status;
  };
  const auto isSettled = [&] {
    return !is(E_SOURCE_CONNECTION_STATUS_DISCONNECTED) &&
           !is(E_SOURCE_CONNECTION_STATUS_CONNECTING);
  };
  constexpr milliseconds kSettling{1'000};
  waitFor(isSettled, cancellable, kSettling);
  const auto isConnected = [&] { return is(E_SOURCE_CONNECTION_STATUS_CONNECTED); };
  if (isConnected()) {
    waitFor([&] { return !isConnected(); }, cancellable,
            timeUntilBelieved(registry, source, cancellable));
    waitFor(isSettled, cancellable, kSettling);
  }
  if (is(E_SOURCE_CONNECTION_STATUS_AWAITING_CREDENTIALS)) {
    const std::string failure = connectionFailure(source, cancellable);
    if (!failure.empty()) {
      return text::say("서버에 연결할 수 없습니다: %1", "The server cannot be reached: %1",
                       {failure});
    }
    if (handOverPassword(registry, source, cancellable)) {
      waitFor(isConnected, cancellable);
    }
    if (!isConnected()) {
      return text::say(
          "이 계정의 암호가 데스크톱에 없거나 맞지 않습니다. 데스크톱의 계정 설정에서 "
          "로그인하십시오",
          "The desktop has no password for this account, or a wrong one. Log in through the "
          "desktop's account settings");
    }
  }
  if (is(E_SOURCE_CONNECTION_STATUS_SSL_FAILED)) {
    return text::say(
        "서버의 인증서를 믿을 수 없습니다. 데스크톱의 계정 설정에서 확인하십시오",
        "The server's certificate is not trusted. Check it in the desktop's account settings");
  }
  // An account whose state stays unknown gets the benefit of the doubt; each call will show.
  if (e_client_is_online(base(client)) != FALSE) return {};
  return text::say("계정이 오프라인입니다", "The account is offline");
}

Desktop::Desktop(std::function<void()> whileWaiting, std::chrono::milliseconds patience)
    : session_(std::make_shared<Session>(std::move(whileWaiting), patience)) {}

Desktop::~Desktop() = default;

void Desktop::tryAgain() {
  session_->calls.tryAgain();
}

std::vector<BookInfo> Desktop::books() {
  const Registry registry = session_->connected();
  std::vector<BookInfo> result;
  for (const Source& source : sourcesOf(registry)) {
    BookInfo info = infoOf(registry, source);
    tryAgain();  // one that does not answer says nothing of the others
    try {
      const BookInfo seen = session_->calls.run([registry, source](GCancellable* cancellable) {
        return lookAt(registry, source, cancellable);
      });
      info.writable = seen.writable;
      info.contacts = seen.contacts;
      info.failure = seen.failure;
    } catch (const ContactStoreError& error) {
      info.failure = error.what();
    }
    result.push_back(std::move(info));
  }
  return result;
}

std::vector<BookInfo> Desktop::knownBooks() {
  const Registry registry = session_->connected();
  std::vector<BookInfo> result;
  for (const Source& source : sourcesOf(registry)) result.push_back(infoOf(registry, source));
  return result;
}

BookInfo Desktop::find(const std::string& name) {
  const Registry registry = session_->connected();
  return infoOf(registry, choose(registry, name));
}

std::unique_ptr<Book> Desktop::open(const std::string& name) {
  const Registry registry = session_->connected();
  const Source source = choose(registry, name);
  return openBook(session_, source, infoOf(registry, source));
}

}  // namespace vlout::outlook::evolution
