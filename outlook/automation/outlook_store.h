// The contact store port on Microsoft Outlook, over its automation objects: the running instance,
// else a new one, and its default Contacts folder. The positions of a folder are the items' entry
// ids as they were when it was opened, since Outlook's own order moves while items are saved.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "outlook/automation/outlook_contact.h"
#include "outlook/contact_store.h"
#include "windows/dispatch.h"

namespace vlout::outlook::automation {

class OutlookStore : public ContactStore {
 public:
  [[nodiscard]] bool connect() override;
  [[nodiscard]] std::string connectFailure() const override { return connectFailure_; }
  using ContactStore::openContactsFolder;
  void openContactsFolder(const std::function<void()>& afterEach) override;
  [[nodiscard]] std::vector<std::string> folderNotices() const override { return {}; }
  [[nodiscard]] std::size_t count() const override { return entries_.size(); }
  [[nodiscard]] std::string keyWhenOpened(std::size_t index) const override {
    return entries_[index - 1].key;
  }
  [[nodiscard]] PersonName nameWhenOpened(std::size_t index) const override {
    return entries_[index - 1].name;
  }
  [[nodiscard]] bool mayHideContacts() const override;
  [[nodiscard]] std::unique_ptr<Contact> item(std::size_t index) override;
  [[nodiscard]] std::unique_ptr<Contact> create() override;
  [[nodiscard]] std::string chooseCategories() override;
  // Outlook keeps its own promises about what is saved.
  void flush(const Lose& lose) override { static_cast<void>(lose); }

 private:
  // What is known of an item since the folder was opened. Items that are no contacts have a type
  // alone, those that could not be read no type but the cause.
  struct Entry {
    std::string id;
    std::string typeName;
    std::string key;
    PersonName name;  // of a contact without a key
    std::string failure;
    std::optional<OutlookContact::Texts> texts;  // of a contact without a key, until its turn
  };
  struct TableRow;

  // The next item of a walk; nothing at its end.
  using NextEntry = std::function<std::optional<Entry>(long index)>;

  // False when the folder has changed meanwhile: an item was seen twice, or not at all.
  [[nodiscard]] bool readEntries(const std::function<void()>& afterEach);
  [[nodiscard]] bool readEntries(const NextEntry& next, const std::function<void()>& afterEach);
  [[nodiscard]] windows::Dispatch openTable();
  [[nodiscard]] Entry entryOf(const TableRow& row);
  [[nodiscard]] std::string typeNameOfClass(const TableRow& row, windows::Dispatch& opened);
  void readItem(Entry& entry, const OutlookContact::Opener& open);
  [[nodiscard]] windows::Dispatch find(const std::string& entryId);
  [[nodiscard]] windows::Dispatch createItem();

  OutlookClasses classes_;
  windows::Dispatch application_;
  windows::Dispatch nameSpace_;
  windows::Dispatch folder_;
  windows::Dispatch items_;
  std::string storeId_;  // of the folder: an entry id alone may name nothing
  std::vector<Entry> entries_;
  std::map<std::string, std::string> typeNames_;  // of message classes
  bool changedMeanwhile_ = false;
  std::string connectFailure_;
};

}  // namespace vlout::outlook::automation
