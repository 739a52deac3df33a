// Real address books: a local one and one of a CardDAV server, in a desktop session of their own
// (tests/support/desktop_session). What other devices do is played through the service itself and
// by HTTP requests to the server.
#include <algorithm>
#include <cstdlib>
#include <functional>
#include <map>
#include <signal.h>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "outlook/evolution/evolution_store.h"
#include "outlook/evolution/fingerprint.h"
#include "outlook/pairing.h"
#include "outlook/vcard/card_text.h"
#include "outlook/vcard/vcard_contact.h"
#include "tests/support/temporary_folder.h"
#include "text/ascii.h"

namespace vlout::outlook::evolution {
namespace {

using P = ContactProperty;

const char* inSession(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? "" : value;
}

// The processes of this session that serve address books.
std::vector<pid_t> factories() {
  std::vector<pid_t> result;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    const auto pid = text::parseInteger(entry.path().filename().string());
    if (!pid) continue;
    const std::string command = tests::readFile(entry.path() / "cmdline");
    const std::string environment = tests::readFile(entry.path() / "environ");
    const bool isOurs =
        environment.find("HOME=" + std::string(inSession("HOME")) + '\0') != std::string::npos;
    if (isOurs && command.find("addressbook-factory") != std::string::npos) {
      result.push_back(static_cast<pid_t>(*pid));
    }
  }
  return result;
}

void signalFactories(int signal) {
  for (const pid_t factory : factories()) ::kill(factory, signal);
}

class EvolutionStoreTest : public testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    auto other = otherProgram();
    for (const StoredCard& card : other->list()) other->remove(card.uid);
  }

  [[nodiscard]] static std::string bookUid() { return inSession(GetParam()); }
  [[nodiscard]] static bool isOnServer() { return bookUid() == inSession("VLOUT_DAV_BOOK"); }

  // Another program of the desktop at work on the book.
  std::unique_ptr<Book> otherProgram() {
    return std::make_unique<Desktop>([] {})->open(bookUid());
  }
  void edit(const std::string& uid, const std::string& from, const std::string& to) {
    auto other = otherProgram();
    const std::string text = other->get(uid).value();
    other->modify(text::replaceAll(text, from, to));
  }

  std::unique_ptr<EvolutionStore> open(std::chrono::milliseconds patience = Calls::kPatience) {
    auto store = std::make_unique<EvolutionStore>(EvolutionStore::Settings{
        .componentFolder = folder.path(),
        .desktop = std::make_shared<Desktop>([this] { ++waits; }, patience),
        .book = bookUid()});
    EXPECT_TRUE(store->connect()) << store->connectFailure();
    store->openContactsFolder();
    return store;
  }

  static void write(Contact& contact, const std::string& name, const std::string& key,
                    void (Contact::*save)() = &Contact::save) {
    contact.setText(P::FullName, name);
    contact.setText(P::Email2Address, "a;b,c@example.com");
    contact.setText(P::Spouse, "이,영희");
    contact.setText(P::HomeAddressStreet, "세종로 1\n2층");
    contact.setText(P::Categories, "친구, 동창");
    contact.setDate(P::Birthday, text::parseDateTime("1980-03-22").value());
    contact.setGender(Gender::Female);
    addVLID(contact, key);
    (contact.*save)();
  }
  // New contacts whose saves wait.
  static std::vector<std::unique_ptr<Contact>> writeTogether(EvolutionStore& store) {
    std::vector<std::unique_ptr<Contact>> contacts;
    for (const char* const key : {"1", "2", "3"}) {
      EXPECT_TRUE(store.postponesNext());
      contacts.push_back(store.create());
      write(*contacts.back(), "홍 길동", key, &Contact::saveSent);
    }
    return contacts;
  }
  static bool isSaved(Contact& contact) {
    try {
      return contact.lastModificationTime() <= text::localNow();
    } catch (const ContactStoreError&) {
      return false;
    }
  }

  // Tries for a while.
  static bool succeeds(const std::function<void()>& step) {
    for (int i = 0; i < 20; ++i) {
      try {
        step();
        return true;
      } catch (const ContactStoreError&) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
      }
    }
    return false;
  }

  tests::TemporaryFolder folder;
  int waits = 0;
};

