// The contact store port: the operations that the transfers need of Outlook's object model, or of a
// substitute with the same behaviour. An adapter connects, opens one folder of contacts and hands
// out items by position; everything above talks to these two classes alone.
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

// A call on the store or one of its contacts that failed: on what, and the system's own text.
class ContactStoreError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A property that has a value which the store cannot decode. Unlike other failures it concerns that
// property alone: it is passed over, and the rest of the contact is transferred.
class UnreadableProperty : public ContactStoreError {
 public:
  using ContactStoreError::ContactStoreError;
};

// The values of Outlook's gender property.
enum class Gender { Unspecified = 0, Female = 1, Male = 2 };

// The type name of an item that is a contact; items of any other type are passed over.
inline constexpr std::string_view kContactItem = "ContactItem";

// One item of the contacts folder, or a new one that is not saved yet. What is set becomes part of
// the folder with `save`. Every function throws ContactStoreError when the store refuses the call.
class Contact {
 public:
  Contact() = default;
  Contact(const Contact&) = delete;
  Contact& operator=(const Contact&) = delete;
  virtual ~Contact() = default;

  [[nodiscard]] virtual std::string typeName() = 0;

  // Text properties, the name among them. Setting `FullName` splits it into its parts as Outlook
  // does; `FullName` and `LastNameAndFirstName` follow from the parts. Reading a property that
  // cannot be decoded throws UnreadableProperty; setting it to nothing leaves it as it is.
  [[nodiscard]] virtual std::string text(ContactProperty property) = 0;
  virtual void setText(ContactProperty property, std::string_view value) = 0;

  // Date properties; a missing date is `text::noDate()` in both directions.
  [[nodiscard]] virtual text::DateTime date(ContactProperty property) = 0;
  virtual void setDate(ContactProperty property, text::DateTime value) = 0;

  [[nodiscard]] virtual Gender gender() = 0;
  virtual void setGender(Gender value) = 0;

  // User properties by 1-based index, and by name. A text property is added when there is none of
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

  // Shows the person in a JPEG file's content, where a contact has a place for that and no picture
  // but one that was given so before; an empty text takes that one away.
  virtual void showPicture(std::string_view jpeg) { static_cast<void>(jpeg); }

  virtual void save() = 0;
  // `save` of a contact that was written from the row whose number it carries, before the row gets
  // the dates of this transfer. A store that remembers it can tell later, when the program was
  // killed in between, that nothing but those dates is missing. The save of a new contact may wait
  // for the store's `savePostponed`.
  virtual void saveSent() { save(); }

  // When the contact was last saved, by anyone; with its fraction of a second. If a postponed save
  // has failed, this throws the reason.
  [[nodiscard]] virtual text::DateTime lastModificationTime() = 0;
};

// A save that came to nothing after all.
struct LostSave {
  std::string person;
  std::string cause;
  std::string row{};                            // whose data is lost with it, by number, or empty
  std::optional<text::DateTime> contactTime{};  // of that contact from now on, where it is known
};

class ContactStore {
 public:
  // Called for each lost save before the store forgets it: the rows must not go on saying that
  // their contacts have it.
  using Lose = std::function<void(const LostSave& lost)>;

  ContactStore() = default;
  ContactStore(const ContactStore&) = delete;
  ContactStore& operator=(const ContactStore&) = delete;
  virtual ~ContactStore() = default;

  // True when the store can be used. On false `connectFailure` tells why, where the store knows.
  [[nodiscard]] virtual bool connect() = 0;
  [[nodiscard]] virtual std::string connectFailure() const = 0;

  // Completes the saves that a killed run has left by halves. To be called before rows are read.
  virtual void completeSaves(const Lose& lose) { static_cast<void>(lose); }

  // Opens the default contacts folder as it is now. Items keep their positions until it is opened
  // again; contacts saved meanwhile come after them, or are not counted yet.
  // Where each item has to be opened, `afterEach` is called now and then, so that windows stay
  // alive.
  virtual void openContactsFolder(const std::function<void()>& afterEach) = 0;
  void openContactsFolder() {
    openContactsFolder([] {});
  }

  // What is wrong with the folder's content, a line each: what could not be read as a contact.
  [[nodiscard]] virtual std::vector<std::string> folderNotices() const = 0;

  [[nodiscard]] virtual std::size_t count() const = 0;

  // What the item at a 1-based position was when the folder was opened, without reading it again:
  // the `VLID` of a contact, empty when it had none; and the name of a contact without a `VLID`,
  // empty when it is not known. Both are empty for items that are no contacts.
  [[nodiscard]] virtual std::string keyWhenOpened(std::size_t index) const = 0;
  [[nodiscard]] virtual PersonName nameWhenOpened(std::size_t index) const = 0;

  // True when an item could not be read as the folder was opened: it may be a contact with a key.
  [[nodiscard]] virtual bool mayHideContacts() const { return false; }

  // The item at a 1-based position; throws ContactStoreError when there is none.
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
  // ContactStoreError where there is no such dialog.
  [[nodiscard]] virtual std::string chooseCategories() = 0;

  // Called when a run has ended: what was saved is to survive a power cut. A store may have
  // gathered saves until now.
  virtual void flush(const Lose& lose) = 0;
};

}  // namespace vlout::outlook
