// Walks tests/cards: each file is read and compared with what its `.expected` lists, every mapped
// property is edited in turn, and what is written is read again, people and untouched bytes.
#include <array>
#include <fstream>
#include <map>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "outlook/vcard/card_text.h"
#include "outlook/vcard/vcard_store.h"
#include "tests/support/temporary_folder.h"
#include "text/ascii.h"

namespace vlout::outlook::vcard {
namespace {

using P = ContactProperty;
using Person =
    std::map<std::string, std::string>;  // values by property; those without are left out

constexpr const char* kUnreadable = "(unreadable)";

struct Expected {
  std::vector<Person> people;
  std::vector<std::string> notices;
  bool rewrites = false;  // an edit may write other lines anew, such as all of them in UTF-8
};

Expected readExpected(const std::filesystem::path& file) {
  Expected expected;
  std::ifstream stream(file);
  for (std::string line; std::getline(stream, line);) {
    if (line.starts_with("notice ")) expected.notices.push_back(line.substr(7));
    if (line == "rewrites") expected.rewrites = true;
    if (line == "card") expected.people.emplace_back();
    if (!line.starts_with("  ")) continue;
    const std::size_t colon = line.find(": ");
    std::string value;
    for (std::size_t i = colon + 2; colon < line.size() && i < line.size(); ++i) {
      const bool escaped = line[i] == '\\';
      value += escaped && line[++i] == 'n' ? '\n' : line[i];
    }
    const bool unreadable = line.ends_with(" unreadable");
    expected.people.back()[line.substr(2, unreadable ? line.size() - 13 : colon - 2)] =
        unreadable ? kUnreadable : value;
  }
  return expected;
}

std::string valueOf(Contact& contact, const PropertyInfo& info) {
  try {
    if (info.kind == PropertyKind::Date) {
      const auto date = contact.date(info.property);
      return date == text::noDate() ? "" : text::formatDay(date);
    }
    if (info.kind != PropertyKind::Gender) return contact.text(info.property);
    const Gender gender = contact.gender();
    return gender == Gender::Male ? "male" : gender == Gender::Female ? "female" : "";
  } catch (const UnreadableProperty&) {
    return kUnreadable;
  }
}

void setValue(Contact& contact, const PropertyInfo& info, const std::string& value) {
  if (info.kind == PropertyKind::Date) {
    contact.setDate(info.property, text::parseDateTime(value).value_or(text::noDate()));
  } else if (info.kind == PropertyKind::Gender) {
    contact.setGender(value == "male"     ? Gender::Male
                      : value == "female" ? Gender::Female
                                          : Gender::Unspecified);
  } else {
    contact.setText(info.property, value);
  }
}

class Folder {
 public:
  explicit Folder(const std::string& card) { tests::writeFile(file(), card); }

  [[nodiscard]] std::filesystem::path file() const { return folder_.path() / "card.vcf"; }

  std::unique_ptr<VCardStore> open() const {
    auto store = std::make_unique<VCardStore>(folder_.path().string());
    EXPECT_TRUE(store->connect());
    store->openContactsFolder();
    return store;
  }

  [[nodiscard]] std::vector<Person> people() const {
    const auto store = open();
    std::vector<Person> result;
    for (std::size_t i = 1; i <= store->count(); ++i) {
      const auto contact = store->item(i);
      Person person;
      for (const PropertyInfo& info : contactProperties()) {
        const std::string value = valueOf(*contact, info);
        if (!value.empty()) person[std::string(info.objectModelName)] = value;
      }
      result.push_back(std::move(person));
    }
    return result;
  }

  void edit(std::size_t card, const PropertyInfo& info, const std::string& value) const {
    const auto store = open();
    const auto contact = store->item(card);
    setValue(*contact, info, value);
    contact->save();
  }

  // The file's lines but for those that an edit of the property may write anew.
  [[nodiscard]] std::vector<std::string> linesBeside(const PropertyInfo& info) const {
    std::string names = std::string(info.vcard.names) + " " + std::string(info.vcard.labelledName);
    names += " FN REV LABEL " + std::string(info.kind == PropertyKind::Name ? "N " : " ");
    std::string text = tests::readFile(file());
    EXPECT_TRUE(convertFile(text).has_value());
    std::vector<std::string> lines;
    LineReader reader(text);
    while (!reader.atEnd()) {
      const std::string_view line = reader.next();
      const std::string name = text::toAsciiUpper(lineName(line));
      if ((" " + names).find(" " + name + " ") == std::string::npos || name.empty()) {
        lines.emplace_back(line);
      }
    }
    return lines;
  }

