// The export list: the cards that it gives are in order.
#include "entry/export_list.h"

#include <algorithm>

#include "entry/text_file.h"
#include "fuzz/fuzz.h"
#include "store/sqlite/sqlite_connection.h"

namespace vlout::fuzz {
namespace {

store::Connection& database() {
  static const auto connection = [] {
    const store::ConnectionSettings settings{.componentFolder = scratchFolder()};
    store::sqlite::createDatabase(settings.databaseFile());
    auto opened = std::make_unique<store::sqlite::SqliteConnection>();
    opened->open(settings);
    return opened;
  }();
  return *connection;
}

}  // namespace

void tryInput(std::string_view input) {
  const entry::ExportList list(scratchFolder());
  writeFile(list.file(), input);
  static_cast<void>(list.explainFolder(database()));
  static_cast<void>(list.explainCards());
  try {
    static_cast<void>(list.readFolder(database()));
    const auto cards = list.readSelectedCards();
    require(std::is_sorted(cards.begin(), cards.end()), "cards are in order");
  } catch (const entry::EncodingError&) {
    return;
  } catch (const store::DatabaseError&) {
    return;  // a folder's id that is no number
  }
}

}  // namespace vlout::fuzz