TEST_P(EvolutionStoreTest, WhatIsSavedComesBackAndHasNotChanged) {
  tests::writeFile(folder.path() / "picture.jpg", std::string("\xFF\xD8\0\x01", 4));
  text::DateTime saved;
  {
    const auto store = open();
    const auto contact = store->create();
    contact->addAttachment(folder.path() / "picture.jpg", "명함 \"앞\";1.jpg");
    write(*contact, "홍 길동", "7");
    saved = contact->lastModificationTime();
    EXPECT_EQ(store->keyWhenOpened(1), "7");
  }
  otherProgram()->add(
      {"BEGIN:VCARD\r\nVERSION:3.0\r\nUID:a-list\r\nFN:모임\r\nN:;;;;\r\n"
       "X-EVOLUTION-LIST:TRUE\r\nEMAIL;X-EVOLUTION-DEST-NAME=x:x@example.com\r\n"
       "END:VCARD\r\n"});
  static_cast<void>(open());  // reads the contacts; the next time the table tells
  const auto store = open();
  ASSERT_EQ(store->count(), 2U);
  const auto list = store->item(store->item(1)->typeName() == kContactItem ? 2 : 1);
  EXPECT_EQ(list->typeName(), "DistListItem");
  const auto contact = store->item(store->item(1)->typeName() == kContactItem ? 1 : 2);
  EXPECT_EQ(contact->text(P::FullName), "홍길동");
  EXPECT_EQ(contact->text(P::Email1Address), "");
  EXPECT_EQ(contact->text(P::Email2Address), "a;b,c@example.com");
  EXPECT_EQ(contact->text(P::Spouse), "이,영희");
  EXPECT_EQ(contact->text(P::HomeAddressStreet), "세종로 1\n2층");
  EXPECT_EQ(contact->text(P::Categories), "친구, 동창");
  EXPECT_EQ(text::formatDay(contact->date(P::Birthday)), "1980-03-22");
  EXPECT_EQ(contact->gender(), Gender::Female);
  EXPECT_EQ(contact->attachmentName(1), "명함 \"앞\";1.jpg");
  EXPECT_EQ(readVLID(*contact), "7");
  EXPECT_EQ(contact->lastModificationTime(), saved);
}

// What other programs and servers do to a stored contact, and whether that is a change.
TEST_P(EvolutionStoreTest, OnlyOtherContentIsAChange) {
  struct Case {
    const char* from;
    const char* to;
    bool isChange;
  };
  for (const Case& each : std::vector<Case>{
           {"X-VLID:7\r\n", "", false},
           {"CATEGORIES:친구,동창", "CATEGORIES:친구\\,동창", false},
           {"END:VCARD", "X-EVOLUTION-SOMETHING:1\r\nEND:VCARD", false},
           {"END:VCARD", "X-PHONE:1\r\nEND:VCARD", true},
           {"X-EVOLUTION-SPOUSE:이", "X-EVOLUTION-SPOUSE:김", true},
           {"FN:홍", "FN:황", true},
           {"X-VELMORA-SLOT=2", "X-VELMORA-SLOT=3", true},
       }) {
    SCOPED_TRACE(each.from + std::string(" → ") + each.to);
    SetUp();
    write(*open()->create(), "홍 길동", "7");
    const std::string uid = otherProgram()->list().at(0).uid;
    const auto before = open()->item(1)->lastModificationTime();
    edit(uid, each.from, each.to);
    const auto after = open()->item(1)->lastModificationTime();
    EXPECT_EQ(after > before, each.isChange);
    EXPECT_EQ(open()->item(1)->lastModificationTime(), after) << "it changed once";
    EXPECT_EQ(readVLID(*open()->item(1)), "7");
  }
}

TEST_P(EvolutionStoreTest, AKeyThatWasDroppedIsWrittenAgain) {
  write(*open()->create(), "홍 길동", "7");
  const std::string uid = otherProgram()->list().at(0).uid;
  edit(uid, "X-VLID:7\r\n", "");
  const auto store = open();
  const auto contact = store->item(1);
  contact->setText(P::JobTitle, "과장");
  contact->save();
  EXPECT_NE(otherProgram()->get(uid)->find("X-VLID:7"), std::string::npos);
}

