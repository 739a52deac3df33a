#include "history/entries.h"

namespace vlout::history {

std::string entryOf(const outlook::vcard::FileState& state, const std::string& name) {
  return std::to_string(state.size) + ' ' + std::to_string(state.seconds) + ' ' +
         std::to_string(state.nanoseconds) + ' ' + name;
}

bool readEntry(std::istream& entry, outlook::vcard::FileState& state, std::string& name) {
  entry >> state.size >> state.seconds >> state.nanoseconds;
  entry.ignore(1);
  return static_cast<bool>(std::getline(entry, name, kEntryEnd));
}

}  // namespace vlout::history
