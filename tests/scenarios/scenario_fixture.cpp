#include "tests/scenarios/scenario_fixture.h"

#include <algorithm>

namespace vlout::tests {

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
  store::SqliteConnection connection;
  connection.open({.componentFolder = folder()});
  std::string after;
  for (const std::string& line : outcome(connection, contactRecords(store))) after += line + "\n";
  std::string expected;
  for (const std::string& line : scenario_.lines("[after]")) expected += line + "\n";
  EXPECT_EQ(after, expected);
}

void expectLine(const ui::ListView& list, const std::string& text) {
  std::string all;
  for (const auto& row : list.rows()) {
    const std::string line = row.cells[0] + "|" + row.cells[1] + "|" + row.cells[2];
    if (line == text) return;
    all += line + "\n";
  }
  ADD_FAILURE() << "no line " << text << " among\n" << all;
}

std::vector<std::filesystem::path> scenarioFiles() {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(VLOUT_SCENARIOS)) {
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
