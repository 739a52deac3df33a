#include "outlook/vcard/vcard_store.h"
#include "outlook/vcard/vcard_contact.h"

#include <fcntl.h>
#include <functional>
#include <string>
#include <sys/stat.h>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "outlook/pairing.h"
#include "tests/support/rename_hook.h"
#include "tests/support/temporary_folder.h"
#include "text/ascii.h"

namespace vlout::outlook::vcard {
namespace {

using P = ContactProperty;
using testing::ElementsAre;
using testing::HasSubstr;

class VCardStoreTest : public testing::Test {
 protected:
  std::unique_ptr<VCardStore> openStore() {
    auto store = std::make_unique<VCardStore>(folder.path().string());
    EXPECT_TRUE(store->connect()) << store->connectFailure();
    store->openContactsFolder();
    return store;
  }

  // Writes one file, changes its first contact and saves it; the file's text afterwards.
  std::string changed(const std::string& text, const std::function<void(Contact&)>& change) {
    tests::writeFile(folder.path() / "a.vcf", text);
    const auto store = openStore();
    const auto contact = store->item(1);
    change(*contact);
    contact->save();
    return tests::readFile(folder.path() / "a.vcf");
  }

  tests::TemporaryFolder folder;
};

TEST_F(VCardStoreTest, SavingTouchesOnlyWhatWasChanged) {
  const std::string card =
      "BEGIN:VCARD\r\nVERSION:3.0\r\nPRODID:-//Other//EN\r\nX-OTHER;P=\"a;b\":c,d;e\r\n"
      "NICKNAME:a,b\r\nN:Doe;John;Richter;Mr.;Sr.\r\nFN:Mr. John Richter Doe Sr.\r\n"
      "PHOTO:data:image/jpeg;base64,/9j/4AAQ\r\n "
      "SkZJRg==\r\nitem1.EMAIL;type=pref:a@example.com\r\n"
      "item1.X-ABLabel:work\r\nEMAIL:b@example.com\r\nEMAIL:c@example.com\r\nBDAY:--0322\r\n"
      "ADR;TYPE=HOME,PREF:;ext;old street;city;state;123;KR\r\nLABEL;TYPE=HOME:old street\r\n"
      "LABEL;TYPE=WORK:work label\r\nTEL:main\r\nEND:VCARD\r\n";
  // Setting what is there already changes nothing, not even the bytes.
  EXPECT_EQ(changed(card,
                    [](Contact& contact) {
                      for (const PropertyInfo& info : contactProperties()) {
                        if (info.kind == PropertyKind::Text) {
                          contact.setText(info.property, contact.text(info.property));
                        }
                      }
                      contact.setText(P::FullName, "Doe, John Richter");
                      contact.setDate(P::Birthday, text::noDate());
                      // An address is emptied before its line is written.
                      contact.setText(P::HomeAddressStreet, "");
                      contact.setText(P::HomeAddressStreet, "old street");
                    }),
            card);
  const std::string after = changed(card, [](Contact& contact) {
    contact.setText(P::HomeAddressStreet, "new street");
    contact.setText(P::Email1Address, "");
    contact.setText(P::JobTitle, "부장");
  });
  std::string expected = text::replaceAll(card, "old street;city", "new street;city");
  for (const char* gone : {"LABEL;TYPE=HOME:old street\r\n",
                           "item1.EMAIL;type=pref:a@example.com\r\n", "item1.X-ABLabel:work\r\n"}) {
    expected = text::replaceAll(expected, gone, "");
  }
  expected = text::replaceAll(expected, "EMAIL:b@", "EMAIL;X-VELMORA-SLOT=2:b@");
  expected = text::replaceAll(expected, "EMAIL:c@", "EMAIL;X-VELMORA-SLOT=more:c@");
  expected = text::replaceAll(expected, "END:VCARD", "TITLE:부장\r\nEND:VCARD");
  EXPECT_EQ(after, expected);
}

// Saves of cards that share a file are gathered. Another program may change the file before it is
// written, at the end of the run or, after a kill, when the folder is opened again.
class GatheredSavesTest : public VCardStoreTest {
 protected:
  struct Case {
    std::string found;  // what the other program has made of the file, if anything
    std::string after;
    std::vector<std::string> lost;
    std::function<void(const std::filesystem::path&)> damage{};  // of a killed run's journal
    bool isWritten = false;  // before the run was killed, which could not forget its journal
  };
  class Remembering : public Folder {
   public:
    using Folder::Folder;
    void dropGathered() override {}
  };

