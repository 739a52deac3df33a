#include "entry/cli/platform.h"

#include "entry/cli/preview.h"
#include "outlook/vcard/vcard_store.h"
#include "store/sqlite/sqlite_connection.h"
#include "text/file_path.h"

namespace vlout::entry::cli {

Platform makePlatform(const std::filesystem::path& contacts, std::unique_ptr<ui::Toolkit> toolkit) {
  return {.makeConnection = [] { return std::make_unique<store::SqliteConnection>(); },
          .makeContacts =
              [contacts] {
                return std::make_unique<outlook::vcard::VCardStore>(text::pathText(contacts));
              },
          .toolkit = std::move(toolkit),
          .makePreview = [contacts] { return std::make_unique<StorePreview>(contacts); }};
}

}  // namespace vlout::entry::cli
