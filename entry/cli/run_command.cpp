#include "entry/cli/run_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <string_view>
#include <system_error>

#include "entry/cli/book_side.h"
#include "entry/cli/command.h"
#include "entry/cli/component_folder.h"
#include "entry/cli/contacts_place.h"
#include "entry/cli/group_tree.h"
#include "entry/cli/notification.h"
#include "entry/cli/platform.h"
#include "entry/cli/terminal.h"
#include "entry/orun.h"
#include "text/ascii.h"
#include "text/file_path.h"
#include "text/language.h"
#include "text/regular_file.h"
#include "text/shown_text.h"

namespace vlout::entry::cli {
namespace {

using ui::CheckBox;
using ui::frmOutlookSync;

struct NamedBox {
  std::string_view name;
  CheckBox frmOutlookSync::*box;
};

constexpr std::array<NamedBox, 12> kBoxes{{
    {"OUT_CHECK1", &frmOutlookSync::import_check1},
    {"OUT_CHECK2", &frmOutlookSync::import_check2},
    {"OUT_CHECK3", &frmOutlookSync::import_check3},
    {"OUT_CHECK4", &frmOutlookSync::Export_Check1},
    {"OUT_CHECK5", &frmOutlookSync::Export_Check2},
    {"OUT_CHECK6", &frmOutlookSync::Check2},
    {"OUT_CHECK7", &frmOutlookSync::Export_Check3},
    {"OUT_CHECK8", &frmOutlookSync::Sync_Check2},
    {"OUT_CHECK9", &frmOutlookSync::Check1},
    {"OUT_CHECK10", &frmOutlookSync::ch_faxnosync},
    {"chadd", &frmOutlookSync::chadd},
    {"photo", &frmOutlookSync::Check8},
}};

const NamedBox* findBox(std::string_view name) {
  for (const NamedBox& box : kBoxes) {
    if (box.name == name) return &box;
  }
  return nullptr;
}

// Does what the user would do in the window.
void press(frmOutlookSync& window, const RunRequest& request, store::Connection& connection) {
  if (!request.group.empty()) {
    const Group group = findGroup(readGroups(connection), request.group);
    if (request.mode == frmOutlookSync::kImport && group.parent == 0) {
      throw std::runtime_error(text::say("%1: 이 그룹에는 명함을 둘 수 없습니다",
                                         "%1: this group takes no cards", {group.name}));
    }
    window.useGroup({.id = std::to_string(group.id),
                     .parent = text::narrowed<std::int32_t>(group.parent),
                     .name = group.name});
  }
  window.Combo1.setIndex(request.mode);
  if (request.range) window.Combo2.setIndex(*request.range);
  if (request.subgroups) window.Check3.setValue(CheckBox::kChecked);
  for (const BoxSetting& setting : request.boxes) {
    (window.*findBox(setting.name)->box).setValue(setting.value);
  }
  (request.preview ? window.Command8 : window.Command2).press();
}

// A file of options that cannot be read counts as none, which its owner may not expect.
void explainSettings(const std::filesystem::path& folder, std::ostream& errors) {
  for (const char* const name : {"VelmoraOlSync.ini", "settings.ini"}) {
    try {
      static_cast<void>(text::readRegularFile(folder / name));
    } catch (const std::system_error& error) {
      if (error.code() == std::errc::no_such_file_or_directory) continue;
      errors << text::onItsLines(error.what()) << '\n';
    }
  }
}

// The window says that the host's list gives it nothing; the terminal can say why.
void explainExportList(const RunRequest& request, Runtime& runtime, std::ostream& errors) {
  const auto range = request.range.value_or(frmOutlookSync::kSelectedCards);
  if (request.mode != frmOutlookSync::kExport || range == frmOutlookSync::kAllCards) return;
  const std::string reason = range == frmOutlookSync::kGroup
                                 ? runtime.exportList().explainFolder(runtime.connection())
                                 : runtime.exportList().explainCards();
  if (reason.empty()) return;
  errors << text::onItsLines(reason)
         << text::say(
                ". 전체를 내보내려면 --range all 을, 한 그룹을 "
                "내보내려면 --group 과 그 번호나 경로를 사용하십시오(vloutsync folders).\n",
                ". Use --range all to export all cards, or --group and its number or path to "
                "export one group "
                "(vloutsync folders).\n");
}

}  // namespace

std::optional<BoxSetting> parseBoxSetting(const std::string& text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos) return std::nullopt;
  const std::string name = text.substr(0, equals);
  const std::string value = text.substr(equals + 1);
  if (findBox(name) == nullptr || (value != "0" && value != "1")) return std::nullopt;
  return BoxSetting{name, value == "1" ? CheckBox::kChecked : CheckBox::kCleared};
}

