// Reads SQL text just far enough to run it safely and fast on SQLite: it refuses text that holds
// more than one statement or anything that Jet would not take for SQL (comments, parameter marks),
// and lifts the literals out, so that statements which differ only in their values share one
// prepared statement. SqliteConnection is its only caller.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vlout::store {

struct Literal {
  bool isNumber = false;
  std::string value;  // a number as written, a text without its quotes
};

struct StatementText {
  std::string shape;  // the statement with each lifted literal replaced by "?"
  std::vector<Literal> literals;
};

// Throws DatabaseError when the text is not one statement. Only literals that follow "=" or stand
// in a VALUES list are lifted: elsewhere a bound value may mean something else than the literal.
[[nodiscard]] StatementText readStatement(std::string_view sql);

}  // namespace vlout::store
