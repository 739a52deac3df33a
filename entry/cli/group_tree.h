// The groups of the cards as a tree, as the group picker shows them: without the trash, what lies
// below it, and folders whose parent is missing. `folders` prints it, `--group` looks one up.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "store/connection.h"
#include "ui/component.h"

namespace vlout::entry::cli {

struct Group {
  std::int64_t id = 0;
  std::int64_t parent = 0;
  std::string name{};
  std::string path{};  // the names from below the root, joined with "/"
  int depth = 0;
};

// Depth first, each after its parent; the root comes first. Throws DatabaseError.
[[nodiscard]] std::vector<Group> readGroups(store::Connection& connection);

// The group of that number, path or name. Throws std::runtime_error when there is none, or several
// of that name, which it lists then.
[[nodiscard]] Group findGroup(const std::vector<Group>& groups, std::string_view wanted);

}  // namespace vlout::entry::cli
