// JSON for scripts: what a command knows, on standard output.
#pragma once

#include <nlohmann/json.hpp>
#include <ostream>

namespace vlout::entry::cli {

// Keys in the order in which they are given.
using Json = nlohmann::ordered_json;

// Text that is not UTF-8 gets replacement characters.
inline void print(const Json& value, std::ostream& out) {
  out << value.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

}  // namespace vlout::entry::cli
