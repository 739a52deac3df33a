#include "history/rows.h"

#include <algorithm>
#include <array>
#include <utility>

#include "store/connection.h"
#include "store/sql.h"
#include "text/ascii.h"
#include "text/hash.h"
#include "text/language.h"
#include "text/packed.h"

namespace vlout::history {
namespace {

using store::sqlite::ChangingRow;
using store::sqlite::Statement;

constexpr std::array<std::string_view, 2> kTables{store::kCardTable, store::kFolderTable};

std::string_view tableOf(std::string_view name) {
  const auto* const found = std::find_if(kTables.begin(), kTables.end(), [&](auto table) {
    return text::equalsIgnoringAsciiCase(table, name);
  });
  return found == kTables.end() ? std::string_view() : *found;
}

}  // namespace

std::string nounOf(const RowKey& row) {
  return row.table == store::kCardTable ? text::say("명함", "card") : text::say("그룹", "group");
}

std::string_view captionOf(const RowKey& row) {
  return row.table == store::kCardTable ? "FullName" : "folder_name";
}

RowWatch::RowWatch(sqlite3* database)
    : database_(database), hook_(database, [this](const ChangingRow& row) { note(row); }) {
  readColumns();
}

void RowWatch::readColumns() {
  for (const std::string_view table : kTables) {
    columns_[std::string(table)] = store::sqlite::columnNames(database_, table);
  }
}

void RowWatch::note(const ChangingRow& row) {
  const std::string table(tableOf(row.table()));
  if (table.empty()) return;
  const std::vector<std::string>& names = columns_.find(table)->second;
  if (row.columnCount() != names.size()) isStale_ = true;
  if (isStale_) return;
  const auto from = row.numberBefore();
  const auto to = row.numberAfter();
  const bool isChanged = from && from == to;
  Cells before;
  Cells after;
  for (std::size_t i = 0; i < names.size(); ++i) {
    std::string old = row.before(i).cell();
    std::string now = row.after(i).cell();
    if (isChanged ? old == now : old.empty() && now.empty()) continue;
    if (isChanged || !old.empty()) before.emplace(names[i], std::move(old));
    if (isChanged || !now.empty()) after.emplace(names[i], std::move(now));
  }
  if (isChanged && after.empty()) return;
  if (isChanged) {
    writes_.push_back({{table, *to}, Change::Changed, std::move(before), std::move(after)});
    return;
  }
  if (from) writes_.push_back({{table, *from}, Change::Removed, std::move(before), {}});
  if (to) writes_.push_back({{table, *to}, Change::Added, {}, std::move(after)});
}

std::vector<RowWrite> RowWatch::take() {
  std::vector<RowWrite> writes = std::exchange(writes_, {});
  if (!isStale_) return writes;
  forget();
  throw store::DatabaseError(text::say("다른 프로그램이 그 사이에 표를 바꾸었습니다",
                                       "another program has changed the table in the meantime"));
}

void RowWatch::forget() {
  writes_.clear();
  if (std::exchange(isStale_, false)) readColumns();
}

std::optional<Cells> StoredRows::at(const RowKey& key) {
  auto found = looks_.find(key.table);
  if (found == looks_.end()) {
    const std::string sql = "SELECT * FROM main." + key.table + " WHERE rowid=?1";
    found = looks_.emplace(key.table, Statement(database_, sql)).first;
  }
  Statement& row = found->second;
  if (!row.bind(1, key.row).next()) return std::nullopt;
  Cells cells;
  for (int i = 0; i < row.columnCount(); ++i) {
    if (std::string cell = row.value(i).cell(); !cell.empty())
      cells.emplace(row.columnName(i), cell);
  }
  row.reset();
  return cells;
}

std::uint64_t StoredRows::hashOf(const RowKey& key) {
  const auto cells = at(key);
  if (!cells) return 0;
  std::string content;
  for (const auto& [column, cell] : *cells) {
    text::pack(content, std::string_view(column));
    text::pack(content, std::string_view(cell));
  }
  return text::hashOf(content);
}

void StoredRows::insert(const RowKey& key, const Cells& cells) {
  std::string names = "rowid";
  std::string places = "?1";
  int index = 1;
  for (const auto& [column, cell] : cells) {
    names += "," + store::sqlName(column);
    places += ",?" + std::to_string(++index);
  }
  Statement insert(database_,
                   "INSERT INTO main." + key.table + "(" + names + ") VALUES(" + places + ")");
  insert.bind(index = 1, key.row);
  for (const auto& [column, cell] : cells) insert.bindCell(++index, cell);
  insert.next();
}

void StoredRows::update(const RowKey& key, const Cells& cells) {
  std::string sets;
  int index = 1;
  for (const auto& [column, cell] : cells) {
    sets += (sets.empty() ? "" : ",") + store::sqlName(column) + "=?" + std::to_string(++index);
  }
  Statement update(database_, "UPDATE main." + key.table + " SET " + sets + " WHERE rowid=?1");
  update.bind(index = 1, key.row);
  for (const auto& [column, cell] : cells) update.bindCell(++index, cell);
  update.next();
}

void StoredRows::remove(const RowKey& key) {
  Statement(database_, "DELETE FROM main." + key.table + " WHERE rowid=?1").bind(1, key.row).next();
}

}  // namespace vlout::history
