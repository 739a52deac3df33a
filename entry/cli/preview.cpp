#include "entry/cli/preview.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>
#include <utility>

#include "outlook/field_map.h"
#include "text/file_path.h"

namespace vlout::entry::cli {

PrivateFolder::PrivateFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "vloutsync-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), name);
  }
  path_ = name;
}

PrivateFolder::~PrivateFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

StorePreview::StorePreview(const std::filesystem::path& contacts)
    : connection_(
          folder_.path(),
          [this](const std::string& column, const std::string& before, const std::string& after) {
            // Dates and numbers that a run keeps for itself are nobody's data.
            const std::string_view caption = outlook::fieldCaption(column);
            if (!caption.empty()) add(true, caption, before, after);
          }),
      contacts_(text::pathText(contacts),
                [this](std::string_view caption, const std::string& before,
                       const std::string& after) { add(false, caption, before, after); }) {}

void StorePreview::add(bool onCard, std::string_view caption, const std::string& before,
                       const std::string& after) {
  changes_.push_back({onCard, std::string(caption), before, after});
}

std::vector<ui::FieldChange> StorePreview::takeChanges() {
  return std::exchange(changes_, {});
}

}  // namespace vlout::entry::cli