  static std::string card(const std::string& name, const std::string& title = "") {
    std::string text = "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:" + name + "\r\nN:;" + name + ";;;\r\n";
    text += std::string("X-VLID:") + static_cast<char>(name[0] - 'A' + '1') + "\r\n";
    if (!title.empty()) text += "TITLE:" + title + "\r\n";
    return text + "END:VCARD\r\n";
  }
  // With what stands around them, in its own bytes.
  static std::string around(const std::string& cards) {
    const std::string head =
        "\xEF\xBB\xBF"
        "BEGIN:VCARD\nVERSION:2.1\nN:Z\nKEY;ENCODING=BASE64:\n AAAA\n\nEND:VCARD\n\n";
    return head + cards + "BEGIN:VCARD\nVERSION:4.0\nKIND:group\nFN:G\nEND:VCARD\n";
  }

  // Card B gets a title twice, card C another key.
  void save(VCardStore& store) const {
    ASSERT_TRUE(store.connect());
    store.openContactsFolder();
    for (const char* title : {"1", "2"}) {
      const auto contact = store.item(3);
      contact->setText(P::JobTitle, title);
      contact->save();
      EXPECT_EQ(store.item(3)->text(P::JobTitle), title);
    }
    EXPECT_EQ(tests::readFile(whole / "many.vcf"), around(a + b + c));  // written once, at the end
    const auto contact = store.item(4);
    contact->setUserPropertyText("VLID", "9");
    contact->save();
  }

  void play(const Case& test, bool isKilled) {
    std::vector<std::string> lost;
    const auto lose = [&](const LostSave& save) { lost.push_back(save.person + save.row); };
    std::filesystem::remove_all(whole);
    tests::writeFile(whole / "many.vcf", around(a + b + c));
    auto store = std::make_unique<VCardStore>(whole.string(), [&](const std::string& path) {
      return std::unique_ptr<Folder>(test.isWritten ? new Remembering(path) : new Folder(path));
    });
    save(*store);
    if (test.isWritten) store->flush(lose);
    const auto path = isKilled ? folder.path() / "killed" : whole;
    if (isKilled) {
      std::filesystem::remove_all(path);
      std::filesystem::copy(whole, path);
      if (test.damage) test.damage(path);
    }
    if (!test.found.empty()) tests::writeFile(path / "many.vcf", around(test.found));
    if (isKilled) {
      store = std::make_unique<VCardStore>(path.string());
      ASSERT_TRUE(store->connect());
      store->completeSaves(lose);
      store->openContactsFolder();
      EXPECT_EQ(store->folderNotices().size(), lost.size());
    } else {
      store->flush(lose);
    }
    EXPECT_EQ(tests::readFile(path / "many.vcf"), around(test.after)) << isKilled;
    EXPECT_EQ(lost, test.lost) << test.after;
    EXPECT_THAT(tests::fileNames(path), ElementsAre("many.vcf"));
  }

