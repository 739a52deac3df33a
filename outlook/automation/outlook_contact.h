// One item of Outlook's contacts folder, or a new contact, through automation. The item is opened
// when it is first asked for more than its type, edited through that one reference, and let go
// with this object: Outlook keeps whatever stays referenced in memory, and servers refuse to have
// more than some hundreds of items open. What stores hand back otherwise than it was saved is put
// right here.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>

#include "outlook/contact_store.h"
#include "windows/dispatch.h"

namespace vlout::outlook::automation {

// The member ids of each class of Outlook's objects that the adapter uses.
struct OutlookClasses {
  windows::MemberIds application, nameSpace, folder, items, item, userProperties, userProperty,
      attachments, attachment, table, columns, tableRow;
};

// The type name of an item as a script would see it: "ContactItem". Where an item has no type
// information, since Outlook was up- or downgraded, its `Class` tells.
[[nodiscard]] std::string typeNameOf(const windows::Dispatch& item);

class OutlookContact : public Contact {
 public:
  using Opener = std::function<windows::Dispatch()>;
  using Finder = std::function<windows::Dispatch(const std::string& entryId)>;
  using Texts = std::map<ContactProperty, std::string>;

  // `typeName` may be empty when it is not known yet; `find` opens an item that is in the folder.
  OutlookContact(OutlookClasses& classes, Opener open, Finder find, std::string typeName)
      : classes_(classes),
        open_(std::move(open)),
        find_(std::move(find)),
        typeName_(std::move(typeName)) {}

  [[nodiscard]] std::string typeName() override;
  [[nodiscard]] std::string text(ContactProperty property) override;
  void setText(ContactProperty property, std::string_view value) override;
  [[nodiscard]] text::DateTime date(ContactProperty property) override;
  void setDate(ContactProperty property, text::DateTime value) override;
  [[nodiscard]] Gender gender() override;
  void setGender(Gender value) override;
  [[nodiscard]] std::size_t userPropertyCount() override;
  [[nodiscard]] std::string userPropertyName(std::size_t index) override;
  [[nodiscard]] std::string userPropertyText(std::string_view name) override;
  void setUserPropertyText(std::string_view name, std::string_view value) override;
  [[nodiscard]] std::size_t attachmentCount() override;
  [[nodiscard]] std::string attachmentName(std::size_t index) override;
  void removeAttachment(std::size_t index) override;
  void addAttachment(const std::filesystem::path& file, std::string_view name) override;
  void save() override;
  [[nodiscard]] text::DateTime lastModificationTime() override;

  [[nodiscard]] std::string entryId();
  // What tells whose a contact without a key is, as far as it can be read.
  [[nodiscard]] Texts personTexts();
  // Answers from these, and that there is no user property, until the item is opened.
  void expect(Texts texts) { expected_ = std::move(texts); }

 private:
  const windows::Dispatch& item();
  const windows::Dispatch& userProperties();
  const windows::Dispatch& attachments();
  [[nodiscard]] windows::Dispatch findUserProperty(std::string_view name);

  OutlookClasses& classes_;
  Opener open_;
  Finder find_;
  std::string typeName_;
  std::optional<Texts> expected_;
  std::optional<text::DateTime> lastTime_;        // as it was last read
  std::optional<text::DateTime> timeBeforeSave_;  // until it is known to have moved
  windows::Dispatch item_;
  windows::Dispatch userProperties_;
  windows::Dispatch attachments_;
};

}  // namespace vlout::outlook::automation
