// The contact store on an address book of the desktop. Its contacts are vCards, read and written
// like those of a folder. The store adds what a book lacks: the time of each contact's last change,
// and a key that no server drops. The book is read once when it is opened, and locked against other
// runs from `connect` on.
#pragma once

#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "outlook/contact_store.h"
#include "outlook/evolution/change_times.h"
#include "outlook/evolution/desktop.h"
#include "outlook/evolution/mirror.h"
#include "outlook/vcard/card_home.h"
#include "outlook/vcard/preview_contact.h"

namespace vlout::outlook::evolution {

// Told of each write to the book before it is made. If it throws, the contact is not written.
class BookWatcher {
 public:
  virtual ~BookWatcher() = default;
  // How many contacts the book was found to have.
  virtual void found(std::size_t contacts) = 0;
  virtual void beforeWriting() = 0;
  // The file of the mirror and the state that it will have; `row` as for CardHome::saveCard.
  virtual void writing(const std::string& file, const vcard::FileState& state,
                       const std::string& row) = 0;
};

class EvolutionStore : public ContactStore, public vcard::CardHome {
 public:
  struct Settings {
    std::filesystem::path componentFolder;
    std::shared_ptr<Desktop> desktop;
    std::string book;  // its UID or name, or empty for the default one
    std::shared_ptr<BookWatcher> watcher = nullptr;
    // For a preview: saves stay in memory, and this is told of them.
    vcard::FieldChanged onlyPreview = nullptr;
  };
  explicit EvolutionStore(Settings settings) : settings_(std::move(settings)) {}

  [[nodiscard]] bool connect() override;
  [[nodiscard]] std::string connectFailure() const override { return connectFailure_; }
  using ContactStore::openContactsFolder;
  // Reads the book and updates its mirror, unless that was done since `connect`. The next
  // `openContactsFolder` does not read it again.
  void look();
  void openContactsFolder(const std::function<void()>& afterEach) override;

  // For an undo. Gives the contact with that text's UID this content, or adds it again; it then
  // counts as changed at that time.
  void putBack(const std::string& cardText, ChangeTime time);
  void remove(const std::string& cardText);

  [[nodiscard]] std::vector<std::string> folderNotices() const override { return notices_; }
  [[nodiscard]] std::size_t count() const override { return items_.size(); }
  [[nodiscard]] std::string keyWhenOpened(std::size_t index) const override;
  [[nodiscard]] PersonName nameWhenOpened(std::size_t index) const override;
  [[nodiscard]] std::unique_ptr<Contact> item(std::size_t index) override;
  [[nodiscard]] std::unique_ptr<Contact> create() override;
  [[nodiscard]] bool postponesNext() const override;
  void savePostponed() override;
  [[nodiscard]] std::string chooseCategories() override;
  void flush(const Lose& lose) override;

 private:
  struct Item {
    std::string uid;
    std::string text;  // as it was read
    bool isGroup = false;
    std::optional<std::string> vlid{};
    ChangeTime time{};
    std::uint64_t sent = 0;  // the fingerprint of the content that was last saved
  };

  [[nodiscard]] bool isGroupAt(std::size_t position) const override;
  [[nodiscard]] const std::optional<std::string>& vlidAt(std::size_t position) const override;
  [[nodiscard]] text::DateTime timeAt(std::size_t position) const override;
  [[nodiscard]] std::string readCard(std::size_t position) override;
  [[nodiscard]] std::optional<std::string> pictureAt(const std::string& address) override {
    return readPicture(address);
  }
  [[nodiscard]] bool keepsParameters() const override { return false; }
  void saveCard(std::size_t position, const std::string& cardText, std::optional<std::string> vlid,
                const std::string& row) override;
  [[nodiscard]] std::size_t saveNewCard(const std::string& uid, const std::string& cardText,
                                        std::optional<std::string> vlid,
                                        const std::string& row) override;

  // A new contact that is not in the book yet.
  struct Postponed {
    std::size_t position = 0;
    std::string row{};  // as for CardHome::saveCard
  };

  void add(StoredCard card);
  [[nodiscard]] bool isLocal() const;
  // Keeps the failure of each contact that could not be stored.
  void store(const std::vector<Postponed>& together);
  void addTogether(const std::vector<Postponed>& together);
  template <typename Step>
  void attempt(std::size_t position, Step step);
  // The contact with the UID of that card, or null.
  [[nodiscard]] const Item* find(const std::string& cardText) const;
  void requireUnchanged(const Item& item);
  void announce(const std::string& uid, const std::string& text, ChangeTime time,
                const std::string& row);
  void complete(Item& item, std::optional<std::string> stored, const std::string& row);
  void reflect(const Item& item);
  [[nodiscard]] bool isPreview() const { return settings_.onlyPreview != nullptr; }
  [[nodiscard]] const Item& at(std::size_t position) const { return items_[position - 1]; }

  Settings settings_;
  std::string connectFailure_;
  std::unique_ptr<Book> book_;
  std::optional<ChangeTimes> times_;
  std::optional<Mirror> mirror_;  // unless it is a preview
  bool hasLooked_ = false;
  std::vector<Item> items_;
  std::vector<Postponed> postponed_;
  std::size_t postponedSize_ = 0;                                 // of their texts
  std::unordered_map<std::size_t, std::exception_ptr> failures_;  // of saves, by position
  std::vector<std::string> notices_;
};

}  // namespace vlout::outlook::evolution
