#include "tests/scenarios/scenario_fixture.h"

#include <algorithm>

#include "outlook/pairing.h"

namespace vlout::tests {
namespace {

using outlook::ContactProperty;

bool isDate(ContactProperty property) {
  return outlook::propertyInfo(property).kind == outlook::PropertyKind::Date;
}

std::string valueOf(outlook::Contact& contact, ContactProperty property) {
  if (property == ContactProperty::Gender) {
    const auto gender = static_cast<int>(contact.gender());
    return gender == 0 ? "" : std::to_string(gender);
  }
  if (!isDate(property)) return contact.text(property);
  const text::DateTime date = contact.date(property);
  return date == text::noDate() ? "" : text::formatDay(date);
}

// The contacts of a store, in the order of the folder, under their object-model names.
std::vector<Record> contactRecords(outlook::ContactStore& store) {
  std::vector<Record> records;
  store.openContactsFolder();
  for (std::size_t i = 1; i <= store.count(); ++i) {
    const auto contact = store.item(i);
    if (contact->typeName() != outlook::kContactItem) continue;
    Record record;
    if (outlook::hasVLID(*contact)) record.set("user:VLID", outlook::readVLID(*contact));
    for (const auto& info : outlook::contactProperties()) {
      record.set(info.objectModelName, valueOf(*contact, info.property));
    }
    for (std::size_t a = 1; a <= contact->attachmentCount(); ++a) {
      const std::string digits(attachmentContent(*contact, a).size() * 2, '0');
      record.add("attachment", contact->attachmentName(a) + "|" + digits);
    }
    record.set("modified", text::formatStamp(contact->lastModificationTime()));
    records.push_back(record);
  }
  return records;
}

// Makes a contact as the record says; its time is the caller's business.
void createContact(outlook::ContactStore& store, const Record& record) {
  const auto contact = store.create();
  for (const auto& info : outlook::contactProperties()) {
    const std::string value = record.get(info.objectModelName);
    if (value.empty()) continue;
    if (info.property == ContactProperty::Gender) {
      contact->setGender(static_cast<outlook::Gender>(std::stoi(value)));
    } else if (isDate(info.property)) {
      contact->setDate(info.property, text::parseDateTime(value).value());
    } else {
      contact->setText(info.property, value);
    }
  }
  const std::string key = record.get("user:VLID");
  if (!key.empty()) outlook::addVLID(*contact, key);
  contact->save();
}

}  // namespace

void ScenarioFixture::layOut(const std::filesystem::path& file) {
  scenario_ = Scenario::read(file);
  actions_ = scenario_.actions();
  scenario_.fillDatabase(database);
  scenario_.writeFiles(folder());
  outlook::vcard::VCardStore store(contactsFolder().string());
  ASSERT_TRUE(store.connect());
  for (const std::string& line : scenario_.lines("[contacts]")) {
    const auto before = cardFiles();
    const Record record(line);
    createContact(store, record);
    for (const std::string& name : cardFiles()) {
      if (std::find(before.begin(), before.end(), name) != before.end()) continue;
      // The folder's order is that of the names.
      const auto renamed = contactsFolder() / ("c" + std::to_string(100 + before.size()) + ".vcf");
      std::filesystem::rename(contactsFolder() / name, renamed);
      setModified(renamed, record.get("modified").substr(0, 19));
    }
  }
}

void ScenarioFixture::expectOutcome() const {
  outlook::vcard::VCardStore store(contactsFolder().string());
  ASSERT_TRUE(store.connect());
  store::sqlite::SqliteConnection connection;
  connection.open({.componentFolder = folder()});
  std::string after;
  for (const std::string& line : outcome(connection, contactRecords(store))) after += line + "\n";
  std::string expected;
  for (const std::string& line : scenario_.lines("[after]")) expected += line + "\n";
  EXPECT_EQ(after, expected);
}

std::vector<std::filesystem::path> scenarioFiles() {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(VLOUT_SCENARIOS)) {
    if (entry.path().extension() != ".scenario") continue;
    if (Scenario::read(entry.path()).sections.contains("[only under Wine]")) continue;
    files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::string scenarioName(const testing::TestParamInfo<std::filesystem::path>& info) {
  std::string name = info.param.stem().string();
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

}  // namespace vlout::tests
