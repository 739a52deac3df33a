// Lets the library declare the hook that sees a row before and after a write.
#define SQLITE_ENABLE_PREUPDATE_HOOK 1

#include "history/rows.h"

#include <algorithm>
#include <array>
#include <sqlite3.h>
#include <utility>

#include "store/connection.h"
#include "store/sql.h"
#include "text/ascii.h"
#include "text/hash.h"
#include "text/language.h"
#include "text/packed.h"

namespace vlout::history {
namespace {

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

RowWatch::RowWatch(sqlite3* database) : database_(database) {
  readColumns();
  sqlite3_preupdate_hook(
      database,
      [](void* self, sqlite3*, int operation, const char* schema, const char* table,
         sqlite3_int64 from, sqlite3_int64 to) {
        const std::string_view known = tableOf(table);
        if (known.empty() || !text::equalsIgnoringAsciiCase(schema, "main")) return;
        static_cast<RowWatch*>(self)->note(operation, known, from, to);
      },
      this);
}

RowWatch::~RowWatch() {
  sqlite3_preupdate_hook(database_, nullptr, nullptr);
}

void RowWatch::readColumns() {
  for (const std::string_view table : kTables) {
    std::vector<std::string>& names = columns_[std::string(table)];
    names.clear();
    try {
      const Statement row(database_, "SELECT * FROM main." + std::string(table));
      for (int i = 0; i < row.columnCount(); ++i) names.emplace_back(row.columnName(i));
    } catch (const store::DatabaseError&) {
      continue;  // the run meets it too, and says it
    }
  }
}

void RowWatch::note(int operation, std::string_view table, std::int64_t from, std::int64_t to) {
  const std::vector<std::string>& names = columns_.find(table)->second;
  if (sqlite3_preupdate_count(database_) != static_cast<int>(names.size())) isStale_ = true;
  if (isStale_) return;
  const bool isMoved = operation == SQLITE_UPDATE && from != to;
  Cells before;
  Cells after;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const int column = static_cast<int>(i);
    sqlite3_value* value = nullptr;
    std::string old;
    std::string now;
    if (operation != SQLITE_INSERT && sqlite3_preupdate_old(database_, column, &value) == SQLITE_OK)
      old = store::sqlite::cellOf(value);
    if (operation != SQLITE_DELETE && sqlite3_preupdate_new(database_, column, &value) == SQLITE_OK)
      now = store::sqlite::cellOf(value);
    const bool isChanged = operation == SQLITE_UPDATE && !isMoved;
    if (isChanged ? old == now : old.empty() && now.empty()) continue;
    if (isChanged || !old.empty()) before.emplace(names[i], std::move(old));
    if (isChanged || !now.empty()) after.emplace(names[i], std::move(now));
  }
  const auto add = [&](std::int64_t row, Change change, Cells was, Cells is) {
    writes_.push_back({{std::string(table), row}, change, std::move(was), std::move(is)});
  };
  if (operation == SQLITE_UPDATE && !isMoved) {
    if (!after.empty()) add(to, Change::Changed, std::move(before), std::move(after));
    return;
  }
  if (operation != SQLITE_INSERT) add(from, Change::Removed, std::move(before), {});
  if (operation != SQLITE_DELETE) add(to, Change::Added, {}, std::move(after));
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
    if (std::string cell = row.cell(i); !cell.empty()) cells.emplace(row.columnName(i), cell);
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