TEST_P(EvolutionStoreTest, AShownPictureFollowsItsCardUntilOthersExchangeIt) {
  const auto show = [&](const std::string& jpeg) {
    const auto store = open();
    const auto contact = store->item(1);
    contact->showPicture(jpeg);
    contact->save();
    return dynamic_cast<vcard::VCardContact&>(*open()->item(1)).shownPicture();
  };
  write(*open()->create(), "홍 길동", "7");
  const std::string begin = "\xFF\xD8\xFF\xE0";
  EXPECT_EQ(show(begin + "card"), begin + "card");
  EXPECT_EQ(show(begin + "renewed"), begin + "renewed");
  auto other = otherProgram();
  vcard::CardText card(other->list().at(0).text);
  card.replace(card.firstNamed("PHOTO").value(), {"/9j/4AAQ"});
  card.change(card.firstNamed("PHOTO").value()).parameters = {{"ENCODING", {"b"}}};
  other->modify(card.write());
  other.reset();
  EXPECT_EQ(show(begin + "card"), begin + std::string("\0\x10", 2));
}

TEST_P(EvolutionStoreTest, AnotherProgramsEditIsNotOverwritten) {
  auto store = open();
  write(*store->create(), "홍 길동", "7");
  const std::string uid = otherProgram()->list().at(0).uid;
  const auto save = [&](const char* title) {
    const auto contact = store->item(1);
    contact->setText(P::JobTitle, title);
    contact->save();
  };
  EXPECT_NO_THROW(save("과장"));
  EXPECT_NO_THROW(save("부장"));
  edit(uid, "TITLE:부장", "TITLE:사장");
  EXPECT_THROW(save("이사"), ContactStoreError);
  EXPECT_NE(otherProgram()->get(uid)->find("TITLE:사장"), std::string::npos);
  store = open();
  otherProgram()->remove(uid);
  EXPECT_THROW(save("이사"), ContactStoreError);
  EXPECT_TRUE(otherProgram()->list().empty());
}

TEST_P(EvolutionStoreTest, AServiceThatDiesCostsARecordAndOneThatHangsARun) {
  auto store = open();
  write(*store->create(), "홍 길동", "7");
  signalFactories(SIGKILL);
  EXPECT_THROW(write(*store->item(1), "김 철수", "7"), ContactStoreError);
  // It starts again while records fail.
  EXPECT_TRUE(succeeds([&] { write(*store->item(1), "김 철수", "7"); }));
  signalFactories(SIGKILL);
  EXPECT_NO_THROW(store->openContactsFolder()) << "a run that only begins loses nothing";
  store = open(std::chrono::seconds(1));
  signalFactories(SIGSTOP);
  waits = 0;
  EXPECT_THROW(write(*store->item(1), "박 영수", "7"), ContactStoreError);
  EXPECT_GT(waits, 5);
  waits = 0;
  EXPECT_THROW(write(*store->item(1), "박 영수", "7"), ContactStoreError);
  EXPECT_EQ(waits, 0) << "each record of the run waits again";
  signalFactories(SIGCONT);
  const auto reads = [&] {
    EXPECT_TRUE(store->connect());
    store->openContactsFolder();
  };
  EXPECT_TRUE(succeeds(reads));
  EXPECT_EQ(store->count(), 1U);
  if (!isOnServer()) return;
  const auto server = [](const std::string& what) {
    return std::system((inSession("HOME") + ("/server " + what)).c_str());
  };
  ASSERT_EQ(server("stop"), 0);
  EXPECT_THROW(write(*store->item(1), "박 영수", "7"), ContactStoreError);
  ASSERT_EQ(server("start"), 0);
  EXPECT_TRUE(succeeds([&] {
    reads();
    write(*store->item(1), "최 미라", "7");
  }));
  EXPECT_EQ(store->count(), 1U);
}

