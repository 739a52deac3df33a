#include <CLI/CLI.hpp>
#include <algorithm>
#include <iomanip>
#include <memory>
#include <ostream>
#include <string>

#include "entry/cli/command.h"
#include "entry/cli/component_folder.h"
#include "entry/cli/contacts_place.h"
#include "entry/cli/json.h"
#include "entry/cli/read_only.h"
#include "outlook/field_map.h"
#include "text/file_path.h"
#include "text/language.h"
#include "text/shown_text.h"

namespace vlout::entry::cli {
namespace {

using transfer::Standing;
using transfer::Surveyed;

struct Arguments {
  std::string folder;
  std::string contacts;
  bool all = false;
  bool json = false;
};

constexpr std::size_t kShownOfEach = 20;

std::string shown(const std::string& value) {
  return text::onOneLine(transfer::shownValue(value));
}

void printOne(const Surveyed& found, std::ostream& out) {
  out << "  " << (found.card.empty() ? "-" : text::onOneLine(found.card)) << '\t'
      << text::onOneLine(found.person);
  if (found.contact != found.person && !found.contact.empty()) {
    out << '\t' << text::onOneLine(found.contact);
  }
  out << '\n';
  for (const auto& field : found.differences) {
    out << "    " << outlook::fieldCaption(field.column) << ": " << shown(field.card) << " ↔ "
        << shown(field.contact) << '\n';
  }
}

template <typename Use>
void forEachStanding(Use use) {
  for (std::size_t i = 0; i < transfer::kStandings; ++i) use(static_cast<Standing>(i));
}

void printTexts(const FolderSurvey& survey, bool all, std::ostream& out) {
  forEachStanding([&](Standing standing) {
    out << std::setw(7) << survey.of(standing).size() << "  "
        << text::say(wordsOf(standing).caption) << '\n';
  });
  forEachStanding([&](Standing standing) {
    const auto& found = survey.of(standing);
    if (standing == Standing::InStep || found.empty()) return;
    out << '\n' << text::say(wordsOf(standing).caption) << ":\n";
    const std::size_t count = all ? found.size() : std::min(found.size(), kShownOfEach);
    for (std::size_t i = 0; i < count; ++i) printOne(found[i], out);
    if (count < found.size()) {
      out << text::say("  … 그 밖에 %1 (--all)\n", "  … and %1 more (--all)\n",
                       {std::to_string(found.size() - count)});
    }
  });
  if (!survey.problems().empty()) out << text::say("\n읽지 못한 것:\n", "\nCould not be read:\n");
  for (const std::string& line : survey.problems()) out << "  " << text::onOneLine(line) << '\n';
}

Json asJson(const Surveyed& found) {
  Json object{{"card", found.card.empty() ? Json() : Json(found.card)}, {"name", found.person}};
  if (found.position != 0) object["contact"] = found.contact;
  for (const auto& field : found.differences) {
    object["differences"].push_back(
        {{"field", field.column}, {"card", field.card}, {"contact", field.contact}});
  }
  return object;
}

Json asJson(const FolderSurvey& survey) {
  Json object{{"cards", survey.cards()}, {"contacts", survey.contacts()}};
  forEachStanding([&](Standing standing) {
    const auto& found = survey.of(standing);
    if (standing == Standing::InStep) {
      object["in_step"] = found.size();
      return;
    }
    Json& list = object[std::string(wordsOf(standing).key)] = Json::array();
    for (const Surveyed& each : found) list.push_back(asJson(each));
  });
  object["problems"] = survey.problems();
  return object;
}

void showStatus(const Arguments& arguments, std::ostream& out) {
  const auto folder = existingFolder(arguments.folder);
  const auto contacts = contactsPlace(arguments.contacts, folder);
  ReadOnlyStores stores(folder, contacts);
  const FolderSurvey survey(stores);
  if (arguments.json) {
    Json object{{"folder", text::pathText(folder)}, {"contacts_in", text::pathText(contacts)}};
    object.update(asJson(survey));
    print(object, out);
    return;
  }
  out << text::say("명함 %1장: %2\n연락처 %3건: %4\n\n", "%1 cards: %2\n%3 contacts: %4\n\n",
                   {std::to_string(survey.cards()), text::onOneLine(text::pathText(folder)),
                    std::to_string(survey.contacts()), text::onOneLine(text::pathText(contacts))});
  printTexts(survey, arguments.all, out);
}

}  // namespace

void addStatusCommand(CLI::App& app, int& status) {
  CLI::App* const command = app.add_subcommand(
      "status",
      text::say("명함과 연락처가 어떻게 짝지어져 있고 무엇이 "
                "바뀌었는지 보여 줍니다. 아무것도 쓰지 않습니다.",
                "Shows how cards and contacts are paired and what has changed. Writes nothing."));
  const auto arguments = std::make_shared<Arguments>();
  addFolderOption(*command, arguments->folder);
  addContactsOption(*command, arguments->contacts);
  command->add_flag(
      "--all", arguments->all,
      text::say("줄이지 않고 모두 보여 줍니다.", "Shows all of them, not only the first."));
  addJsonFlag(*command, arguments->json);
  onGiven(*command, status, [arguments](std::ostream& out) { showStatus(*arguments, out); });
}

}  // namespace vlout::entry::cli
