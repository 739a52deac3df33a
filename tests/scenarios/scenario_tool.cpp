// Lays out a scenario for the DLL, and compares what the DLL left with what the scenario says:
//   scenario_tool prepare FILE FOLDER
//   scenario_tool check FILE FOLDER
// The stand-in for Outlook keeps its contacts in `outlook.txt` of the folder.
#include <algorithm>
#include <iostream>

#include "store/sqlite/sqlite_connection.h"
#include "tests/scenarios/scenario.h"

namespace {

namespace tests = vlout::tests;
using vlout::store::ConnectionSettings;

void prepare(const tests::Scenario& scenario, const std::filesystem::path& folder) {
  const ConnectionSettings settings{.componentFolder = folder};
  std::filesystem::create_directories(folder);
  scenario.writeFiles(folder);
  if (!scenario.sections.contains("[no database]")) {
    vlout::store::sqlite::createDatabase(settings.databaseFile());
    vlout::store::sqlite::SqliteConnection database;
    database.open(settings);
    scenario.fillDatabase(database);
  }
  std::vector<tests::Record> contacts;
  for (const std::string& line : scenario.lines("[contacts]")) {
    tests::Record& contact = contacts.emplace_back(line);
    for (auto& [key, value] : contact.pairs) {
      if (value.ends_with(" letters")) value.assign(std::stoul(value), 'm');
    }
  }
  tests::writeRecords(folder / "outlook.txt", contacts);
}

bool check(const tests::Scenario& scenario, const std::filesystem::path& folder) {
  const ConnectionSettings settings{.componentFolder = folder};
  if (scenario.sections.contains("[no database]")) {
    return !std::filesystem::exists(settings.databaseFile());
  }
  vlout::store::sqlite::SqliteConnection database;
  database.open(settings);
  const auto after = tests::outcome(database, tests::readRecords(folder / "outlook.txt"));
  const auto& expected = scenario.lines("[after]");
  if (after == expected) return true;
  for (const std::string& line : after) {
    const bool known = std::find(expected.begin(), expected.end(), line) != expected.end();
    std::cout << (known ? "  " : "+ ") << line << '\n';
  }
  for (const std::string& line : expected) {
    if (std::find(after.begin(), after.end(), line) == after.end())
      std::cout << "- " << line << '\n';
  }
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  try {
    const auto scenario = tests::Scenario::read(arguments.at(1));
    if (arguments.at(0) == "prepare") {
      prepare(scenario, arguments.at(2));
      return 0;
    }
    return check(scenario, arguments.at(2)) ? 0 : 1;
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 2;
  }
}
