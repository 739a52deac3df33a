// Prints the lines of the commands that list something. In a terminal the cells stand in columns;
// programs that read the output get a tab between two cells.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace vlout::entry::cli {

class Columns {
 public:
  // `out` must go to standard output.
  explicit Columns(std::ostream& out);
  // Prints the lines, if standard output is a terminal.
  ~Columns();
  Columns(const Columns&) = delete;
  Columns& operator=(const Columns&) = delete;

  // Cells may hold any text: control characters become blanks.
  void add(std::vector<std::string> cells);

 private:
  using Line = std::vector<std::string>;

  void printAligned() const;

  std::ostream& out_;
  bool aligned_;
  std::vector<Line> lines_;  // for a terminal: only all of them give the width of a column
};

}  // namespace vlout::entry::cli
