#include "entry/cli/preview.h"

#include <string>
#include <utility>

#include "outlook/field_map.h"
#include "text/ascii.h"
#include "text/file_path.h"

namespace vlout::entry::cli {

StorePreview::StorePreview(const MakeContacts& makeContacts)
    : connection_(
          folder_.path(),
          [this](const std::string& column, const std::string& before, const std::string& after) {
            // Dates and numbers that a run keeps for itself are not data about people.
            const std::string_view caption = outlook::fieldCaption(column);
            if (!caption.empty()) add(true, caption, before, after);
          }),
      contacts_(
          makeContacts([this](std::string_view caption, const std::string& before,
                              const std::string& after) { add(false, caption, before, after); })) {}

void StorePreview::add(bool onCard, std::string_view caption, const std::string& before,
                       const std::string& after) {
  if (text::withPlainLineEnds(before) == text::withPlainLineEnds(after)) return;
  changes_.push_back({onCard, std::string(caption), before, after});
}

std::vector<ui::FieldChange> StorePreview::takeChanges() {
  return std::exchange(changes_, {});
}

}  // namespace vlout::entry::cli