 private:
  tests::TemporaryFolder folder_;
};

// What an edit must leave as it was: all but the property itself, and what follows from it.
Person beside(Person person, const PropertyInfo& info) {
  for (const char* name : {"FullName", "LastNameAndFirstName"}) {
    if (info.kind == PropertyKind::Name || person[name] == kUnreadable) person.erase(name);
  }
  person.erase(std::string(info.objectModelName));
  // Where a line could not be read, an edit of one part replaces the others too.
  std::erase_if(person, [](const auto& entry) {
    return entry.second.empty() || entry.second == kUnreadable;
  });
  return person;
}

// Names follow from their parts, which are edited instead.
bool isEdited(const PropertyInfo& info) {
  return info.property != P::FullName && info.property != P::LastNameAndFirstName;
}

// One value or another, so that every kind of it meets every card.
std::string newValue(const PropertyInfo& info, std::size_t turn, bool anyCharacter) {
  if (info.kind == PropertyKind::Date) return "1999-12-31";
  if (info.kind == PropertyKind::Gender) return turn % 2 == 0 ? "male" : "female";
  if (info.property == P::Categories) return "거래처, VIP";
  constexpr std::array<const char*, 3> kTexts{"새 값; \"a,b\\c\"\n둘째", "plain", "새 값"};
  return kTexts.at(turn % kTexts.size()) + std::string(anyCharacter ? " 😀" : "");
}

// A card that had no `N` gets one, whatever is edited.
bool keepsLines(const std::vector<std::string>& before, const std::vector<std::string>& after) {
  std::size_t kept = 0;
  for (const std::string& line : after) {
    if (kept < before.size() && line == before[kept]) {
      ++kept;
    } else if (!line.starts_with("N:")) {
      return false;
    }
  }
  return kept == before.size();
}

void editEverything(const std::string& card, const Expected& expected) {
  for (std::size_t i = 0; i < expected.people.size(); ++i) {
    for (const PropertyInfo& info : contactProperties()) {
      // In files of many cards each property is edited in some of them.
      const std::size_t turn = i + static_cast<std::size_t>(info.property);
      if (!isEdited(info) || (expected.people.size() > 5 && turn % 5 != 0)) continue;
      const std::string name(info.objectModelName);
      const std::string value = newValue(info, turn, expected.rewrites);
      SCOPED_TRACE(testing::Message() << name << " of " << i + 1 << ": " << value);
      const Folder folder(card);
      auto others = expected.people;
      const std::string before = others[i].contains(name) ? others[i][name] : "";
      others[i] = beside(others[i], info);
      const auto linesBefore = folder.linesBeside(info);
      const auto expect = [&](const std::string& edited) {
        folder.edit(i + 1, info, edited);
        auto people = folder.people();
        ASSERT_EQ(people.size(), others.size());
        EXPECT_EQ(people[i][name], edited);
        people[i] = beside(people[i], info);
        EXPECT_EQ(people, others);
      };
      expect(value);
      EXPECT_TRUE(expected.rewrites || keepsLines(linesBefore, folder.linesBeside(info)));
      if (before != kUnreadable) expect(before);
    }
  }
}

// Cards as this program writes them, from nothing but their values and an attachment.
std::string written(const std::string& card, const Person& person) {
  const std::string version = card.substr(0, card.find("\r\n", card.find("VERSION:")));
  const Folder folder(version + "\r\nEND:VCARD\r\n");
  const tests::TemporaryFolder attached;
  tests::writeFile(attached.path() / "a", "attached");
  const auto store = folder.open();
  const auto contact = store->item(1);
  for (const PropertyInfo& info : contactProperties()) {
    if (isEdited(info)) setValue(*contact, info, person.at(std::string(info.objectModelName)));
  }
  contact->addAttachment(attached.path() / "a", "사진.jpg");
  contact->save();
  return tests::readFile(folder.file());
}

TEST(CardCorpusTest, EveryCardIsReadAsItsMakerWroteItAndKeepsWhatIsNotEdited) {
  std::size_t files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(VLOUT_CARDS)) {
    if (entry.path().extension() != ".vcf") continue;
    ++files;
    SCOPED_TRACE(entry.path().filename());
    const std::string card = tests::readFile(entry.path());
    auto expected = readExpected(std::filesystem::path(entry.path()).replace_extension("expected"));
    if (entry.path().filename().string().starts_with("written-")) {
      EXPECT_EQ(written(card, expected.people.at(0)), card);
    }
    const Folder folder(card);
    ASSERT_EQ(folder.people(), expected.people);
    const auto notices = folder.open()->folderNotices();
    ASSERT_EQ(notices.size(), expected.notices.size()) << testing::PrintToString(notices);
    for (std::size_t i = 0; i < notices.size(); ++i) {
      EXPECT_THAT(notices[i], testing::HasSubstr(expected.notices[i]));
    }
    editEverything(card, expected);
  }
  EXPECT_GT(files, 30U);
}

// Too large to lie in the folder of cards.
TEST(CardCorpusTest, HugeCardsAreEditedLikeOthers) {
  const auto repeated = [](const std::string& line, std::size_t size) {
    std::string text;
    while (text.size() < size) text += line;
    return text;
  };
  const std::string note = repeated("긴 메모 ", 10'000'000);
  const std::string start = "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Doe;J;;;\r\nFN:J Doe\r\n";
  for (const std::string& lines :
       {"NOTE:" + note + "\r\n", "NOTE:" + repeated("가나다\r\n ", 10'000'000) + "\r\n",
        "PHOTO;ENCODING=b:" + repeated("/9j/4AAQSkZJRgABAQEAYABg\r\n ", 5'000'000) + "\r\n",
        repeated("TEL;TYPE=PAGER:1\r\nX-OTHER:2\r\n", 1'500'000)}) {
    const Folder folder(start + lines + "END:VCARD\r\n");
    folder.edit(1, propertyInfo(P::JobTitle), "부장");
    EXPECT_TRUE(tests::readFile(folder.file()) == start + lines + "TITLE:부장\r\nEND:VCARD\r\n");
    if (!lines.starts_with("NOTE")) continue;
    folder.edit(1, propertyInfo(P::Body), note + "끝");
    EXPECT_TRUE(folder.people().at(0)["Body"] == note + "끝");
  }
}

}  // namespace
}  // namespace vlout::outlook::vcard
