// The contact store on a folder of vCards, as khard, vdirsyncer and CardDAV tools lay it out: one
// contact per file, and files of several contacts as other programs export them. The folder is read
// once when it is opened, and locked against other runs from `connect` on.
#pragma once

#include <filesystem>
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

// Where what is known of a folder is kept between runs; nowhere if `file` is empty.
struct IndexPlace {
  std::filesystem::path file{};
  bool isReadOnly = false;
};

class VCardStore : public ContactStore, public CardHome {
 public:
  using FolderMaker = std::function<std::unique_ptr<Folder>(const std::string& path)>;

  explicit VCardStore(
      std::string folder,
      FolderMaker makeFolder =
          [](const std::string& path) { return std::make_unique<Folder>(path); },
      IndexPlace index = {})
      : path_(std::move(folder)), makeFolder_(std::move(makeFolder)), index_(std::move(index)) {}
  ~VCardStore() override;

  [[nodiscard]] bool connect() override;
  [[nodiscard]] std::string connectFailure() const override { return connectFailure_; }
  void completeSaves(const Lose& lose) override;
  void expectOpening() override;
  using ContactStore::openContactsFolder;
  void openContactsFolder(const std::function<void()>& afterEach) override;
  [[nodiscard]] std::vector<std::string> folderNotices() const override { return notices_; }
  [[nodiscard]] std::size_t count() const override { return items_.size(); }
  [[nodiscard]] std::string keyWhenOpened(std::size_t index) const override;
  [[nodiscard]] PersonName nameWhenOpened(std::size_t index) const override;
  [[nodiscard]] std::unique_ptr<Contact> item(std::size_t index) override;
  [[nodiscard]] std::unique_ptr<Contact> create() override;
  [[nodiscard]] std::string chooseCategories() override;
  void flush(const Lose& lose) override;

 protected:
  // Throws ContactStoreError when there is no item at that position.
  void requireItem(std::size_t index) const;

 private:
  struct File {
    std::string name;
    FileSight sight;
    std::size_t firstItem = 0;
    std::size_t cards = 0;
    bool isSettled = false;   // the index may tell what is in it
    bool isDoubtful = false;  // there is something to report of it in every run
    bool isWritten = false;   // by this run
  };
  struct Item {
    std::size_t file = 0;
    std::size_t card = 0;  // which card of the file
    bool isGroup = false;
    std::optional<std::string> vlid;
    std::string nameLines;  // of a contact without a key
    // The card's state with everything that was saved.
    std::uint64_t hash = 0;  // of its text
    Moment time{};           // when that was last changed
  };

  // A file of several cards.
  struct SharedFile {
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

  void addKnown(CardFile found, const KnownFile& known);
  void addFile(const CardFile& found, const KnownFile* known, const Moment& now,
               std::string& buffer);
  void timeCards(const KnownFile* known);
  [[nodiscard]] bool hasKeys(const File& file) const;
  [[nodiscard]] KnownFile knownOf(std::size_t file) const;
  void complete(const Lose& lose);
  void saveIndex();
  void reportStrays(const std::string& name, const std::vector<Stray>& strays);
  void reportDoubts(const std::string& name, std::string_view text, FileForm form,
                    const std::vector<CardSpan>& cards);
  OpenFile& openFile(std::size_t file);
  void markWritten(File& file, const FileState& state);
  void gatherCard(Item& item, const std::string& cardText, std::string_view vlid);
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
  std::vector<std::string> lostBefore_;  // the saves of earlier runs, a notice each
  IndexPlace index_;
  bool indexIsOld_ = false;
  bool written_ = false;  // since the last flush
};

}  // namespace vlout::outlook::vcard
