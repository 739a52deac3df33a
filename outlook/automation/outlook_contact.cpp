#include "outlook/automation/outlook_contact.h"

#include "outlook/automation/guarded.h"
#include "outlook/pairing.h"
#include "text/ascii.h"
#include "text/file_path.h"
#include "windows/text.h"

namespace vlout::outlook::automation {
namespace {

using windows::bstr;
using windows::Dispatch;

constexpr long kTextType = 1;       // olText
constexpr long kContactClass = 40;  // olContact

std::string_view nameOf(ContactProperty property) {
  return propertyInfo(property).objectModelName;
}

_variant_t textValue(std::string_view value) {
  return _variant_t(bstr(value));
}

_variant_t position(std::size_t index) {
  return _variant_t(static_cast<long>(index));
}

text::DateTime dateOf(const _variant_t& value) {
  if (value.vt != VT_DATE) return text::noDate();
  return windows::fromAutomationDate(value.date);
}

}  // namespace

std::string typeNameOf(const Dispatch& item) {
  windows::ComPtr<ITypeInfo> info;
  _bstr_t name;
  HRESULT result = item.get()->GetTypeInfo(0, LOCALE_USER_DEFAULT, &info);
  if (SUCCEEDED(result)) {
    result = info->GetDocumentation(MEMBERID_NIL, name.GetAddress(), nullptr, nullptr, nullptr);
  }
  if (FAILED(result)) {
    windows::MemberIds ids;  // its class is not known yet, and each numbers its members by itself
    const long number = Dispatch(item.get(), ids).number("Class");
    return number == kContactClass ? std::string(kContactItem) : std::to_string(number);
  }
  std::string text = windows::variantText(_variant_t(name));
  // The interface of the class ContactItem is called _ContactItem.
  if (text.starts_with('_')) text.erase(0, 1);
  return text;
}

const Dispatch& OutlookContact::item() {
  if (!item_) item_ = open_();
  return item_;
}

const Dispatch& OutlookContact::userProperties() {
  if (!userProperties_) {
    userProperties_ = item().object("UserProperties", classes_.userProperties);
  }
  return userProperties_;
}

const Dispatch& OutlookContact::attachments() {
  if (!attachments_) attachments_ = item().object("Attachments", classes_.attachments);
  return attachments_;
}

std::string OutlookContact::typeName() {
  return guarded([&] {
    if (typeName_.empty()) typeName_ = typeNameOf(item());
    return typeName_;
  });
}

std::string OutlookContact::entryId() {
  return guarded([&] { return item().text("EntryID"); });
}

OutlookContact::Texts OutlookContact::personTexts() {
  using P = ContactProperty;
  Texts texts;
  for (const P each : {P::LastName, P::FirstName, P::MobileTelephoneNumber, P::Email1Address}) {
    try {
      texts.emplace(each, text(each));
    } catch (const ContactStoreError&) {
      // A refusal is reported when the contact's turn comes.
    }
  }
  return texts;
}

std::string OutlookContact::text(ContactProperty property) {
  return guarded([&] {
    if (!item_ && expected_) {
      if (const auto known = expected_->find(property); known != expected_->end()) {
        return known->second;
      }
    }
    std::string value = item().text(nameOf(property));
    // Stores hand a memo back with a line break more, which would grow with each transfer.
    if (property == ContactProperty::Body) value.resize(value.find_last_not_of("\r\n") + 1);
    return value;
  });
}

void OutlookContact::setText(ContactProperty property, std::string_view value) {
  guarded([&] { item().put(nameOf(property), textValue(value)); });
}

text::DateTime OutlookContact::date(ContactProperty property) {
  return guarded([&] { return dateOf(item().call(nameOf(property))); });
}

void OutlookContact::setDate(ContactProperty property, text::DateTime value) {
  guarded([&] {
    const _variant_t date(windows::toAutomationDate(value), VT_DATE);
    item().put(nameOf(property), date);
  });
}

Gender OutlookContact::gender() {
  return guarded([&] {
    const long value = item().number("Gender");
    return value == 1 ? Gender::Female : value == 2 ? Gender::Male : Gender::Unspecified;
  });
}

void OutlookContact::setGender(Gender value) {
  guarded([&] { item().put("Gender", _variant_t(static_cast<long>(value))); });
}

// --- user properties ----------------------------------------------------------------------------

std::size_t OutlookContact::userPropertyCount() {
  if (!item_ && expected_) return 0;
  return guarded([&] { return static_cast<std::size_t>(userProperties().number("Count")); });
}

// Outlook keeps one property of a name whatever the case of its letters, and refuses to add a
// second one: a `vlid` is the key too.
std::string OutlookContact::userPropertyName(std::size_t index) {
  return guarded([&] {
    const std::string name =
        userProperties().object("Item", classes_.userProperty, {position(index)}).text("Name");
    return text::equalsIgnoringAsciiCase(name, kVLID) ? std::string(kVLID) : name;
  });
}

Dispatch OutlookContact::findUserProperty(std::string_view name) {
  const std::size_t count = userPropertyCount();
  for (std::size_t i = 1; i <= count; ++i) {
    Dispatch each = userProperties().object("Item", classes_.userProperty, {position(i)});
    if (text::equalsIgnoringAsciiCase(each.text("Name"), name)) return each;
  }
  return {};
}

std::string OutlookContact::userPropertyText(std::string_view name) {
  return guarded([&] {
    const Dispatch property = findUserProperty(name);
    return property ? property.text("Value") : std::string();
  });
}

void OutlookContact::setUserPropertyText(std::string_view name, std::string_view value) {
  guarded([&] {
    static_cast<void>(item());  // what is there now counts
    Dispatch property = findUserProperty(name);
    if (!property) {
      property = userProperties().object("Add", classes_.userProperty,
                                         {textValue(name), _variant_t(kTextType)});
    }
    property.put("Value", textValue(value));
  });
}

// --- attachments --------------------------------------------------------------------------------

std::size_t OutlookContact::attachmentCount() {
  return guarded([&] { return static_cast<std::size_t>(attachments().number("Count")); });
}

std::string OutlookContact::attachmentName(std::size_t index) {
  return guarded([&] {
    return attachments().object("Item", classes_.attachment, {position(index)}).text("DisplayName");
  });
}

void OutlookContact::removeAttachment(std::size_t index) {
  guarded([&] { attachments().call("Remove", {position(index)}); });
}

void OutlookContact::addAttachment(const std::filesystem::path& file, std::string_view name) {
  guarded([&] {
    const Dispatch added =
        attachments().object("Add", classes_.attachment, {textValue(text::pathText(file))});
    try {
      added.put("DisplayName", textValue(name));  // its file name stays that of the source
    } catch (...) {
      // Under another name it would be no picture of the card's, and stay for ever.
      attachments().call("Remove", {position(attachmentCount())});
      throw;
    }
  });
}

void OutlookContact::save() {
  guarded([&] {
    if (!lastTime_) lastTime_ = dateOf(item().call("LastModificationTime"));
    item().call("Save");
    timeBeforeSave_ = lastTime_;
  });
}

// Some stores move the time of what was saved only for those who open it anew.
text::DateTime OutlookContact::lastModificationTime() {
  return guarded([&] {
    lastTime_ = dateOf(item().call("LastModificationTime"));
    if (lastTime_ == timeBeforeSave_) {
      item_ = find_(item().text("EntryID"));
      userProperties_ = {};
      attachments_ = {};
      lastTime_ = dateOf(item().call("LastModificationTime"));
    }
    timeBeforeSave_.reset();
    return *lastTime_;
  });
}

}  // namespace vlout::outlook::automation
