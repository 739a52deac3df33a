#include "entry/cli/group_tree.h"

#include <map>
#include <stdexcept>
#include <utility>

#include "store/sql.h"
#include "text/ascii.h"
#include "text/language.h"

namespace vlout::entry::cli {
namespace {

constexpr std::int64_t kRoot = 1;
constexpr std::int64_t kTrash = 1000;

using Children = std::map<std::int64_t, std::vector<Group>>;

// Each folder is placed once, so that a cycle ends.
void place(Group group, Children& children, std::vector<Group>& placed) {
  auto below = std::exchange(children[group.id], {});
  placed.push_back(std::move(group));
  const Group parent = placed.back();
  for (Group& child : below) {
    child.depth = parent.depth + 1;
    child.path = parent.path.empty() ? child.name : parent.path + "/" + child.name;
    place(std::move(child), children, placed);
  }
}

}  // namespace

std::vector<Group> readGroups(store::Connection& connection) {
  Children children;
  const auto rows =
      connection.query("SELECT folder_name,f_idx,p_idx FROM [tbl_folder] order by f_idx asc");
  for (; !rows->atEnd(); rows->moveNext()) {
    const auto number = [&](std::string_view column) {
      return text::parseInteger(store::nullSafe(rows->field(column))).value_or(0);
    };
    Group group{.id = number("f_idx"),
                .parent = number("p_idx"),
                .name = std::string(store::nullSafe(rows->field("folder_name")))};
    if (group.id != kRoot && group.id != kTrash) children[group.parent].push_back(std::move(group));
  }
  std::vector<Group> placed;
  place({.id = kRoot, .name = "전체"}, children, placed);
  return placed;
}

Group findGroup(const std::vector<Group>& groups, std::string_view wanted) {
  const auto id = text::parseInteger(wanted);
  std::vector<Group> named;
  for (const Group& group : groups) {
    if (group.id == id || group.path == wanted) return group;
    if (group.name == wanted) named.push_back(group);
  }
  if (named.size() == 1) return named.front();
  std::string message = text::say("그룹이 없습니다: %1", "No such group: %1", {wanted});
  if (!named.empty()) {
    message = text::say("이름이 같은 그룹이 여럿입니다. 번호나 경로로 고르십시오:",
                        "Several groups have that name. Choose one by its number or path:");
  }
  for (const Group& group : named) message += "\n  " + std::to_string(group.id) + " " + group.path;
  throw std::runtime_error(message);
}

}  // namespace vlout::entry::cli
