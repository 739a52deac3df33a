// vloutsync: hosts the component on Linux. Reads the arguments, makes component folders, and runs
// transfers in the terminal.
#include <CLI/CLI.hpp>
#include <csignal>
#include <exception>
#include <iostream>
#include <map>
#include <string>
#include <sys/ioctl.h>
#include <unistd.h>

#include "entry/cli/component_folder.h"
#include "entry/cli/convert_jet.h"
#include "entry/cli/history_command.h"
#include "entry/cli/run_command.h"
#include "entry/cli/window_command.h"
#include "text/shown_text.h"

namespace {

namespace cli = vlout::entry::cli;
using vlout::ui::frmOutlookSync;

constexpr int kDone = 0;
constexpr int kRefused = 1;
constexpr int kWrongArguments = 2;

volatile std::sig_atomic_t interrupted = 0;

// The first interrupt stops the run at the next record; a second one ends the program.
void handleInterrupts() {
  struct sigaction action {};
  action.sa_handler = [](int) { interrupted = 1; };
  action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

int terminalWidth() {
  if (isatty(STDERR_FILENO) == 0) return 0;
  winsize size{};
  const bool known = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return known ? size.ws_col : 80;
}

struct Arguments {
  std::string folder;
  std::string contacts;
  int cards = 200;
  std::uint64_t seed = 1;
  std::string mode;
  std::string range;
  bool subgroups = false;
  std::vector<std::string> boxes;
  std::string onConflict = "skip";
  bool preview = false;
  bool yes = false;
  bool force = false;
  int run = 0;
  std::string jetFile;
};

void addFolderOption(CLI::App& command, Arguments& arguments) {
  command.add_option("--folder", arguments.folder,
                     "구성 요소 폴더 (기본값: $VELMORA_FOLDER, 없으면 ~/.local/share/velmora)");
}

void addContactsOption(CLI::App& command, Arguments& arguments) {
  command.add_option("--contacts", arguments.contacts,
                     "vCard 연락처 폴더 (기본값: 구성 요소 폴더의 contacts)");
}

std::string checkBoxSetting(const std::string& text) {
  if (cli::parseBoxSetting(text)) return {};
  return "OUT_CHECK1 … OUT_CHECK10 또는 chadd 뒤에 =0 이나 =1 이 와야 합니다: " + text;
}

CLI::App* addRunCommand(CLI::App& app, Arguments& arguments) {
  CLI::App* const run = app.add_subcommand("run", "가져오기, 내보내기 또는 상호갱신을 실행합니다.");
  run->add_option("transfer", arguments.mode,
                  "import 아웃룩→벨모라, export 벨모라→아웃룩, sync 상호갱신")
      ->required()
      ->check(CLI::IsMember({"import", "export", "sync"}));
  addFolderOption(*run, arguments);
  addContactsOption(*run, arguments);
  run->add_option("--range", arguments.range,
                  "내보내기 범위: selected 선택항목(기본값), group 그룹, all 전체자료")
      ->check(CLI::IsMember({"selected", "group", "all"}));
  run->add_flag("--subgroups", arguments.subgroups, "하위그룹 포함 (--range group)");
  run->add_option("--set", arguments.boxes,
                  "옵션 상자를 켜거나(1) 끕니다(0): OUT_CHECKn=0|1, chadd=0|1. 창에서와 같이 "
                  "다음 실행에도 남습니다(chadd 제외).")
      ->check(checkBoxSetting);
  run->add_option("--on-conflict", arguments.onConflict,
                  "상호갱신의 충돌 처리: skip, newer, card, outlook, stop")
      ->check(CLI::IsMember({"skip", "newer", "card", "outlook", "stop"}));
  run->add_flag("--preview", arguments.preview,
                "결과와 바뀔 값을 보여 주기만 하고 아무것도 쓰지 않습니다.");
  run->add_flag("--yes", arguments.yes,
                "지난 작업 때와 달리 비어 있는 연락처 폴더에도 내보냅니다.");
  return run;
}

CLI::App* addUndoCommand(CLI::App& app, Arguments& arguments) {
  CLI::App* const undo = app.add_subcommand(
      "undo", "양쪽을 어느 작업 전의 상태로 되돌립니다. 무엇이 바뀌는지 먼저 말합니다.");
  undo->add_option("run", arguments.run, "작업 번호 (기본값: 무엇인가 바꾼 마지막 작업)")
      ->check(CLI::PositiveNumber);
  addFolderOption(*undo, arguments);
  undo->add_flag("--preview", arguments.preview, "무엇이 바뀌는지 말하기만 합니다.");
  undo->add_flag("--force", arguments.force, "그 뒤에 바뀐 것이 사라져도 되돌립니다.");
  undo->add_flag("--yes", arguments.yes, "묻지 않습니다. 터미널이 아니면 있어야 합니다.");
  return undo;
}

bool confirmUndo() {
  if (isatty(STDIN_FILENO) == 0) {
    std::cerr << "터미널이 아니어서 물을 수 없습니다. 되돌리려면 --yes 를 붙이십시오.\n";
    return false;
  }
  std::cerr << "되돌릴까요? [y/N] " << std::flush;
  std::string answer;
  std::getline(std::cin, answer);
  return answer == "y" || answer == "Y" || answer == "예";
}

int runUndo(const Arguments& arguments) {
  const cli::UndoRequest request{.folder = cli::componentFolder(arguments.folder),
                                 .run = arguments.run,
                                 .force = arguments.force,
                                 .preview = arguments.preview};
  const auto confirm = [&] { return arguments.yes || confirmUndo(); };
  return cli::undoRun(request, confirm, std::cout, std::cerr) ? kDone : kRefused;
}

CLI::App* addConvertCommand(CLI::App& app, Arguments& arguments) {
  CLI::App* const convert = app.add_subcommand(
      "convert-jet", "Jet(Access) 데이터베이스를 읽어 새 구성 요소 폴더를 만듭니다.");
  convert->add_option("file", arguments.jetFile, "Jet 파일. 읽기만 합니다.")->required();
  addFolderOption(*convert, arguments);
  return convert;
}

int convertJet(const Arguments& arguments) {
  const auto folder = cli::componentFolder(arguments.folder);
  handleInterrupts();
  cli::convertJet(arguments.jetFile, folder, std::cout, interrupted);
  std::cout << folder.string() << std::endl;
  return std::cout ? kDone : kRefused;
}

int runTransfer(const Arguments& arguments) {
  using OnConflict = vlout::ui::TerminalToolkit::OnConflict;
  const std::map<std::string, frmOutlookSync::Mode> modes{{"import", frmOutlookSync::kImport},
                                                          {"export", frmOutlookSync::kExport},
                                                          {"sync", frmOutlookSync::kSync}};
  const std::map<std::string, OnConflict> answers{{"skip", OnConflict::Skip},
                                                  {"newer", OnConflict::TakeNewer},
                                                  {"card", OnConflict::KeepCard},
                                                  {"outlook", OnConflict::KeepOutlook},
                                                  {"stop", OnConflict::Stop}};
  const std::map<std::string, frmOutlookSync::Range> ranges{
      {"selected", frmOutlookSync::kSelectedCards},
      {"group", frmOutlookSync::kGroup},
      {"all", frmOutlookSync::kAllCards}};
  cli::RunRequest request;
  request.mode = modes.at(arguments.mode);
  request.onConflict = answers.at(arguments.onConflict);
  request.folder = cli::componentFolder(arguments.folder);
  request.contacts = cli::contactFolder(arguments.contacts, request.folder);
  if (!arguments.range.empty()) request.range = ranges.at(arguments.range);
  request.subgroups = arguments.subgroups;
  request.preview = arguments.preview;
  request.goOn = arguments.yes;
  for (const std::string& box : arguments.boxes) {
    request.boxes.push_back(cli::parseBoxSetting(box).value());
  }
  handleInterrupts();
  const bool completed =
      cli::runTransfer(request, std::cout, std::cerr, terminalWidth(), interrupted);
  std::cout.flush();
  return completed && std::cout ? kDone : kRefused;
}

int run(int argc, char** argv) {
  Arguments arguments;
  CLI::App app("벨모라 명함과 vCard 연락처 폴더를 상호 교환합니다.", "vloutsync");
  app.set_version_flag("--version", "vloutsync " VLOUT_VERSION);
  app.require_subcommand(cli::hasDisplay() ? 0 : 1, 1);
  CLI::App* const init =
      app.add_subcommand("init", "빈 데이터베이스로 새 구성 요소 폴더를 만듭니다.");
  addFolderOption(*init, arguments);
  CLI::App* const sample =
      app.add_subcommand("sample", "예제 명함이 든 새 구성 요소 폴더를 만듭니다.");
  addFolderOption(*sample, arguments);
  sample->add_option("--cards", arguments.cards, "명함 수")
      ->check(CLI::Range(0, 32767))
      ->required();
  sample->add_option("--seed", arguments.seed, "같은 값은 같은 명함을 만듭니다.")
      ->capture_default_str();
  CLI::App* const transfer = addRunCommand(app, arguments);
  CLI::App* const history = app.add_subcommand("history", "지금까지의 작업을 보여 줍니다.");
  addFolderOption(*history, arguments);
  CLI::App* const undo = addUndoCommand(app, arguments);
  CLI::App* const convert = addConvertCommand(app, arguments);
  CLI::App* const window =
      app.add_subcommand("window", "창을 엽니다. 명령이 없을 때도 그렇습니다.");
  addFolderOption(*window, arguments);
  addContactsOption(*window, arguments);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kDone : kWrongArguments;
  }
  if (transfer->parsed()) return runTransfer(arguments);
  if (undo->parsed()) return runUndo(arguments);
  if (convert->parsed()) return convertJet(arguments);
  const auto folder = cli::componentFolder(arguments.folder);
  if (history->parsed()) {
    cli::printHistory(folder, std::cout, std::cerr);
    return kDone;
  }
  if (init->parsed()) {
    cli::initializeFolder(folder);
  } else if (!sample->parsed()) {
    // A first start from the desktop's menu; a folder that is named has to be there.
    if (arguments.folder.empty() && !std::filesystem::exists(folder)) cli::initializeFolder(folder);
    cli::showWindow(folder, cli::contactFolder(arguments.contacts, folder));
  } else {
    cli::makeSampleFolder(folder, arguments.cards, arguments.seed);
  }
  std::cout << folder.string() << '\n';
  return kDone;
}

}  // namespace

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  // A reader that goes away must not end a run in the middle.
  std::signal(SIGPIPE, SIG_IGN);
  try {
    return run(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << vlout::text::onItsLines(error.what()) << '\n';
    return kRefused;
  }
}
