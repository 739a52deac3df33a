// A Jet (Access) file, opened for reading only. Only JetReader makes one, in a separate process:
// the library that finds the way through the file is not proof against damaged files and may end
// the process.
#pragma once

#include <filesystem>
#include <memory>
#include <string_view>
#include <vector>

#include "store/jet/jet_value.h"

namespace vlout::store::jet {

// Takes the rows of a table, one after another.
class JetRows {
 public:
  JetRows() = default;
  JetRows(const JetRows&) = delete;
  JetRows& operator=(const JetRows&) = delete;
  virtual ~JetRows() = default;

  virtual void beginTable(std::string_view name, const std::vector<JetColumn>& columns) = 0;
  virtual void addRow(const JetRow& row) = 0;
};

class JetFile {
 public:
  // A password in the file's header does not matter. Throws DatabaseError when the file's tables
  // cannot be found.
  explicit JetFile(const std::filesystem::path& file);
  ~JetFile();
  JetFile(const JetFile&) = delete;
  JetFile& operator=(const JetFile&) = delete;

  // Hands over the table of that name, compared without regard to ASCII case; does nothing if there
  // is none. Throws DatabaseError if a row or a value cannot be read whole, or if the table has
  // fewer rows than it says.
  void readTable(std::string_view name, JetRows& rows);

 private:
  class Reader;
  std::unique_ptr<Reader> reader_;
};

}  // namespace vlout::store::jet
