// vloutsync: hosts the component on Linux. Reads the arguments and hands over to the command that
// they name, or to the windows.
#include <CLI/CLI.hpp>
#include <csignal>
#include <exception>
#include <iostream>
#include <sstream>

#include "entry/cli/command.h"
#include "entry/cli/parser_words.h"
#include "entry/cli/users_language.h"
#include "entry/cli/window_command.h"
#include "text/language.h"
#include "text/shown_text.h"

namespace {

namespace cli = vlout::entry::cli;

// In the order of the help.
constexpr cli::AddCommand kCommands[] = {
    cli::addInitCommand, cli::addSampleCommand, cli::addRunCommand,     cli::addStatusCommand,
    cli::addListCommand, cli::addShowCommand,   cli::addFoldersCommand, cli::addHistoryCommand,
    cli::addUndoCommand, cli::addBooksCommand,  cli::addConvertCommand, cli::addWindowCommand,
};

int run(int argc, char** argv) {
  CLI::App app(
      vlout::text::say(
          "벨모라 명함과 vCard 연락처 폴더를 상호 교환합니다.",
          "Exchanges Velmora cards with a folder of vCards or an address book of the desktop."),
      "vloutsync");
  app.set_version_flag("--version", "vloutsync " VLOUT_VERSION);
  app.require_subcommand(cli::hasDisplay() ? 0 : 1, 1);
  int status = cli::kDone;
  for (const cli::AddCommand add : kCommands) add(app, status);
  cli::translateParser(app);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    std::ostringstream out;
    std::ostringstream errors;
    const int status = app.exit(error, out, errors);
    std::cout << vlout::text::onItsLines(out.str());
    std::cerr << vlout::text::onItsLines(errors.str());  // it repeats what was given
    return status == 0 ? cli::kDone : cli::kWrongArguments;
  }
  if (app.get_subcommands().empty()) cli::openWindow("", "");
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  cli::speakUsersLanguage();
  // A run must not end in the middle because its reader has gone away.
  std::signal(SIGPIPE, SIG_IGN);
  try {
    return run(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << vlout::text::onItsLines(error.what()) << '\n';
    return vlout::entry::cli::kRefused;
  }
}
