// JSON for scripts: prints what a command knows to standard output.
#pragma once

#include <nlohmann/json.hpp>
#include <ostream>

namespace vlout::entry::cli {

// Keys keep the order in which they were added.
using Json = nlohmann::ordered_json;

// Text that is not UTF-8 gets replacement characters.
inline void print(const Json& value, std::ostream& out) {
  out << value.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

}  // namespace vlout::entry::cli
