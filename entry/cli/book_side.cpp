#include "entry/cli/book_side.h"

#include <string_view>
#include <utility>

#include "entry/cli/preview.h"
#include "history/recorded_book.h"
#include "text/file_path.h"
#include "text/language.h"
#include "text/regular_file.h"

namespace vlout::entry::cli {
namespace {

namespace evolution = outlook::evolution;
namespace fs = std::filesystem;

constexpr std::string_view kBook = "book:";

class MirroredBook : public history::MirroredContacts {
 public:
  MirroredBook(const fs::path& componentFolder, const std::string& uid,
               std::function<void()> whileWaiting)
      : store_({.componentFolder = componentFolder,
                .desktop = std::make_shared<evolution::Desktop>(std::move(whileWaiting)),
                .book = uid}) {
    if (!store_.connect()) throw outlook::ContactStoreError(store_.connectFailure());
    store_.look();
  }

  void putBack(const fs::path& kept) override {
    const auto state = history::fileStateAt(kept);
    if (!state) {
      throw history::UndoError(text::say("보관한 연락처가 없습니다: %1",
                                         "The kept contact is gone: %1", {text::pathText(kept)}));
    }
    store_.putBack(contentOf(kept), {state->seconds, state->nanoseconds});
  }
  void remove(const fs::path& mirrored) override { store_.remove(contentOf(mirrored)); }

 private:
  static std::string contentOf(const fs::path& file) {
    return text::readRegularFile(file, text::kLargestOwn);
  }

  evolution::EvolutionStore store_;
};

// All stores of this platform are of this kind, even in a preview.
evolution::EvolutionStore& bookOf(outlook::ContactStore& contacts) {
  return dynamic_cast<evolution::EvolutionStore&>(contacts);
}

}  // namespace

std::optional<std::string> bookIn(const fs::path& contacts) {
  const std::string name = text::pathText(contacts);
  if (!name.starts_with(kBook)) return std::nullopt;
  return name.substr(kBook.size());
}

std::string uidOfBook(const std::string& book) {
  return evolution::Desktop([] {}).find(book).uid;
}

BookSide::BookSide(fs::path componentFolder, const std::string& book,
                   std::function<void()> whileWaiting)
    : componentFolder_(std::move(componentFolder)),
      desktop_(std::make_shared<evolution::Desktop>(std::move(whileWaiting))),
      info_(desktop_->find(book)) {
  // History looks into it before the book has been read for the first time.
  if (fs::exists(componentFolder_)) fs::create_directories(mirror());
}

fs::path BookSide::mirror() const {
  return evolution::mirrorOf(componentFolder_, info_.uid);
}

std::unique_ptr<outlook::ContactStore> BookSide::makeStore(
    std::shared_ptr<evolution::BookWatcher> watcher) const {
  return std::make_unique<evolution::EvolutionStore>(
      evolution::EvolutionStore::Settings{.componentFolder = componentFolder_,
                                          .desktop = desktop_,
                                          .book = info_.uid,
                                          .watcher = std::move(watcher)});
}

std::unique_ptr<outlook::ContactStore> BookSide::makePreviewStore(
    outlook::vcard::FieldChanged changed) const {
  return std::make_unique<evolution::EvolutionStore>(
      evolution::EvolutionStore::Settings{.componentFolder = componentFolder_,
                                          .desktop = desktop_,
                                          .book = info_.uid,
                                          .onlyPreview = std::move(changed)});
}

void BookSide::use(Platform& platform,
                   const std::shared_ptr<history::RunRecorder>& recorder) const {
  platform.beginRunOrObject = [begin = platform.beginRunOrObject, recorder, name = info_.name](
                                  const ui::RunDescription& run, outlook::ContactStore& contacts) {
    recorder->contactsAreIn("book:" + name, [&book = bookOf(contacts)] {
      book.look();
      return book.count();
    });
    return begin(run, contacts);
  };
  platform.makeContacts = [self = *this, recorder] {
    return self.makeStore(std::make_shared<history::RecordedBook>(recorder));
  };
  platform.makePreview = [self = *this] {
    return std::make_unique<StorePreview>([&](outlook::vcard::FieldChanged changed) {
      return self.makePreviewStore(std::move(changed));
    });
  };
  platform.completeCutShort = [complete = platform.completeCutShort](
                                  store::Connection& connection, outlook::ContactStore& contacts) {
    // What a killed run has left is told from the mirror.
    try {
      bookOf(contacts).look();
    } catch (const outlook::ContactStoreError&) {
      return;  // the run meets it too, and says it
    }
    complete(connection, contacts);
  };
}

std::unique_ptr<history::MirroredContacts> openMirrored(const fs::path& componentFolder,
                                                        const fs::path& contacts,
                                                        std::function<void()> whileWaiting) {
  const std::string uid = evolution::bookOfMirror(componentFolder, contacts);
  if (uid.empty()) return nullptr;
  return std::make_unique<MirroredBook>(componentFolder, uid, std::move(whileWaiting));
}

}  // namespace vlout::entry::cli