bool runTransfer(const RunRequest& request, std::ostream& results, std::ostream& errors,
                 int progressWidth, const volatile std::sig_atomic_t& interrupted) {
  bool completed = false;
  Runtime* component = nullptr;
  const auto script = [&](frmOutlookSync& window) {
    try {
      press(window, request, component->connection());
    } catch (const std::exception& error) {
      errors << text::onItsLines(error.what()) << '\n';
      return;
    }
    completed = window.hasCompleted();
    if (window.chadd.isChecked() && interrupted == 0) {
      explainExportList(request, *component, errors);
    }
  };
  auto toolkit = std::make_unique<ui::terminal::TerminalToolkit>(
      results, errors, progressWidth, interrupted, request.onConflict, script);
  const history::EmptiedFolder emptied{
      .goOn = request.goOn,
      .howToGoOn = text::say("그래도 하려면 --yes 를 붙이십시오.", "To go on anyway, add --yes.")};
  Runtime runtime(request.folder, makePlatform(request.folder, request.contacts, std::move(toolkit),
                                               emptied, &interrupted));
  if (request.preview) runtime.previewOnly();
  component = &runtime;
  errors << text::say("연락처: %1\n", "Contacts: %1\n",
                      {text::onOneLine(text::pathText(request.contacts))});
  explainSettings(request.folder, errors);
  ORUN(runtime).OUTSYNCRUN();
  return completed;
}