TEST_P(EvolutionStoreTest, NewContactsThatAreSavedTogetherFailOneByOne) {
  auto store = open();
  if (isOnServer()) {
    EXPECT_FALSE(store->postponesNext());
    return;
  }
  auto contacts = writeTogether(*store);
  EXPECT_TRUE(otherProgram()->list().empty());
  // Another contact has the UID of the second.
  std::istringstream table(tests::readFile(folder.path() / "books" / bookUid()));
  std::vector<std::string> uids;
  for (std::string kind, uid, rest; table >> kind >> uid && std::getline(table, rest);) {
    uids.push_back(uid);
  }
  otherProgram()->add(
      {"BEGIN:VCARD\r\nVERSION:3.0\r\nUID:" + uids.at(1) + "\r\nFN:먼저\r\nEND:VCARD\r\n"});
  store->savePostponed();
  EXPECT_TRUE(isSaved(*contacts[0]) && !isSaved(*contacts[1]) && isSaved(*contacts[2]));
  EXPECT_EQ(store->keyWhenOpened(3), "3");
  EXPECT_EQ(otherProgram()->list().size(), 3U);
  EXPECT_EQ(open()->count(), 3U);
  // The service dies with them.
  SetUp();
  store = open();
  contacts = writeTogether(*store);
  signalFactories(SIGKILL);
  store->savePostponed();
  const auto saved = std::count_if(contacts.begin(), contacts.end(),
                                   [](const auto& contact) { return isSaved(*contact); });
  EXPECT_EQ(open()->count(), static_cast<std::size_t>(saved));
}

TEST_P(EvolutionStoreTest, ADamagedTableOnlyForgets) {
  write(*open()->create(), "홍 길동", "7");
  const auto table = folder.path() / "books" / bookUid();
  const auto saved = open()->item(1)->lastModificationTime();
  const std::string whole = tests::readFile(table);
  tests::writeFile(table, text::replaceAll(whole, " contact =7\n", "\n"));  // as it once was
  EXPECT_EQ(open()->item(1)->lastModificationTime(), saved);
  EXPECT_EQ(tests::readFile(table), whole.substr(whole.find("\n=") + 1));
  for (const std::size_t size :
       {whole.size(), whole.size() - 1, whole.size() / 2, std::size_t{0}}) {
    tests::writeFile(table, whole.substr(0, size));
    EXPECT_LE(open()->item(1)->lastModificationTime(), text::localNow()) << size;
    EXPECT_EQ(readVLID(*open()->item(1)), "7") << size;
  }
  tests::writeFile(table, "= x\n\xFF\xFF\n? " + whole);
  EXPECT_EQ(readVLID(*open()->item(1)), "7");
}

TEST_P(EvolutionStoreTest, WhatAPhoneWritesArrives) {
  if (!isOnServer()) return;
  write(*open()->create(), "홍 길동", "7");
  const std::filesystem::path files = inSession("VLOUT_DAV_FILES");
  const std::string file = tests::fileNames(files).back();
  std::string card = tests::readFile(files / file);
  EXPECT_NE(card.find("X-VLID:7"), std::string::npos) << card;
  const auto before = open()->item(1)->lastModificationTime();
  // The phone knows none of our properties.
  card = text::replaceAll(card, "X-VLID:7\r\n", "");
  card = text::replaceAll(card, "FN:홍길동", "FN:홍길순");
  card = text::replaceAll(card, "N:홍;길동", "N:홍;길순");
  const auto put = [&] {
    tests::writeFile(folder.path() / "phone.vcf", card);
    const std::string command = "curl -sf -X PUT -H 'Content-Type: text/vcard' --data-binary @" +
                                (folder.path() / "phone.vcf").string() + " " +
                                inSession("VLOUT_DAV_URL") + file;
    ASSERT_EQ(std::system(command.c_str()), 0);
  };
  put();
  const auto store = open();
  const auto contact = store->item(1);
  EXPECT_EQ(contact->text(P::FullName), "홍길순");
  EXPECT_EQ(readVLID(*contact), "7");
  EXPECT_GT(contact->lastModificationTime(), before);
  // It writes while a run is under way, and the desktop does not know it yet.
  card = text::replaceAll(card, "END:VCARD", "TITLE:전화에서\r\nEND:VCARD");
  put();
  contact->setText(P::JobTitle, "과장");
  EXPECT_THROW(contact->save(), ContactStoreError);
  EXPECT_NE(tests::readFile(files / file).find("TITLE:전화에서"), std::string::npos);
}

