#include "entry/cli/platform.h"

#include <optional>
#include <utility>

#include "entry/cli/book_side.h"
#include "entry/cli/contacts_place.h"
#include "entry/cli/desk.h"
#include "entry/cli/preview.h"
#include "outlook/vcard/preview_store.h"
#include "outlook/vcard/vcard_store.h"
#include "text/file_path.h"

namespace vlout::entry::cli {

namespace {

// Begins runs only on the right contacts: those of the last run, or others once they have been
// confirmed.
struct Confirmed {
  std::filesystem::path componentFolder;
  std::filesystem::path contacts;
  std::string bookUid;
  history::EmptiedFolder howToConfirm;

  std::string beginOrObject(const ui::RunDescription& run, history::RunRecorder& recorder) {
    if (auto objection = objectionToFolderOfFolders(contacts); !objection.empty()) {
      return objection;
    }
    const std::string moved = objectionToMove(componentFolder, contacts, bookUid);
    if (!moved.empty() && !howToConfirm.goOn && !run.preview) {
      howToConfirm.goOn = howToConfirm.askAgain;
      return moved + howToConfirm.howToGoOn;
    }
    std::string objection = recorder.beginOrObject(run);
    if (objection.empty() && !run.preview) rememberContacts(componentFolder, contacts, bookUid);
    return objection;
  }
};

}  // namespace

Platform makePlatform(const std::filesystem::path& componentFolder,
                      const std::filesystem::path& contacts, std::unique_ptr<ui::Toolkit> toolkit,
                      const history::EmptiedFolder& emptied,
                      const volatile std::sig_atomic_t* stop) {
  const auto book = bookIn(contacts);
  const auto repaint = [shown = toolkit.get()] { shown->repaint(); };
  std::optional<BookSide> side;
  if (book) side.emplace(componentFolder, *book, repaint);
  const auto recorder = std::make_shared<history::RunRecorder>(
      componentFolder, side ? side->mirror() : contacts, emptied);
  const auto makeFolder = [recorder](const std::string& path) {
    return std::make_unique<history::RecordedFolder>(path, recorder);
  };
  const auto index = history::Runs(componentFolder).contactsIndex();
  Platform platform{
      .makeConnection =
          [recorder, stop] {
            return std::make_unique<history::RecordedConnection>(recorder, stop);
          },
      .makeContacts =
          [contacts, makeFolder, index] {
            return std::make_unique<outlook::vcard::VCardStore>(
                text::pathText(contacts), makeFolder, outlook::vcard::IndexPlace{index});
          },
      .toolkit = std::move(toolkit),
      .makePreview =
          [contacts, index] {
            return std::make_unique<StorePreview>([&](outlook::vcard::FieldChanged changed) {
              return std::make_unique<outlook::vcard::PreviewStore>(text::pathText(contacts),
                                                                    std::move(changed), index);
            });
          },
      .beginRunOrObject =
          [recorder, confirmed = std::make_shared<Confirmed>(
                         Confirmed{componentFolder, contacts, side ? side->uid() : "", emptied})](
              const ui::RunDescription& run, outlook::ContactStore&) {
            return confirmed->beginOrObject(run, *recorder);
          },
      // All connections of this platform are of this kind, even in a preview.
      .completeCutShort =
          [recorder](store::Connection& connection, outlook::ContactStore& store) {
            recorder->completeCutShort(dynamic_cast<store::sqlite::SqliteConnection&>(connection),
                                       store);
          },
      .endRun = [recorder](const ui::RunOutcome& outcome) { recorder->end(outcome); },
      .desk = std::make_shared<LinuxDesk>(componentFolder, contacts, repaint),
  };
  if (side) side->use(platform, recorder);
  return platform;
}

}  // namespace vlout::entry::cli
