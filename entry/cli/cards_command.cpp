// `list`, `show` and `folders`: what is in the database, and which contact belongs to it.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

#include "entry/cli/columns.h"
#include "entry/cli/command.h"
#include "entry/cli/component_folder.h"
#include "entry/cli/contacts_place.h"
#include "entry/cli/group_tree.h"
#include "entry/cli/json.h"
#include "entry/cli/read_only.h"
#include "outlook/field_map.h"
#include "outlook/normalizer.h"
#include "outlook/pairing.h"
#include "store/sql.h"
#include "text/ascii.h"
#include "text/language.h"

namespace vlout::entry::cli {
namespace {

using transfer::Standing;
using transfer::Surveyed;

struct Arguments {
  std::string folder;
  std::string contacts;
  std::string wanted;
  bool json = false;
};

// How each card stands with its contact, by number.
struct CardStanding {
  Standing standing;
  std::size_t contact;  // its position; 0 without one
};
using Standings = std::map<std::string, CardStanding, std::less<>>;

Standings standingsOf(const FolderSurvey& survey) {
  Standings standings;
  for (const Standing standing :
       {Standing::InStep, Standing::CardChanged, Standing::ContactChanged, Standing::Conflict,
        Standing::NeverSent, Standing::ContactGone, Standing::Joinable}) {
    for (const Surveyed& found : survey.of(standing)) {
      standings.insert({found.card, {standing, found.position}});
    }
  }
  return standings;
}

constexpr text::Words kUnknown{"읽지 못함", "not read"};

std::string captionOf(const Standings& standings, std::string_view card) {
  const auto found = standings.find(card);
  return text::say(found == standings.end() ? kUnknown : wordsOf(found->second.standing).caption);
}

std::string_view keyOf(const Standings& standings, std::string_view card) {
  const auto found = standings.find(card);
  return found == standings.end() ? "unknown" : wordsOf(found->second.standing).key;
}

std::string shown(std::string_view value) {
  return value.empty() ? "" : transfer::shownValue(value);
}

// --- list ---------------------------------------------------------------------------------------

struct ListedColumn {
  std::string_view column;
  std::string_view key;  // for scripts
};
constexpr std::array<ListedColumn, 6> kListed{{{"i_idx", "card"},
                                               {"FullName", "name"},
                                               {"CompanyName", "company"},
                                               {"cellphone", "mobile"},
                                               {"email", "email"},
                                               {"folder_name", "group"}}};

bool contains(const store::Recordset& row, const std::string& wanted) {
  return std::any_of(kListed.begin(), kListed.end(), [&](const ListedColumn& listed) {
    const std::string value = text::toAsciiUpper(store::nullSafe(row.field(listed.column)));
    const bool isNumber = listed.column == "cellphone";
    const std::string digits = text::digitsOnly(wanted);
    return value.find(wanted) != std::string::npos ||
           (isNumber && digits.size() > 2 &&
            text::digitsOnly(value).find(digits) != std::string::npos);
  });
}

void listCards(const Arguments& arguments, std::ostream& out) {
  const auto folder = existingFolder(arguments.folder);
  ReadOnlyStores stores(folder, contactsPlace(arguments.contacts, folder));
  const FolderSurvey survey(stores);
  const Standings standings = standingsOf(survey);
  const std::string wanted = text::toAsciiUpper(arguments.wanted);
  Json list = Json::array();
  Columns lines(out);
  const auto rows = stores.connection().query(
      "SELECT i_idx,FullName,CompanyName,cellphone,email,folder_name from [tbl_namecard] Where "
      "[P_IDX]=0 order by [FullName] ASC");
  for (; !rows->atEnd(); rows->moveNext()) {
    if (!contains(*rows, wanted)) continue;
    Json card;
    std::vector<std::string> cells;
    for (const auto& [column, key] : kListed) {
      const std::string_view value = store::nullSafe(rows->field(column));
      card[std::string(key)] = value;
      cells.push_back(shown(value));
    }
    const std::string_view id = store::nullSafe(rows->field("i_idx"));
    card["standing"] = keyOf(standings, id);
    cells.push_back(captionOf(standings, id));
    if (arguments.json) {
      list.push_back(std::move(card));
    } else {
      lines.add(std::move(cells));
    }
  }
  if (arguments.json) print(list, out);
}

// --- show ---------------------------------------------------------------------------------------

// The card of that number, or those of that name.
std::vector<std::string> findCards(store::Connection& connection, const std::string& wanted) {
  if (text::parseInteger(wanted) && store::cardExists(connection, wanted)) return {wanted};
  std::vector<std::string> found;
  const std::string name = outlook::normalize(wanted);
  const auto rows = connection.query(
      "SELECT i_idx,FullName from [tbl_namecard] Where [P_IDX]=0 order by [i_idx] ASC");
  for (; !rows->atEnd(); rows->moveNext()) {
    if (outlook::normalize(store::nullSafe(rows->field("FullName"))) == name) {
      found.emplace_back(store::nullSafe(rows->field("i_idx")));
    }
  }
  return found;
}

std::string requireOneCard(store::Connection& connection, const std::string& wanted) {
  const auto found = findCards(connection, wanted);
  if (found.size() == 1) return found.front();
  if (found.empty()) {
    throw std::runtime_error(text::say("명함이 없습니다: %1", "No such card: %1", {wanted}));
  }
  std::string message = text::say("이름이 같은 명함이 여럿입니다. 번호로 고르십시오:",
                                  "Several cards have that name. Choose one by its number:");
  for (const std::string& id : found) message += " " + id;
  throw std::runtime_error(message);
}

void showCard(const Arguments& arguments, std::ostream& out) {
  const auto folder = existingFolder(arguments.folder);
  ReadOnlyStores stores(folder, contactsPlace(arguments.contacts, folder));
  const std::string id = requireOneCard(stores.connection(), arguments.wanted);
  const FolderSurvey survey(stores);
  const Standings standings = standingsOf(survey);
  const auto row = store::readCard(stores.connection(), id);
  const auto found = standings.find(id);
  const auto contact = found == standings.end() || found->second.contact == 0
                           ? nullptr
                           : stores.contacts().item(found->second.contact);
  Json fields = Json::array();
  Columns lines(out);
  if (!arguments.json) {
    lines.add({id, captionOf(standings, id)});
    lines.add({"", text::say("벨모라", "Velmora"), text::say("아웃룩", "Outlook")});
  }
  for (const auto& field : transfer::compareSides(row.get(), contact.get())) {
    const bool differs = contact && field.differs();
    fields.push_back({{"field", field.column},
                      {"card", field.card},
                      {"contact", field.contact},
                      {"differs", differs}});
    if (arguments.json) continue;
    std::vector<std::string> cells{std::string(outlook::fieldCaption(field.column)),
                                   shown(field.card), shown(field.contact)};
    if (differs) cells.emplace_back("≠");
    lines.add(std::move(cells));
  }
  if (arguments.json) {
    print({{"card", id}, {"standing", keyOf(standings, id)}, {"fields", fields}}, out);
  }
}

// --- folders ------------------------------------------------------------------------------------

void printFolders(const Arguments& arguments, std::ostream& out) {
  const auto folder = existingFolder(arguments.folder);
  ReadOnlyStores stores(folder, contactsPlace("", folder));
  const auto groups = readGroups(stores.connection());
  if (arguments.json) {
    Json list = Json::array();
    for (const Group& group : groups) {
      list.push_back(
          {{"id", group.id}, {"parent", group.parent}, {"name", group.name}, {"path", group.path}});
    }
    print(list, out);
    return;
  }
  Columns lines(out);
  for (const Group& group : groups) {
    lines.add({std::string(static_cast<std::size_t>(group.depth) * 2, ' ') + group.name,
               std::to_string(group.id)});
  }
}

// --- arguments ----------------------------------------------------------------------------------

using Act = void (*)(const Arguments&, std::ostream&);

std::shared_ptr<Arguments> addLook(CLI::App& command, int& status, Act act) {
  auto arguments = std::make_shared<Arguments>();
  addFolderOption(command, arguments->folder);
  addJsonFlag(command, arguments->json);
  onGiven(command, status, [arguments, act](std::ostream& out) { act(*arguments, out); });
  return arguments;
}

}  // namespace

void addListCommand(CLI::App& app, int& status) {
  CLI::App* const command = app.add_subcommand(
      "list", text::say("명함을 연락처와의 관계와 함께 한 줄씩 보여 줍니다.",
                        "Lists the cards, one per line, and how each stands with its contact."));
  const auto arguments = addLook(*command, status, listCards);
  addContactsOption(*command, arguments->contacts);
  command->add_option(
      "text", arguments->wanted,
      text::say("이름, 회사, 번호, 전자우편 주소, 그룹에 이 글이 있는 명함만",
                "Only cards with this text in name, company, number, e-mail address or group"));
}

void addShowCommand(CLI::App& app, int& status) {
  CLI::App* const command =
      app.add_subcommand("show", text::say("한 명함과 그 연락처를 나란히 보여 줍니다.",
                                           "Shows a card and its contact side by side."));
  const auto arguments = addLook(*command, status, showCard);
  addContactsOption(*command, arguments->contacts);
  command
      ->add_option("card", arguments->wanted,
                   text::say("명함 번호 또는 이름", "Number or name of the card"))
      ->required();
}

void addFoldersCommand(CLI::App& app, int& status) {
  CLI::App* const command =
      app.add_subcommand("folders", text::say("명함의 그룹을 번호와 함께 보여 줍니다.",
                                              "Lists the groups of cards with their numbers."));
  addLook(*command, status, printFolders);
}

}  // namespace vlout::entry::cli