TEST_P(EvolutionStoreTest, BooksAreListedAndChosenByName) {
  write(*open()->create(), "홍 길동", "7");
  std::string seen;
  std::optional<std::size_t> contacts;
  Desktop desktop([] {});
  for (const BookInfo& book : desktop.books()) {
    seen += book.uid + "|" + book.name + "|" + book.kind + "|" + (book.isDefault ? "*" : "") + "|" +
            (book.writable == true ? "w" : "") + "|" + book.failure + "\n";
    if (book.uid == bookUid()) contacts = book.contacts;
  }
  EXPECT_EQ(contacts, 1U);
  EXPECT_EQ(desktop.knownBooks().size(), desktop.books().size());
  EXPECT_NE(seen.find("test-local|Local|local||w|\n"), std::string::npos) << seen;
  EXPECT_NE(seen.find("test-dav|Server|carddav||w|\n"), std::string::npos) << seen;
  EXPECT_NE(seen.find("test-fixed|Fixed|carddav|||\n"), std::string::npos) << seen;
  EXPECT_NE(seen.find("system-address-book|Personal|local|*|w|\n"), std::string::npos) << seen;
  EXPECT_EQ(desktop.open("Server")->info().uid, "test-dav");
  EXPECT_EQ(desktop.open("")->info().uid, "system-address-book");
  for (const auto& [book, reason] : std::map<std::string, std::string>{
           {"no such book", "그런 주소록이 없습니다"},
           {"test-password", "암호가 데스크톱에 없거나"},
           {"test-away", "서버에 연결할 수 없습니다"},
           {"test-fixed", "읽기 전용 주소록입니다"},
       }) {
    try {
      static_cast<void>(desktop.open(book)->list());
      ADD_FAILURE() << book << " was opened";
    } catch (const ContactStoreError& error) {
      EXPECT_NE(std::string(error.what()).find(reason), std::string::npos) << error.what();
    }
  }
}

// The last one: the service goes on waiting for somebody to log in.
TEST_P(EvolutionStoreTest, ABookThatBecomesReadOnlyTakesNothing) {
  if (!isOnServer()) return;
  const auto store = open(std::chrono::seconds(1));
  write(*store->create(), "홍 길동", "7");
  const std::filesystem::path rights = std::filesystem::path(inSession("HOME")) / "rights";
  const std::string all = tests::readFile(rights);
  tests::writeFile(rights, text::replaceAll(all, "RrWw", "Rr"));
  const auto failureOf = [](const std::function<void()>& step) -> std::string {
    try {
      step();
    } catch (const ContactStoreError& error) {
      return error.what();
    }
    return {};
  };
  constexpr const char* kRefused = "Server: 서버가 받아들이지 않습니다";
  std::string failure = failureOf([&] { write(*store->item(1), "김 철수", "7"); });
  EXPECT_NE(failure.find(kRefused), std::string::npos) << failure;
  EXPECT_TRUE(store->connect());  // the next run meets a service that still waits
  failure = failureOf([&] { store->openContactsFolder(); });
  EXPECT_NE(failure.find(kRefused), std::string::npos) << failure;
  tests::writeFile(rights, all);
  const std::filesystem::path files = inSession("VLOUT_DAV_FILES");
  const std::string card = tests::readFile(files / tests::fileNames(files).back());
  EXPECT_NE(card.find("FN:홍길동"), std::string::npos) << card;
}

INSTANTIATE_TEST_SUITE_P(Books, EvolutionStoreTest,
                         testing::Values("VLOUT_LOCAL_BOOK", "VLOUT_DAV_BOOK"),
                         [](const auto& info) { return std::string(info.param).substr(6, 3); });

}  // namespace
}  // namespace vlout::outlook::evolution
