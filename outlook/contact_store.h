// The contact store port: the operations of Outlook's object model that the transfers need, or of a
// substitute that behaves the same. An adapter connects, opens a folder of contacts and hands out
// items by position. Everything above uses only these two classes.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "outlook/contact_property.h"
#include "outlook/person_name.h"
#include "text/date_time.h"

namespace vlout::outlook {

// A failed call on the store or on a contact: what it was about, and the system's own text.
class ContactStoreError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A property with a value that the store cannot decode. Unlike other failures it concerns only that
// property: it is passed over, and the rest of the contact is transferred.
class UnreadableProperty : public ContactStoreError {
 public:
  using ContactStoreError::ContactStoreError;
};

// The values of Outlook's gender property.
enum class Gender { Unspecified = 0, Female = 1, Male = 2 };

// The type name of an item that is a contact; items of any other type are passed over.
inline constexpr std::string_view kContactItem = "ContactItem";

// An item of the contacts folder, or a new one that is not saved yet. `save` makes what was set
// part of the folder. Every function throws ContactStoreError when the store refuses the call.
class Contact {
 public:
  Contact() = default;
  Contact(const Contact&) = delete;
  Contact& operator=(const Contact&) = delete;
  virtual ~Contact() = default;

  [[nodiscard]] virtual std::string typeName() = 0;

  // Text properties, the name among them. Setting `FullName` splits it into its parts as Outlook
  // does; `FullName` and `LastNameAndFirstName` follow from the parts. Reading a property that
  // cannot be decoded throws UnreadableProperty; setting it to an empty text leaves it as it is.
  [[nodiscard]] virtual std::string text(ContactProperty property) = 0;
  virtual void setText(ContactProperty property, std::string_view value) = 0;

  // Date properties; a missing date is `text::noDate()` in both directions.
  [[nodiscard]] virtual text::DateTime date(ContactProperty property) = 0;
  virtual void setDate(ContactProperty property, text::DateTime value) = 0;

  [[nodiscard]] virtual Gender gender() = 0;
  virtual void setGender(Gender value) = 0;

  // User properties by 1-based index, and by name. Setting adds a text property if there is none of
  // that name yet.
  [[nodiscard]] virtual std::size_t userPropertyCount() = 0;
  [[nodiscard]] virtual std::string userPropertyName(std::size_t index) = 0;
  [[nodiscard]] virtual std::string userPropertyText(std::string_view name) = 0;
  virtual void setUserPropertyText(std::string_view name, std::string_view value) = 0;

  // Attachments by 1-based index.
  [[nodiscard]] virtual std::size_t attachmentCount() = 0;
  [[nodiscard]] virtual std::string attachmentName(std::size_t index) = 0;
  virtual void removeAttachment(std::size_t index) = 0;
  // Attaches a copy of the file under `name`.
  virtual void addAttachment(const std::filesystem::path& file, std::string_view name) = 0;

  // Sets the picture that the contact shows, from the content of a JPEG file, if contacts here have
  // one and this one shows none but an earlier one of ours. An empty text removes ours.
  virtual void showPicture(std::string_view jpeg) { static_cast<void>(jpeg); }

  virtual void save() = 0;
  // `save` for a contact that was written from the row whose number it carries, before that row
  // gets the dates of this transfer. If the program is killed in between, a store that remembers
  // this can tell later that only those dates are missing. The save of a new contact may wait for
  // the store's `savePostponed`.
  virtual void saveSent() { save(); }

  // When anyone last saved the contact, with the fraction of the second. If a postponed save has
  // failed, this throws the reason.
  [[nodiscard]] virtual text::DateTime lastModificationTime() = 0;
};

// A save that came to nothing after all.
struct LostSave {
  std::string person;
  std::string cause;
  std::string row{};  // the number of the row whose data is lost, or empty
  std::optional<text::DateTime> contactTime{};  // the contact's time from now on, if it is known
};

class ContactStore {
 public:
  // Called for each lost save before the store forgets it, so that the row can stop saying that its
  // contact has the data.
  using Lose = std::function<void(const LostSave& lost)>;

  ContactStore() = default;
  ContactStore(const ContactStore&) = delete;
  ContactStore& operator=(const ContactStore&) = delete;
  virtual ~ContactStore() = default;

  // True if the store can be used. Otherwise `connectFailure` tells why, if the store knows.
  [[nodiscard]] virtual bool connect() = 0;
  [[nodiscard]] virtual std::string connectFailure() const = 0;

  // Completes saves that a killed run has left half done. Call it before rows are read.
  virtual void completeSaves(const Lose& lose) { static_cast<void>(lose); }

  // Tells that `openContactsFolder` comes next, once the rows have been read: what takes time can
  // begin.
  virtual void expectOpening() {}

  // Opens the default contacts folder as it is now. Items keep their positions until it is opened
  // again; contacts that are saved meanwhile come after them, or are not counted yet. If each item
  // has to be opened, `afterEach` is called now and then, so that windows stay alive.
  virtual void openContactsFolder(const std::function<void()>& afterEach) = 0;
  void openContactsFolder() {
    openContactsFolder([] {});
  }

  // What could not be read as a contact in the folder, one line each.
  [[nodiscard]] virtual std::vector<std::string> folderNotices() const = 0;

  [[nodiscard]] virtual std::size_t count() const = 0;

  // What the item at a 1-based position was when the folder was opened, without reading it again:
  // the `VLID` of a contact, empty if it had none, and the name of a contact without a `VLID`,
  // empty if unknown. Both are empty for items that are not contacts.
  [[nodiscard]] virtual std::string keyWhenOpened(std::size_t index) const = 0;
  [[nodiscard]] virtual PersonName nameWhenOpened(std::size_t index) const = 0;

  // True if some item could not be read when the folder was opened; it may be a contact with a key.
  [[nodiscard]] virtual bool mayHideContacts() const { return false; }

  // The item at a 1-based position. Throws ContactStoreError if there is none.
  [[nodiscard]] virtual std::unique_ptr<Contact> item(std::size_t index) = 0;

  // A new contact, not yet part of the folder.
  [[nodiscard]] virtual std::unique_ptr<Contact> create() = 0;

  // Some stores save many new contacts at little more cost than one. They postpone such saves until
  // `savePostponed`. True if the next one would wait along with the others, false if it is time to
  // call that, or if each contact is saved at once.
  [[nodiscard]] virtual bool postponesNext() const { return false; }
  // Makes the postponed saves. `lastModificationTime` of each contact tells how its own ended.
  virtual void savePostponed() {}

  // Lets the user choose categories for a new contact in the store's own dialog. Throws
  // ContactStoreError if there is no such dialog.
  [[nodiscard]] virtual std::string chooseCategories() = 0;

  // Called when a run has ended: what was saved must now survive a power cut. A store may have
  // gathered saves until this call.
  virtual void flush(const Lose& lose) = 0;
};

}  // namespace vlout::outlook
