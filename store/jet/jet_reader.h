// Reads tables from a Jet (Access) file in a separate process, so that a damaged file can at worst
// end that process. The converter calls it. The file is opened for reading only.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "store/jet/jet_file.h"

namespace vlout::store::jet {

class JetReader {
 public:
  // Opens the file and starts reading the tables of these names. Throws DatabaseError, which names
  // the file, when it is no Jet file or cannot be read at all.
  JetReader(const std::filesystem::path& file, const std::vector<std::string>& tables);
  ~JetReader();  // ends the process, wherever it is
  JetReader(const JetReader&) = delete;
  JetReader& operator=(const JetReader&) = delete;

  // Hands over the tables in the order in which they were named, passing over those that the file
  // lacks. Throws DatabaseError, which names the file, if it cannot be read to its end; the caller
  // must then discard the rows that it already has.
  void readAll(JetRows& rows);

 private:
  class Child;
  class Frames;
  [[noreturn]] void fail(const std::string& reason) const;
  [[noreturn]] void failEnded() const;

  std::filesystem::path file_;
  std::unique_ptr<Child> child_;
  std::unique_ptr<Frames> frames_;
};

}  // namespace vlout::store::jet
