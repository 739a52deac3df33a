// Statement text: each place in the shape has its literal, and the shape is one statement itself,
// in which nothing is left to lift.
#include "store/statement_text.h"

#include <algorithm>

#include "fuzz/fuzz.h"
#include "store/connection.h"

namespace vlout::fuzz {

void tryInput(std::string_view input) {
  store::StatementText statement;
  try {
    statement = store::readStatement(input);
  } catch (const store::DatabaseError&) {
    return;
  }
  std::size_t places = 0;
  char quote = '\0';
  for (const char c : statement.shape) {
    if (quote != '\0') {
      if (c == quote) quote = '\0';
    } else if (c == '\'' || c == '"' || c == '`') {
      quote = c;
    } else if (c == '[') {
      quote = ']';
    } else if (c == '?') {
      ++places;
    }
  }
  require(places == statement.literals.size(), "each place has its literal");
}

}  // namespace vlout::fuzz
