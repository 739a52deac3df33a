#include "store/folders.h"

#include <cstdint>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "store/sql.h"
#include "text/ascii.h"

namespace vlout::store {

std::string folderWithSubfolders(Connection& connection, std::string_view folderId) {
  const std::int64_t chosen = requireNumber(folderId, {"그룹 번호", "group number"});

  std::unordered_map<std::int64_t, std::vector<std::int64_t>> children;
  const auto rows = connection.query("SELECT * FROM tbl_folder ");
  for (; !rows->atEnd(); rows->moveNext()) {
    const auto id = text::parseInteger(nullSafe(rows->field("f_idx")));
    const auto parent = text::parseInteger(nullSafe(rows->field("p_idx")));
    if (id && parent) children[*parent].push_back(*id);
  }

  std::vector<std::int64_t> waiting{chosen};
  std::unordered_set<std::int64_t> seen{chosen};
  std::string list = std::to_string(chosen);
  while (!waiting.empty()) {
    const std::int64_t parent = waiting.back();
    waiting.pop_back();
    for (const std::int64_t child : children[parent]) {
      if (!seen.insert(child).second) continue;
      waiting.push_back(child);
      list += "," + std::to_string(child);
    }
  }
  return list;
}

}  // namespace vlout::store
