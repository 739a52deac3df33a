// Cards, contacts and whatever else a scenario lists, one per line, as "key=value" pairs separated
// by tabs; tabs, line breaks and backslashes in a value are written \t, \n, \r and \\.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vlout::tests {

class Record {
 public:
  using Pair = std::pair<std::string, std::string>;

  Record() = default;
  explicit Record(std::string_view line);
  [[nodiscard]] std::string line() const;

  [[nodiscard]] std::string get(std::string_view key) const;  // empty when there is none
  void set(std::string_view key, std::string_view value);
  void add(std::string_view key, std::string_view value) { pairs.emplace_back(key, value); }

  std::vector<Pair> pairs;
};

[[nodiscard]] std::vector<Record> readRecords(const std::filesystem::path& file);
void writeRecords(const std::filesystem::path& file, const std::vector<Record>& records);

}  // namespace vlout::tests
