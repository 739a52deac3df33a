// The groups of the cards as a tree, as the group picker shows them: without the trash and
// everything below it, and without folders whose parent is missing. `folders` prints the tree,
// `--group` looks up a group.
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

// The group of that number, path or name. Throws std::runtime_error if there is none, or if several
// have that name; the text then lists them.
[[nodiscard]] Group findGroup(const std::vector<Group>& groups, std::string_view wanted);

}  // namespace vlout::entry::cli
