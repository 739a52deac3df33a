#include "entry/export_list.h"

#include <algorithm>
#include <exception>
#include <sstream>
#include <system_error>

#include "entry/text_file.h"
#include "store/sql.h"
#include "text/ascii.h"
#include "text/file_path.h"
#include "text/language.h"
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

std::string folderQuery(const std::string& folderId) {
  return "SELECT Folder_Name,p_idx FROM tbl_folder Where f_idx=" + folderId;
}

}  // namespace

std::vector<std::string> ExportList::readLines() const {
  std::vector<std::string> result;
  std::istringstream stream(text::replaceAll(readTextFile(file_), "\r\n", "\n"));
  for (std::string line; std::getline(stream, line);) result.emplace_back(text::trim(line));
  return result;
}

std::vector<std::string> ExportList::lines() const {
  try {
    return readLines();
  } catch (const std::system_error&) {
    return {};  // no list is a list of nothing; the loader tells the user
  }
}

std::string ExportList::explainFolder(store::Connection& connection) const {
  try {
    const auto all = readLines();
    const std::string id = all.empty() ? "" : all.front();
    if (!readFolder(connection).id.empty()) return {};
    if (!text::parseInteger(id)) {
      return text::say("%1: 첫 줄에 그룹 번호가 없습니다",
                       "%1: the first line has no number of a group", {text::pathText(file_)});
    }
    connection.query(folderQuery(id));  // says what is wrong with the table, if anything is
    return text::say("%1: 데이터베이스에 없는 그룹입니다: %2",
                     "%1: the database has no such group: %2", {text::pathText(file_), id});
  } catch (const std::exception& error) {
    return error.what();
  }
}

std::string ExportList::explainCards() const {
  try {
    static_cast<void>(readLines());
    if (!readSelectedCards().empty()) return {};
    return text::say("%1: 선택된 명함이 없습니다", "%1: no card is selected",
                     {text::pathText(file_)});
  } catch (const std::exception& error) {
    return error.what();
  }
}

ui::ExportFolder ExportList::readFolder(store::Connection& connection) const {
  const auto all = lines();
  // The id goes into the statement without quotes, so nothing but a number may get there.
  if (all.empty() || !text::parseInteger(all.front())) return {};
  try {
    const auto rows = connection.query(folderQuery(all.front()));
    if (rows->atEnd()) return {};
    const auto parent = text::parseInteger(text::trim(store::nullSafe(rows->field("p_idx"))));
    return {.id = all.front(),
            .parent = text::narrowed<std::int32_t>(parent.value_or(0)),
            .name = std::string(store::nullSafe(rows->field("folder_name")))};
  } catch (const store::DatabaseError&) {
    return {};  // the window opens without a group; a run reports the database
  } catch (const std::overflow_error&) {
    return {};
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
