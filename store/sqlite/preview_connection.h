// A connection that works on a private copy of the database. Statements run as they would, the
// database itself stays untouched to the last byte, and the connection tells what they change in
// the cards.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "store/sqlite/hooks.h"
#include "store/sqlite/sqlite_connection.h"

namespace vlout::store::sqlite {

class PreviewConnection : public SqliteConnection {
 public:
  // A column of a card that a statement changes, with its old and its new text.
  using Changed = std::function<void(const std::string& column, const std::string& before,
                                     const std::string& after)>;

  // `temporaryFolder` holds the copy while it is being opened.
  PreviewConnection(std::filesystem::path temporaryFolder, Changed changed)
      : temporaryFolder_(std::move(temporaryFolder)), changed_(std::move(changed)) {}

  std::int64_t execute(std::string_view sql) override;

 protected:
  [[nodiscard]] Database openFile(const std::filesystem::path& file) override;
  void close() override;

 private:
  void note(const ChangingRow& row);

  std::filesystem::path temporaryFolder_;
  Changed changed_;
  std::vector<std::string> columns_;  // of the cards' table
  struct Change {
    std::string column;
    std::string before;
    std::string after;
  };
  std::vector<Change> changes_;  // of the statement that runs
  std::optional<RowHook> hook_;
};

}  // namespace vlout::store::sqlite