  const std::filesystem::path whole = folder.path() / "whole";
  const std::string a = card("A");
  const std::string b = card("B");
  const std::string c = card("C");
};

TEST_F(GatheredSavesTest, MeetTheFileAsItIsThen) {
  const auto cutJournal = [](const std::filesystem::path& where) {
    const auto journal = where / ".vloutsync-journal";
    std::filesystem::resize_file(journal, std::filesystem::file_size(journal) - 1);
  };
  const auto damageJournal = [](const std::filesystem::path& where) {
    const auto journal = where / ".vloutsync-journal";
    tests::writeFile(journal, text::replaceAll(tests::readFile(journal), "TITLE:1", "TITLE:?"));
  };
  const std::string b2 = card("B", "2");
  const std::string keyed = text::replaceAll(c, "VLID:3", "VLID:9");  // nothing of a row's
  const std::vector<Case> cases{
      {"", a + b2 + keyed, {}},
      {a + b2 + keyed, a + b2 + keyed, {}},  // it had been written already
      {card("A", "x") + b + c, card("A", "x") + b2 + keyed, {}},
      {a + card("B", "x") + c, a + card("B", "x") + keyed, {"B2"}},
      {c + "\r\n" + a + b, keyed + "\r\n" + a + b2, {}},
      {b + b + c, b + b2 + keyed, {}},
      {b + b2 + c, b + b2 + keyed, {}},
      {a + b + c + b2, a + b2 + keyed + b2, {}},
      {a, a, {"B2", "C"}},
      {"", a + b2 + c, {}, cutJournal},
      {"", a + b + keyed, {"B2"}, damageJournal},
      {a + card("B", "x") + keyed, a + card("B", "x") + keyed, {}, {}, true},
  };
  for (const Case& test : cases) {
    play(test, true);
    if (!test.damage && !test.isWritten) play(test, false);
  }
}

TEST_F(VCardStoreTest, AwkwardParametersAndFileNamesSurviveInEveryVersion) {
  const std::vector<std::string> names{"a;b:c,d=e.jpg",      "back\\slash %41.jpg",
                                       "two\r\nlines",       std::string(60, 'n') + ".jpg",
                                       "명함,앞 \"뒤\".jpg", ""};
  for (const char* version : {"2.1", "3.0", "4.0"}) {
    tests::writeFile(
        folder.path() / "a.vcf",
        std::string("BEGIN:VCARD\r\nVERSION:") + version +
            "\r\nN:Kim;Minsu\r\nORG:Acme\r\nTEL;X-FOO=\"a;b:c\";TYPE=CELL:9\r\nEND:VCARD\r\n");
    tests::writeFile(folder.path() / "picture", "data");
    const auto store = openStore();
    const auto contact = store->item(1);
    contact->setText(P::MobileTelephoneNumber, "열");
    for (const std::string& name : names) contact->addAttachment(folder.path() / "picture", name);
    contact->save();
    store->openContactsFolder();
    const auto again = store->item(1);
    EXPECT_EQ(again->text(P::MobileTelephoneNumber), "열") << version;
    ASSERT_EQ(again->attachmentCount(), names.size()) << version;
    for (std::size_t i = 0; i < names.size(); ++i) {
      EXPECT_EQ(again->attachmentName(i + 1), names[i]) << version;
      EXPECT_EQ(dynamic_cast<VCardContact&>(*again).attachmentContent(i + 1), "data") << version;
    }
    // A display name that was missing is the person's, not the company's.
    EXPECT_THAT(tests::readFile(folder.path() / "a.vcf"), HasSubstr("FN:Minsu Kim\r\n"));
  }
}

TEST_F(VCardStoreTest, PlacesStayTheirsWhateverBecomesOfTheOthers) {
  struct Case {
    std::vector<P> properties;
    std::vector<std::string> values;
  };
  const std::vector<P> mails{P::Email1Address, P::Email2Address};
  const std::vector<P> numbers{P::BusinessTelephoneNumber, P::Business2TelephoneNumber};
  const std::vector<P> others{P::MobileTelephoneNumber, P::CompanyName, P::HomeAddressStreet};
  std::string text =
      "BEGIN:VCARD\r\nVERSION:3.0\r\nN:;A;;;\r\nFN:A\r\nEMAIL:1\r\nEMAIL:2\r\nEMAIL:3\r\n"
      "TEL;TYPE=CELL:1\r\nTEL;TYPE=CELL:2\r\nTEL;TYPE=WORK:1\r\nTEL;TYPE=WORK:2\r\nTEL;TYPE=WORK:"
      "3\r\n"
      "ORG:1\r\nORG:2\r\nADR;TYPE=HOME:;;1;;;;\r\nADR;TYPE=HOME:;;2;;;;\r\nEND:VCARD\r\n";
  for (const Case& c :
       {Case{mails, {"", ""}}, Case{numbers, {"", ""}}, Case{others, {"", "", ""}},
        Case{mails, {"", "2"}}, Case{mails, {"1", "2"}}, Case{mails, {"", "2"}},
        Case{mails, {"1", ""}}, Case{mails, {"1", "3"}}, Case{numbers, {"", "2"}},
        Case{numbers, {"1", "2"}}, Case{numbers, {"", "2"}}, Case{numbers, {"1", ""}}}) {
    text = changed(text, [&](Contact& contact) {
      for (std::size_t i = 0; i < c.values.size(); ++i)
        contact.setText(c.properties[i], c.values[i]);
    });
    const auto store = openStore();
    const auto contact = store->item(1);
    for (std::size_t i = 0; i < c.values.size(); ++i) {
      EXPECT_EQ(contact->text(c.properties[i]), c.values[i]) << text;
    }
    if (c.properties != others) continue;
    for (const char* kept : {":3\r\n", "CELL;X-VELMORA-SLOT=2:2\r\n", ":;;2;;;;\r\n"}) {
      EXPECT_THAT(text, HasSubstr(kept));
    }
  }
}

TEST_F(VCardStoreTest, LinksStayLinksAndProtectedFilesAreLeftAlone) {
  const std::string card = "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:A\r\nN:;A;;;\r\nEND:VCARD\r\n";
  const tests::TemporaryFolder elsewhere;
  tests::writeFile(elsewhere.path() / "target.vcf", card);
  std::filesystem::create_symlink(elsewhere.path() / "target.vcf", folder.path() / "link.vcf");
  const auto store = openStore();
  const auto contact = store->item(1);
  contact->setText(P::JobTitle, "T");
  contact->save();
  contact->setText(P::JobTitle, "U");
  contact->save();  // and the state of the file behind the link is known afterwards
  EXPECT_TRUE(std::filesystem::is_symlink(folder.path() / "link.vcf"));
  EXPECT_THAT(tests::readFile(elsewhere.path() / "target.vcf"), HasSubstr("TITLE:U"));
  EXPECT_THAT(tests::fileNames(elsewhere.path()), ElementsAre("target.vcf"));

  // One file under several names is one contact, and stays one.
  std::filesystem::rename(folder.path() / "link.vcf", folder.path() / "z.vcf");
  tests::writeFile(folder.path() / "own.vcf", text::replaceAll(card, "FN:A", "FN:own"));
  std::filesystem::create_hard_link(folder.path() / "own.vcf", folder.path() / "second.vcf");
  std::filesystem::create_symlink("own.vcf", folder.path() / "first.vcf");
  std::filesystem::create_symlink(elsewhere.path() / "target.vcf", folder.path() / "zz.vcf");
  store->openContactsFolder();
  ASSERT_EQ(store->count(), 2U);
  const auto own = store->item(1);
  own->setText(P::JobTitle, "V");
  own->save();
  for (const char* name : {"own.vcf", "second.vcf", "first.vcf"}) {
    EXPECT_THAT(tests::readFile(folder.path() / name), HasSubstr("TITLE:V")) << name;
  }
  EXPECT_TRUE(std::filesystem::is_symlink(folder.path() / "first.vcf"));
  store->openContactsFolder();
  EXPECT_EQ(store->count(), 2U);
  tests::writeFile(folder.path() / "sparse.vcf", "");
  std::filesystem::resize_file(folder.path() / "sparse.vcf", std::uintmax_t{1} << 42);
  EXPECT_THROW(store->openContactsFolder(), ContactStoreError);
}

TEST_F(VCardStoreTest, NamesWhatItCannotReadAndGoesOn) {
  tests::writeFile(folder.path() / "binary.vcf", std::string("\0\1\2\xFF", 4));
  tests::writeFile(folder.path() / "cut.vcf", "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:cut");
  tests::writeFile(folder.path() / "cut2.vcf",
                   "BEGIN:VCARD\r\nFN:cut\r\nBEGIN:VCARD\r\nVERSION:3.0\r\nFN:whole\r\nEND:VCARD");
  tests::writeFile(folder.path() / "empty.vcf", "");
  tests::writeFile(folder.path() / "note.txt", "no card");
  tests::writeFile(folder.path() / ".hidden.vcf", "no card");
  std::filesystem::create_directory(folder.path() / "folder.vcf");
  ASSERT_EQ(mkfifo((folder.path() / "pipe.vcf").c_str(), 0600), 0);
  const auto store = openStore();
  ASSERT_EQ(store->count(), 1U);
  EXPECT_EQ(store->item(1)->text(P::FullName), "whole");
  EXPECT_THAT(store->folderNotices(), ElementsAre(HasSubstr("binary.vcf"), HasSubstr("cut.vcf"),
                                                  HasSubstr("cut2.vcf"), HasSubstr("empty.vcf")));
  EXPECT_THROW(static_cast<void>(store->item(2)), ContactStoreError);
}

TEST_F(VCardStoreTest, AnotherProgramsChangeIsNotOverwritten) {
  const auto file = folder.path() / "a.vcf";
  const auto card = [](const std::string& name) {
    return "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:" + name + "\r\nN:;A;;;\r\nEND:VCARD\r\n";
  };
  const auto writeTheirs = [&](int number) {
    tests::writeFile(folder.path() / "theirs", card("theirs" + std::to_string(number)));
    std::filesystem::rename(folder.path() / "theirs", file);
  };
  struct Case {
    bool exchanges;  // what the file system can do
    int first;       // the exchange before which they write for the first time; none is before it
    int last;        // and for the last time
    int left;        // their version that is there in the end
    int kept;        // the one that would be lost without having been replaced by its own people
  };
  const std::vector<Case> cases{{true, -1, -1, -1, 0}, {true, 0, 0, 0, 0},  {true, 0, 1, 1, 1},
                                {true, 0, 2, 2, 2},    {false, 0, 0, 0, 0}, {false, -1, -1, -1, 0}};
  for (const Case& c : cases) {
    tests::writeFile(file, card("A"));
    const auto store = openStore();
    const auto contact = store->item(1);
    contact->setText(P::JobTitle, "ours");
    if (c.first < 0) writeTheirs(-1);
    tests::onExchange([&](int exchange) {
      if (exchange >= c.first && exchange <= c.last) writeTheirs(exchange);
      return c.exchanges;
    });
    EXPECT_THROW(contact->save(), ContactStoreError);
    tests::onExchange({});
    EXPECT_EQ(tests::readFile(file), card("theirs" + std::to_string(c.left)));
    std::filesystem::remove(file);
    EXPECT_THROW(contact->save(), ContactStoreError);
    // No temporary file either.
    if (c.kept == 0) {
      EXPECT_THAT(tests::fileNames(folder.path()), ElementsAre());
      continue;
    }
    EXPECT_THAT(tests::fileNames(folder.path()), ElementsAre(".vloutsync-kept-1.vcf"));
    EXPECT_EQ(tests::readFile(folder.path() / ".vloutsync-kept-1.vcf"),
              card("theirs" + std::to_string(c.kept - 1)));
    store->openContactsFolder();
    EXPECT_THAT(store->folderNotices(), ElementsAre(HasSubstr(".vloutsync-kept-1.vcf")));
    std::filesystem::remove(folder.path() / ".vloutsync-kept-1.vcf");
  }
  // One who has the file open for writing would go on writing into a file without a name.
  tests::writeFile(file, card("A"));
  const auto store = openStore();
  const auto contact = store->item(1);
  const int writer = open(file.c_str(), O_WRONLY | O_CLOEXEC);
  EXPECT_THROW(contact->save(), ContactStoreError);
  close(writer);
  contact->save();
  // A run that did not get as far as the folder leaves the next one nothing of what it listed.
  store->expectOpening();
  for (int i = 0; i < 300; ++i) {
    tests::writeFile(folder.path() / (std::to_string(i) + ".vcf"), card("B"));
  }
  ASSERT_TRUE(store->connect());
  store->openContactsFolder();
  EXPECT_EQ(store->count(), 301U);
}

TEST_F(VCardStoreTest, FilesKeepTheirModeAndNewOnesArePrivate) {
  const auto file = folder.path() / "a.vcf";
  tests::writeFile(file, "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:A\r\nN:;A;;;\r\nEND:VCARD\r\n");
  ASSERT_EQ(chmod(file.c_str(), 0640), 0);
  struct stat status {};
  ASSERT_EQ(stat(file.c_str(), &status), 0);
  // A folder that has the name of our temporary file is nobody's fault.
  const std::string draft =
      ".vloutsync-" + std::to_string(status.st_ino) + "-" + std::to_string(status.st_size) + "-" +
      std::to_string(status.st_mtim.tv_sec) + "-" + std::to_string(status.st_mtim.tv_nsec);
  std::filesystem::create_directory(folder.path() / (draft + ".tmp"));
  for (const std::string& left : {draft + ".1.tmp", std::string(".vloutsync-0-0-0-0.tmp")}) {
    tests::writeFile(folder.path() / left, "half of ours, left by a killed run");
  }
  // What a killed run had taken out of its place for it and could not put back.
  tests::writeFile(folder.path() / ".vloutsync-1-2-3-4.tmp", "theirs");
  const auto nobodys = folder.path() / ".vloutsync-1-2-3-5.tmp";
  std::filesystem::create_directory(nobodys);
  const auto store = openStore();
  EXPECT_EQ(tests::readFile(folder.path() / ".vloutsync-kept-1.vcf"), "theirs");
  std::filesystem::remove(folder.path() / ".vloutsync-kept-1.vcf");
  store->item(1)->save();
  EXPECT_TRUE(std::filesystem::remove(folder.path() / (draft + ".tmp")));
  EXPECT_TRUE(std::filesystem::remove(nobodys));
  store->create()->save();
  ASSERT_EQ(stat(file.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0640U);
  const auto files = tests::fileNames(folder.path());
  ASSERT_EQ(files.size(), 2U);  // the killed run's files are gone
  const auto created = folder.path() / (files[0] == "a.vcf" ? files[1] : files[0]);
  ASSERT_EQ(stat(created.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600U);
  EXPECT_EQ(store->count(), 2U);  // the new contact came to the end
}

TEST_F(VCardStoreTest, OneProcessAtATimeAndOnlyInAFolderThatIsThere) {
  const auto store = openStore();
  VCardStore second(folder.path().string());
  EXPECT_FALSE(second.connect());
  EXPECT_THAT(second.connectFailure(), HasSubstr(folder.path().string()));
  VCardStore missing((folder.path() / "missing").string());
  EXPECT_FALSE(missing.connect());
  EXPECT_THAT(missing.connectFailure(), HasSubstr("missing"));
}

}  // namespace
}  // namespace vlout::outlook::vcard
