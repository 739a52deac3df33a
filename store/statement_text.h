// Reads SQL text just far enough to run it safely. Refuses text with more than one statement, or
// with anything that Jet would not take for SQL (comments, parameter marks). For SQLite it also
// lifts out the literals, so that statements which differ only in their values share one prepared
// statement.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vlout::store {

struct Literal {
  enum class Kind { Text, Number, Bytes };
  Kind kind = Kind::Text;
  std::string value;  // a number as written, a text without its quotes, the bytes of X'...'
};

struct StatementText {
  std::string shape;  // the statement with each lifted literal replaced by "?"
  std::vector<Literal> literals;
};

// Throws DatabaseError when the text is not one statement. Only literals after "=" or in a VALUES
// list are lifted: elsewhere a bound value may not mean the same as the literal.
[[nodiscard]] StatementText readStatement(std::string_view sql);

}  // namespace vlout::store
