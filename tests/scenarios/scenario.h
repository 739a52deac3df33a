// A scenario: what is in the component folder and the contacts folder, what the user does, and what
// is there afterwards. One file serves both the native component and the DLL under Wine, which must
// end with the same rows and contacts.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "store/connection.h"
#include "tests/scenarios/records.h"

namespace vlout::tests {

// One thing that the user does: a verb, the name of a control where there is one, and the rest of
// the line.
//   choose NAME INDEX   an entry of a drop-down list
//   press NAME          a button
//   tick NAME 0|1       a check box
//   type NAME TEXT      into a box, in place of what it holds
//   node NAME PATH      a tree's node by the numbers of its children: "1 2"
//   expect NAME TEXT    the control shows exactly that
//   state NAME 0|1      the check box has that state
//   message TEXT        a message box comes up whose text begins so; it is confirmed
//                       ("\n" is a line break, under Wine)
//   line TEXT           the result list has that line: its cells with "|" between
//   title TEXT          the window of that caption is on top from here on
//   escape, close       the Esc key; the frame's close box
//   enter               the Enter key, which presses the window's usual button
//   again               the host calls the method a second time
//   lines NAME          the result list has exactly the lines of the section "[NAME]", under Wine
//   middle X Y          the window's middle is there, under Wine; the tests' screens are 1280x1024,
//                       1024x768 and 5200x900 side by side
//   picture NAME        a picture of the screen, where pictures are taken
struct Action {
  std::string verb;
  std::string control;
  std::string text;
};

struct Scenario {
  static Scenario read(const std::filesystem::path& file);

  [[nodiscard]] std::vector<Action> actions() const;
  // The lines under a heading such as "[cards]". A file's own headings are written with a blank
  // before them.
  [[nodiscard]] const std::vector<std::string>& lines(const std::string& heading) const;

  // Fills the database; the folder must exist with the schema's tables.
  void fillDatabase(store::Connection& database) const;
  // Writes the host's and the component's own files into the component folder.
  void writeFiles(const std::filesystem::path& componentFolder) const;

  std::map<std::string, std::vector<std::string>> sections;
};

// Rows and contacts as the scenario's "[after]" section has them. Times of this run are written as
// words, since they differ each time: "=contact" for a row's date that is its contact's time.
[[nodiscard]] std::vector<std::string> outcome(store::Connection& database,
                                               const std::vector<Record>& contacts);

}  // namespace vlout::tests
