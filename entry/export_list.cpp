#include "entry/export_list.h"

#include <algorithm>
#include <sstream>
#include <system_error>

#include "entry/ini_file.h"
#include "store/sql.h"
#include "text/ascii.h"
#include "text/trim.h"

namespace vlout::entry {
namespace {

// A number padded with zeros to seven digits; any other text as it is.
std::string sevenDigits(const std::string& line) {
  const auto number = text::parseInteger(line);
  if (!number || *number < 0) return line;
  std::string digits = std::to_string(*number);
  if (digits.size() < 7) digits.insert(0, 7 - digits.size(), '0');
  return digits;
}

}  // namespace

std::vector<std::string> ExportList::lines() const {
  std::string content;
  try {
    content = readTextFile(file_);
  } catch (const std::system_error&) {
    return {};  // no list is a list of nothing; the loader tells the user
  }
  std::vector<std::string> result;
  std::istringstream stream(text::replaceAll(content, "\r\n", "\n"));
  for (std::string line; std::getline(stream, line);) result.emplace_back(text::trim(line));
  return result;
}

ui::ExportFolder ExportList::readFolder(store::Connection& connection) const {
  const auto all = lines();
  // The id stands bare in the statement, so nothing but a number may get there.
  if (all.empty() || !text::parseInteger(all.front())) return {};
  try {
    const auto rows =
        connection.query("SELECT Folder_Name,p_idx FROM tbl_folder Where f_idx=" + all.front());
    if (rows->atEnd()) return {};
    const auto parent = text::parseInteger(text::trim(store::nullSafe(rows->field("p_idx"))));
    return {.id = all.front(),
            .parent = static_cast<std::int32_t>(parent.value_or(0)),
            .name = std::string(store::nullSafe(rows->field("folder_name")))};
  } catch (const store::DatabaseError&) {
    return {};  // the window opens without a group; a run reports the database
  }
}

std::vector<std::string> ExportList::readSelectedCards() const {
  auto all = lines();
  if (!all.empty()) all.erase(all.begin());
  std::vector<std::string> ids;
  for (const std::string& line : all) {
    if (!line.empty()) ids.push_back(sevenDigits(line));
  }
  std::sort(ids.begin(), ids.end());
  return ids;
}

void ExportList::remove() const {
  std::error_code ignored;
  std::filesystem::remove(file_, ignored);
}

}  // namespace vlout::entry
