// Lets the library declare the hook that sees a row before and after a write.
#define SQLITE_ENABLE_PREUPDATE_HOOK 1

#include "store/sqlite/hooks.h"

#include <exception>
#include <sqlite3.h>
#include <utility>

#include "text/ascii.h"

namespace vlout::store::sqlite {

std::size_t ChangingRow::columnCount() const {
  return static_cast<std::size_t>(sqlite3_preupdate_count(database_));
}

Value ChangingRow::before(std::size_t column) const {
  sqlite3_value* value = nullptr;
  if (before_) sqlite3_preupdate_old(database_, static_cast<int>(column), &value);
  return Value(value);
}

Value ChangingRow::after(std::size_t column) const {
  sqlite3_value* value = nullptr;
  if (after_) sqlite3_preupdate_new(database_, static_cast<int>(column), &value);
  return Value(value);
}

RowHook::RowHook(sqlite3* database, Told told) : database_(database), told_(std::move(told)) {
  sqlite3_preupdate_hook(
      database,
      [](void* self, sqlite3* changing, int operation, const char* schema, const char* table,
         sqlite3_int64 from, sqlite3_int64 to) {
        if (!text::equalsIgnoringAsciiCase(schema, "main")) return;
        const auto before =
            operation == SQLITE_INSERT ? ChangingRow::Number() : ChangingRow::Number(from);
        const auto after =
            operation == SQLITE_DELETE ? ChangingRow::Number() : ChangingRow::Number(to);
        static_cast<RowHook*>(self)->told_({changing, table, before, after});
      },
      this);
}

RowHook::~RowHook() {
  sqlite3_preupdate_hook(database_, nullptr, nullptr);
}

CheckpointHook::CheckpointHook(sqlite3* database, std::function<void()> before)
    : database_(database), before_(std::move(before)) {
  sqlite3_wal_hook(
      database,
      [](void* self, sqlite3* written, const char* schema, int pages) {
        constexpr int kPages = 1000;  // as the library has it
        if (pages < kPages) return SQLITE_OK;
        try {
          static_cast<CheckpointHook*>(self)->before_();
          sqlite3_wal_checkpoint_v2(written, schema, SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
        } catch (const std::exception&) {
          return SQLITE_OK;  // a later commit, or the closing, will do it
        }
        return SQLITE_OK;
      },
      this);
}

CheckpointHook::~CheckpointHook() {
  sqlite3_wal_hook(database_, nullptr, nullptr);
}

}  // namespace vlout::store::sqlite
