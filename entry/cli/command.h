// The commands of vloutsync. Each has a file of its own, NAME_command.cpp, with its arguments,
// their help and what it does. To add a command, write such a file and add it to the list in
// main().
#pragma once

#include <functional>
#include <iosfwd>
#include <string>

namespace CLI {
class App;
}

namespace vlout::entry::cli {

// Exit statuses of the program.
inline constexpr int kDone = 0;
inline constexpr int kRefused = 1;
inline constexpr int kWrongArguments = 2;

// Adds a command. If it is the one that the user gives, it runs while the arguments are parsed and
// sets `status`; failures are thrown as std::exception.
using AddCommand = void (*)(CLI::App& app, int& status);

void addInitCommand(CLI::App& app, int& status);
void addSampleCommand(CLI::App& app, int& status);
void addRunCommand(CLI::App& app, int& status);
void addHistoryCommand(CLI::App& app, int& status);
void addUndoCommand(CLI::App& app, int& status);
void addBooksCommand(CLI::App& app, int& status);
void addStatusCommand(CLI::App& app, int& status);
void addListCommand(CLI::App& app, int& status);
void addShowCommand(CLI::App& app, int& status);
void addFoldersCommand(CLI::App& app, int& status);
void addConvertCommand(CLI::App& app, int& status);
void addWindowCommand(CLI::App& app, int& status);

// Options that several commands have. The variables get what the user gives.
void addFolderOption(CLI::App& command, std::string& folder);
void addContactsOption(CLI::App& command, std::string& contacts);
void addJsonFlag(CLI::App& command, bool& json);

// If the user gives the command, `print` runs it and writes its output. If the output cannot be
// written, the command fails.
void onGiven(CLI::App& command, int& status, std::function<void(std::ostream&)> print);

}  // namespace vlout::entry::cli