namespace {

struct Arguments {
  std::string folder;
  std::string contacts;
  std::string mode;
  std::string range;
  std::string group;
  bool subgroups = false;
  std::vector<std::string> boxes;
  int photo = 0;  // how often --photo was given, less --no-photo
  std::string onConflict = "skip";
  bool preview = false;
  bool yes = false;
  bool quiet = false;
  bool notify = false;
};

std::string checkBoxSetting(const std::string& text) {
  if (parseBoxSetting(text)) return {};
  return text::say("OUT_CHECK1 … OUT_CHECK10 또는 chadd 뒤에 =0 이나 =1 이 와야 합니다: %1",
                   "OUT_CHECK1 … OUT_CHECK10 or chadd must be followed by =0 or =1: %1", {text});
}

using Words = std::array<std::string_view, 3>;

CLI::IsMember isOneOf(const Words& words) {
  return CLI::IsMember(std::vector<std::string>(words.begin(), words.end()));
}

// The meaning of a word that `isOneOf` has accepted.
template <typename Choice>
Choice choiceOf(const Words& words, const std::string& word) {
  return static_cast<Choice>(std::find(words.begin(), words.end(), word) - words.begin());
}

// If no host has left a list, all cards are meant.
transfer::Range rangeOf(const Arguments& arguments, const std::filesystem::path& folder) {
  if (!arguments.range.empty()) {
    return choiceOf<transfer::Range>(transfer::kRangeWords, arguments.range);
  }
  if (!arguments.group.empty()) return frmOutlookSync::kGroup;
  return ExportList(folder).isThere() ? frmOutlookSync::kSelectedCards : frmOutlookSync::kAllCards;
}

// Refuses options that the transfer would ignore: their user means something else.
void requireUseOf(const Arguments& arguments) {
  const bool exports = arguments.mode == "export";
  const bool hasGroup = !arguments.group.empty();
  const auto refuseUnless = [](bool used, const char* option, const text::Words& words) {
    if (!used) throw CLI::ValidationError(option, text::say(words));
  };
  refuseUnless(exports || arguments.range.empty(), "--range",
               {"내보내기(export)에서만 씁니다", "only an export uses it"});
  refuseUnless(exports || !arguments.subgroups, "--subgroups",
               {"내보내기(export)에서만 씁니다", "only an export uses it"});
  refuseUnless(arguments.mode != "sync" || !hasGroup, "--group",
               {"상호갱신(sync)은 모든 쌍을 다룹니다", "a sync takes all pairs"});
  refuseUnless(!hasGroup || arguments.range.empty() || arguments.range == "group", "--group",
               {"--range group 과만 함께 씁니다", "goes with --range group only"});
}

// Asks whether the user wants other contacts than the last time. False if the answer is no. Without
// a terminal to ask in, the run itself refuses them.
bool settleMove(RunRequest& request) {
  if (request.preview || request.goOn || !canAsk() || !rememberedContacts(request.folder)) {
    return true;
  }
  const auto book = bookIn(request.contacts);
  const std::string moved =
      objectionToMove(request.folder, request.contacts, book ? uidOfBook(*book) : "");
  if (moved.empty()) return true;
  request.goOn = confirm(text::onItsLines(text::replaceAll(moved, "\r\n", "\n")) +
                         text::say("이 연락처로 할까요?", "Use these contacts?"));
  return request.goOn;
}

// The part of a run's lines for people who did not watch it: what it could not do, and its counts.
// Nothing if there was nothing to do.
std::string summaryOf(const std::string& lines) {
  std::istringstream stream(lines);
  std::string left;
  std::string last;
  for (std::string line; std::getline(stream, line);) {
    if (line.ends_with("\t제외") || line.ends_with("\t실패")) left += line + "\n";
    last = line;
  }
  const bool changed = last.find_first_of("123456789") != std::string::npos;
  return left.empty() && !changed ? "" : left + last + "\n";
}

// For a timer, whose output goes to the journal. Conflicts wait for the window; the desktop
// notifies the user.
int runUnwatched(const RunRequest& request, const Arguments& arguments) {
  std::ostringstream results;
  std::ostringstream errors;
  const bool completed = runTransfer(request, results, errors, 0, handleInterrupts());
  const std::string summary = summaryOf(results.str());
  std::cout << (arguments.quiet ? summary : results.str()) << std::flush;
  if (!completed || !arguments.quiet) std::cerr << errors.str() << std::flush;
  const bool undone =
      summary.find("제외") != std::string::npos || summary.find("실패") != std::string::npos;
  if (arguments.notify && (!completed || undone)) {
    notifyDesktop(
        completed
            ? text::say("처리하지 못한 자료가 있습니다. 창에서 상호갱신을 하십시오.\n",
                        "Some records could not be handled. Synchronise them in the window.\n") +
                  summary
            : errors.str());
  }
  return completed && std::cout ? kDone : kRefused;
}

int runGiven(const Arguments& arguments) {
  using OnConflict = ui::terminal::TerminalToolkit::OnConflict;
  const std::map<std::string, OnConflict> answers{{"skip", OnConflict::Skip},
                                                  {"newer", OnConflict::TakeNewer},
                                                  {"card", OnConflict::KeepCard},
                                                  {"outlook", OnConflict::KeepOutlook},
                                                  {"stop", OnConflict::Stop}};
  requireUseOf(arguments);
  RunRequest request;
  request.mode = choiceOf<transfer::Mode>(transfer::kModeWords, arguments.mode);
  request.onConflict = answers.at(arguments.onConflict);
  request.folder = existingFolder(arguments.folder);
  request.contacts = contactsPlace(arguments.contacts, request.folder);
  request.group = arguments.group;
  request.range = rangeOf(arguments, request.folder);
  request.subgroups = arguments.subgroups;
  request.preview = arguments.preview;
  request.goOn = arguments.yes;
  if (!settleMove(request)) return kRefused;
  for (const std::string& box : arguments.boxes) {
    request.boxes.push_back(parseBoxSetting(box).value());
  }
  if (arguments.photo != 0) request.boxes.push_back({"photo", arguments.photo > 0 ? 1 : 0});
  if (arguments.quiet || arguments.notify) return runUnwatched(request, arguments);
  const bool completed =
      runTransfer(request, std::cout, std::cerr, terminalWidth(), handleInterrupts());
  std::cout.flush();
  return completed && std::cout ? kDone : kRefused;
}

void addOptionsOnCards(CLI::App& run, Arguments& arguments) {
  run.add_option(
         "--range", arguments.range,
         text::say(
             "내보내기 범위: selected 선택항목(호스트의 목록이 있을 때의 기본값), group 그룹, "
             "all 전체자료(목록이 없을 때의 기본값)",
             "What to export: selected (the host's list; the default where there is one), group, "
             "or "
             "all (the default where there is no list)"))
      ->check(isOneOf(transfer::kRangeWords));
  run.add_option(
      "--group", arguments.group,
      text::say(
          "내보낼 그룹 또는 가져온 연락처를 둘 그룹: 번호, 경로(거래처/서울) 또는 이름",
          "Group to export, or to put imported contacts into: its number, path (A/B) or name"));
  run.add_flag("--subgroups", arguments.subgroups,
               text::say("하위그룹 포함 (--range group)", "Includes subgroups (--range group)"));
  run.add_option(
         "--set", arguments.boxes,
         text::say("옵션 상자를 켜거나(1) 끕니다(0): OUT_CHECKn=0|1, chadd=0|1. 창에서와 같이 "
                   "다음 실행에도 남습니다(chadd 제외).",
                   "Ticks (1) or clears (0) a box of options: OUT_CHECKn=0|1, chadd=0|1. As in the "
                   "window, it stays so "
                   "for the next runs (except chadd)."))
      ->check(checkBoxSetting);
  run.add_flag(
      "--photo,!--no-photo", arguments.photo,
      text::say(
          "연락처에 다른 사진이 없으면 명함의 사진을 보이게(PHOTO) 합니다. 다음 실행에도 남습니다.",
          "Shows the card's picture (PHOTO) on a contact that has no other. Stays set for later "
          "runs."));
}

void addOptionsOnTheRun(CLI::App& run, Arguments& arguments) {
  run.add_option("--on-conflict", arguments.onConflict,
                 text::say("상호갱신의 충돌 처리: skip, newer, card, outlook, stop",
                           "What a sync does with a conflict: skip, newer, card, outlook, stop"))
      ->check(CLI::IsMember({"skip", "newer", "card", "outlook", "stop"}));
  run.add_flag(
      "--preview", arguments.preview,
      text::say("결과와 바뀔 값을 보여 주기만 하고 아무것도 쓰지 않습니다.",
                "Only shows the results and the values that would change; writes nothing."));
  run.add_flag(
      "--quiet", arguments.quiet,
      text::say("처리하지 못한 자료와 합계만 쓰고, 할 일이 없었으면 아무것도 쓰지 않습니다.",
                "Prints only what could not be handled, and the counts; nothing if there was "
                "nothing to do."));
  run.add_flag("--notify", arguments.notify,
               text::say("처리하지 못한 자료가 있으면 데스크톱에 알립니다.",
                         "Shows a desktop notification if something could not be handled."));
  run.add_flag(
      "--yes", arguments.yes,
      text::say("지난 작업 때와 다른 연락처나, 그때와 달리 비어 있는 연락처 폴더라도 묻지 않고 "
                "합니다.",
                "Does not ask, even if the contacts are not those of the last run, or the folder "
                "has been emptied since."));
}

}  // namespace

void addRunCommand(CLI::App& app, int& status) {
  CLI::App* const run =
      app.add_subcommand("run", text::say("가져오기, 내보내기 또는 상호갱신을 실행합니다.",
                                          "Imports, exports or synchronises."));
  const auto arguments = std::make_shared<Arguments>();
  run->add_option(
         "transfer", arguments->mode,
         text::say("import 아웃룩→벨모라, export 벨모라→아웃룩, sync 상호갱신",
                   "import (contacts to cards), export (cards to contacts) or sync (both ways)"))
      ->required()
      ->check(isOneOf(transfer::kModeWords));
  addFolderOption(*run, arguments->folder);
  addContactsOption(*run, arguments->contacts);
  addOptionsOnCards(*run, *arguments);
  addOptionsOnTheRun(*run, *arguments);
  run->callback([arguments, &status] { status = runGiven(*arguments); });
}

}  // namespace vlout::entry::cli
