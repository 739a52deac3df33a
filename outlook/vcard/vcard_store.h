// The contact store on a folder of vCards: the layout that khard, vdirsyncer and CardDAV tools
// share, one contact a file, and files of several contacts as other programs export them. The
// folder is read once when it is opened and is this process's alone from `connect` on.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "outlook/contact_store.h"
#include "outlook/vcard/card_file.h"
#include "outlook/vcard/card_home.h"
#include "outlook/vcard/folder.h"

namespace vlout::outlook::vcard {

class VCardStore : public ContactStore, public CardHome {
 public:
  using FolderMaker = std::function<std::unique_ptr<Folder>(const std::string& path)>;

  explicit VCardStore(
      std::string folder,
      FolderMaker makeFolder =
          [](const std::string& path) { return std::make_unique<Folder>(path); })
      : path_(std::move(folder)), makeFolder_(std::move(makeFolder)) {}
  ~VCardStore() override;

  [[nodiscard]] bool connect() override;
  [[nodiscard]] std::string connectFailure() const override { return connectFailure_; }
  using ContactStore::openContactsFolder;
  void openContactsFolder(const std::function<void()>& afterEach) override;
  [[nodiscard]] std::vector<std::string> folderNotices() const override { return notices_; }
  [[nodiscard]] std::size_t count() const override { return items_.size(); }
  [[nodiscard]] std::string keyWhenOpened(std::size_t index) const override;
  [[nodiscard]] PersonName nameWhenOpened(std::size_t index) const override;
  [[nodiscard]] std::unique_ptr<Contact> item(std::size_t index) override;
  [[nodiscard]] std::unique_ptr<Contact> create() override;
  [[nodiscard]] std::string chooseCategories() override;
  [[nodiscard]] std::vector<LostSave> flush() override;

 protected:
  // Throws ContactStoreError when there is no item at that position.
  void requireItem(std::size_t index) const;

 private:
  struct File {
    std::string name;
    FileState state;
    std::size_t cards = 0;
  };
  struct Item {
    std::size_t file = 0;
    std::size_t card = 0;  // which card of the file
    bool isGroup = false;
    std::optional<std::string> vlid;
    std::string nameLines;  // of a contact without a key
  };

  // A card of a file that holds several, as it is with everything that was saved.
  struct SharedCard {
    std::uint64_t hash = 0;
    std::int64_t seconds = 0;  // when it was last changed
    std::int32_t nanoseconds = 0;
  };
  struct SharedFile {
    std::vector<SharedCard> cards;
    CardChanges changes;    // saves that are not in the file yet
    std::int64_t size = 0;  // of the file with them
  };

  static constexpr std::size_t kNoFile = static_cast<std::size_t>(-1);
  struct OpenFile {
    std::size_t file = kNoFile;
    FileState state;
    FileForm form = FileForm::Bytes;
    std::string text;
    std::vector<CardSpan> cards;
  };

  void addFile(const std::string& name, std::string& buffer);
  void reportStrays(const std::string& name, const std::vector<Stray>& strays);
  void reportDoubts(const std::string& name, std::string_view text, FileForm form,
                    const std::vector<CardSpan>& cards);
  OpenFile& openFile(std::size_t file);
  void gatherCard(const Item& item, const std::string& cardText);
  void writeGathered(std::size_t index, SharedFile& shared, std::vector<LostSave>& lost);
  [[nodiscard]] std::vector<LostSave> writeGathered();

  [[nodiscard]] const Item& itemAt(std::size_t position) const { return items_[position - 1]; }
  [[nodiscard]] bool isGroupAt(std::size_t position) const override {
    return itemAt(position).isGroup;
  }
  [[nodiscard]] const std::optional<std::string>& vlidAt(std::size_t position) const override {
    return itemAt(position).vlid;
  }
  [[nodiscard]] text::DateTime timeAt(std::size_t position) const override;
  [[nodiscard]] std::string placeOf(std::size_t position) const override {
    return files_[itemAt(position).file].name;
  }
  [[nodiscard]] std::string readCard(std::size_t position) override;
  [[nodiscard]] FileForm formAt(std::size_t position) override;
  void saveCard(std::size_t position, const std::string& cardText, std::optional<std::string> vlid,
                const std::string& row) override;
  [[nodiscard]] std::size_t saveNewCard(const std::string& uid, const std::string& cardText,
                                        std::optional<std::string> vlid,
                                        const std::string& row) override;

  std::string path_;
  FolderMaker makeFolder_;
  std::string connectFailure_;
  std::unique_ptr<Folder> folder_;
  std::vector<File> files_;
  std::vector<Item> items_;
  std::unordered_map<std::size_t, SharedFile> shared_;  // by position in `files_`
  OpenFile open_;
  std::vector<std::string> notices_;
  bool written_ = false;  // since the last flush
};

}  // namespace vlout::outlook::vcard
