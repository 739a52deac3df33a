// Stands in for Outlook: a Contacts folder kept in a file of records, `outlook.txt` in the folder
// that VLOUT_TEST_OUTLOOK names. It behaves as the real one where that matters to the component:
// items open as copies, a saved item moves to the end, entry ids find items whatever their place,
// and calls fail as a record's "fault=Member:code:times" says, or "…:times:after so many calls".
#include "tests/windows/stand_ins.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>

#include "outlook/contact_property.h"
#include "outlook/person_name.h"
#include "tests/scenarios/records.h"
#include "tests/windows/automation_object.h"
#include "text/ascii.h"
#include "text/file_path.h"

namespace vlout::tests {
namespace {

constexpr std::string_view kUser = "user:";
constexpr std::string_view kAttachment = "attachment";

std::filesystem::path folderOfFiles() {
  return _wgetenv(L"VLOUT_TEST_OUTLOOK");
}

// --- the folder ---------------------------------------------------------------------------------

class Folder {
 public:
  static Folder& instance() {
    static Folder folder;
    return folder;
  }

  std::vector<Record>& records() { return records_; }

  Record& find(const std::string& id) {
    const auto found = std::find_if(records_.begin(), records_.end(),
                                    [&](const Record& each) { return each.get("id") == id; });
    if (found == records_.end()) {
      throw Failure{static_cast<HRESULT>(0x8004010F), "The item is not there any more."};
    }
    return *found;
  }

  void save(Record& item) {
    if (item.get("id").empty()) item.set("id", "E" + std::to_string(1000 + records_.size()));
    std::erase_if(records_, [&](const Record& each) { return each.get("id") == item.get("id"); });
    SYSTEMTIME now{};
    GetLocalTime(&now);
    char stamp[40];
    std::snprintf(stamp, sizeof stamp, "%04u/%02u/%02u %02u:%02u:%02u.%03u", now.wYear, now.wMonth,
                  now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);
    item.set("modified", stamp);
    records_.push_back(item);
    write();
  }

  // Fails as the faults of that item, or of the application, say for that member.
  void checkFault(const std::string& id, const std::string& member) {
    for (const Record& record : records_) {
      if (record.get("id") == id) checkFault(record, member);
    }
  }
  void checkFault(const std::string& member) { checkFault(application_, member); }

 private:
  Folder() : file_(folderOfFiles() / "outlook.txt"), records_(readRecords(file_)) {
    const auto first = std::find_if(records_.begin(), records_.end(), [](const Record& each) {
      return each.get("type") == "Application";
    });
    if (first != records_.end()) {
      application_ = *first;
      records_.erase(first);
    }
    int number = 0;
    for (Record& record : records_) {
      if (record.get("id").empty()) record.set("id", "E" + std::to_string(++number));
      if (record.get("type").empty()) record.set("type", "ContactItem");
    }
  }

  void checkFault(const Record& record, const std::string& member) {
    for (const auto& [key, value] : record.pairs) {
      if (key == "fault" && value.starts_with(member + ":")) {
        count(record.get("id"), value, member);
      }
    }
  }

  void count(const std::string& id, const std::string& fault, const std::string& member) {
    std::istringstream rest(fault.substr(member.size() + 1));
    unsigned long code = 0;
    int times = 0;
    int after = 0;
    char colon = 0;
    rest >> std::hex >> code >> std::dec >> colon >> times >> colon >> after;
    const int call = ++calls_[id + fault];
    if (call <= after || call > after + times) return;
    const bool busy = code == 0x80010001;
    throw Failure{static_cast<HRESULT>(code), busy ? "" : member + " was refused."};
  }

  void write() const { writeRecords(file_, records_); }

  std::filesystem::path file_;
  std::vector<Record> records_;
  Record application_;  // its faults alone; they stand in a record of the type "Application"
  std::map<std::string, int> calls_;  // of members that have a fault
};

// --- parts of an item ---------------------------------------------------------------------------

class UserProperty : public AutomationObject {
 public:
  UserProperty(windows::ComPtr<IUnknown> owner, Record& item, std::string key)
      : AutomationObject("UserProperty"),
        owner_(std::move(owner)),
        item_(item),
        key_(std::move(key)) {}

 protected:
  _variant_t get(const std::string& member, const Arguments&) override {
    if (member == "Name") return textVariant(key_.substr(kUser.size()));
    if (member == "Value") return textVariant(item_.get(key_));
    noSuchMember();
  }
  void put(const std::string& member, const _variant_t& value) override {
    if (member != "Value") noSuchMember();
    item_.set(key_, textOf(value));
  }

 private:
  windows::ComPtr<IUnknown> owner_;  // keeps the item
  Record& item_;
  std::string key_;
};

class UserProperties : public AutomationObject {
 public:
  UserProperties(windows::ComPtr<IUnknown> owner, Record& item)
      : AutomationObject("UserProperties"), owner_(std::move(owner)), item_(item) {}

 protected:
  _variant_t get(const std::string& member, const Arguments& arguments) override {
    std::vector<std::string> keys;
    for (const auto& [key, value] : item_.pairs) {
      if (key.starts_with(kUser)) keys.push_back(key);
    }
    if (member == "Count") return _variant_t(static_cast<long>(keys.size()));
    if (member == "Item") {
      const auto index = static_cast<std::size_t>(static_cast<long>(arguments.at(0)));
      return newObject<UserProperty>(owner_, item_, keys.at(index - 1));
    }
    if (member != "Add") noSuchMember();
    const std::string key = std::string(kUser) + textOf(arguments.at(0));
    const bool taken = std::any_of(keys.begin(), keys.end(), [&](const std::string& each) {
      return text::equalsIgnoringAsciiCase(each, key);
    });
    if (taken || static_cast<long>(arguments.at(1)) != 1)
      throw Failure{E_INVALIDARG, "Add failed."};
    item_.add(key, "");
    return newObject<UserProperty>(owner_, item_, key);
  }

 private:
  windows::ComPtr<IUnknown> owner_;
  Record& item_;
};

// An attachment's record value is its display name, a bar and its bytes in hexadecimal digits.
class Attachment : public AutomationObject {
 public:
  Attachment(windows::ComPtr<IUnknown> owner, std::string& value)
      : AutomationObject("Attachment"), owner_(std::move(owner)), value_(value) {}

 protected:
  _variant_t get(const std::string& member, const Arguments&) override {
    if (member == "DisplayName") return textVariant(value_.substr(0, value_.rfind('|')));
    noSuchMember();
  }
  void put(const std::string& member, const _variant_t& value) override {
    if (member != "DisplayName") noSuchMember();
    value_ = textOf(value) + value_.substr(value_.rfind('|'));
  }

 private:
  windows::ComPtr<IUnknown> owner_;
  std::string& value_;
};

class Attachments : public AutomationObject {
 public:
  Attachments(windows::ComPtr<IUnknown> owner, Record& item)
      : AutomationObject("Attachments"), owner_(std::move(owner)), item_(item) {}

 protected:
  _variant_t get(const std::string& member, const Arguments& arguments) override {
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < item_.pairs.size(); ++i) {
      if (item_.pairs[i].first == kAttachment) places.push_back(i);
    }
    if (member == "Count") return _variant_t(static_cast<long>(places.size()));
    if (member == "Add") {
      item_.add(kAttachment, contentOf(text::pathOf(textOf(arguments.at(0)))));
      return newObject<Attachment>(owner_, item_.pairs.back().second);
    }
    const auto index = static_cast<std::size_t>(static_cast<long>(arguments.at(0)));
    const std::size_t place = places.at(index - 1);
    if (member == "Item") return newObject<Attachment>(owner_, item_.pairs[place].second);
    if (member != "Remove") noSuchMember();
    item_.pairs.erase(item_.pairs.begin() + static_cast<std::ptrdiff_t>(place));
    return {};
  }

 private:
  static std::string contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) throw Failure{E_INVALIDARG, "The file cannot be read."};
    std::string value = text::pathText(file.filename()) + "|";
    for (auto byte = std::istreambuf_iterator<char>(stream);
         byte != std::istreambuf_iterator<char>(); ++byte) {
      char digits[3];
      std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned char>(*byte));
      value += digits;
    }
    return value;
  }

  windows::ComPtr<IUnknown> owner_;
  Record& item_;
};

// --- items --------------------------------------------------------------------------------------

outlook::PersonName nameOf(const Record& item) {
  return {.last = item.get("LastName"), .first = item.get("FirstName")};
}

class Item : public AutomationObject {
 public:
  explicit Item(const Record& record) : AutomationObject(record.get("type")), item_(record) {
    // Servers refuse to have many items open; here, a few are too many.
    constexpr int kMost = 3;
    if (++open_ > kMost) throw Failure{E_OUTOFMEMORY, "Too many items are open."};
  }
  ~Item() override { --open_; }

 protected:
  _variant_t get(const std::string& member, const Arguments&) override {
    Folder::instance().checkFault(item_.get("id"), member);
    if (member == "EntryID") return textVariant(item_.get("id"));
    if (member == "UserProperties")
      return newObject<UserProperties>(windows::ComPtr<IUnknown>(this), item_);
    if (member == "Attachments")
      return newObject<Attachments>(windows::ComPtr<IUnknown>(this), item_);
    if (member == "Save") {
      Folder::instance().save(item_);
      return {};
    }
    if (member == "ShowCategoriesDialog") {
      item_.set("Categories", "거래처");
      return {};
    }
    if (member == "LastModificationTime") return dateVariant(item_.get("modified"));
    if (item_.get("type") != "ContactItem") noSuchMember();
    if (member == "FullName") return textVariant(outlook::fullName(nameOf(item_)));
    if (member == "LastNameAndFirstName") {
      return textVariant(outlook::lastNameAndFirstName(nameOf(item_)));
    }
    switch (propertyOf(member).kind) {
      case outlook::PropertyKind::Date:
        return dateVariant(item_.get(member));
      case outlook::PropertyKind::Gender:
        return _variant_t(static_cast<long>(std::atoi(item_.get(member).c_str())));
      default:
        return textVariant(item_.get(member));
    }
  }

  void put(const std::string& member, const _variant_t& value) override {
    Folder::instance().checkFault(item_.get("id"), member);
    if (member == "FullName") {
      const outlook::PersonName name = outlook::splitFullName(textOf(value));
      item_.set("LastName", name.last);
      item_.set("FirstName", name.first);
      return;
    }
    const bool isDate = propertyOf(member).kind == outlook::PropertyKind::Date;
    if (isDate && value.vt != VT_DATE) throw Failure{DISP_E_TYPEMISMATCH, ""};
    std::string text = textOf(value);
    if (isDate && text.starts_with("4501/01/01")) text.clear();
    item_.set(member, isDate ? text.substr(0, 10) : text);
  }

 private:
  static const outlook::PropertyInfo& propertyOf(const std::string& member) {
    for (const auto& info : outlook::contactProperties()) {
      if (info.objectModelName == member) return info;
    }
    noSuchMember();
  }

  static _variant_t dateVariant(const std::string& text) {
    auto date = text::parseDateTime(text.substr(0, 19));
    if (!date) date = text::noDate();
    const double milliseconds = text.size() > 20 ? std::atof(text.c_str() + 20) : 0;
    return {windows::toAutomationDate(*date) + milliseconds / 86'400'000.0, VT_DATE};
  }

  inline static int open_ = 0;
  Record item_;  // a copy: what is not saved is lost
};

_variant_t open(const std::string& id) {
  Folder::instance().checkFault(id, "open");
  return newObject<Item>(Folder::instance().find(id));
}

// --- the application and its collections --------------------------------------------------------

class Items : public AutomationObject {
 public:
  Items() : AutomationObject("Items") {}

 protected:
  _variant_t get(const std::string& member, const Arguments& arguments) override {
    auto& records = Folder::instance().records();
    if (member == "Count") return _variant_t(static_cast<long>(records.size()));
    if (member != "Item") noSuchMember();
    const auto index = static_cast<std::size_t>(static_cast<long>(arguments.at(0)));
    return open(records.at(index - 1).get("id"));
  }
};

class ContactsFolder : public AutomationObject {
 public:
  ContactsFolder() : AutomationObject("MAPIFolder") {}

 protected:
  _variant_t get(const std::string& member, const Arguments&) override {
    if (member == "Items") return newObject<Items>();
    noSuchMember();
  }
};

class NameSpace : public AutomationObject {
 public:
  NameSpace() : AutomationObject("NameSpace") {}

 protected:
  _variant_t get(const std::string& member, const Arguments& arguments) override {
    if (member == "GetItemFromID") return open(textOf(arguments.at(0)));
    if (member != "GetDefaultFolder" || static_cast<long>(arguments.at(0)) != 10) noSuchMember();
    return newObject<ContactsFolder>();
  }
};

class Application : public AutomationObject {
 public:
  Application() : AutomationObject("Application") {}

 protected:
  _variant_t get(const std::string& member, const Arguments& arguments) override {
    Folder::instance().checkFault(member);
    if (member == "GetNamespace" && textOf(arguments.at(0)) == "MAPI") {
      return newObject<NameSpace>();
    }
    if (member != "CreateItem" || static_cast<long>(arguments.at(0)) != 2) noSuchMember();
    Record record;
    record.set("type", "ContactItem");
    return newObject<Item>(record);
  }
};

// The skin framework: notes what it is told in `skin.txt` beside the contacts.
class SkinFramework : public AutomationObject {
 public:
  SkinFramework() : AutomationObject("SkinFramework") {}

 protected:
  _variant_t get(const std::string& member, const Arguments& arguments) override {
    if (member == "ApplyOptions") return _variant_t(4L);
    if (member == "LoadSkin")
      note(member, text::pathText(text::pathOf(textOf(arguments.at(0))).filename()));
    if (member == "ApplyWindow") {
      wchar_t title[100] = L"";
      GetWindowTextW(static_cast<HWND>(LongToHandle(static_cast<long>(arguments.at(0)))), title,
                     100);
      note(member, windows::utf8(title));
    }
    return {};
  }
  void put(const std::string& member, const _variant_t& value) override {
    note(member, textOf(value));
  }

 private:
  static void note(const std::string& member, const std::string& value) {
    std::ofstream stream(folderOfFiles() / "skin.txt", std::ios::binary | std::ios::app);
    stream << member << ' ' << value << '\n';
  }
};

}  // namespace

IUnknown* newOutlookApplication() {
  return static_cast<IDispatch*>(new Application);
}

IUnknown* newSkinFramework() {
  return static_cast<IDispatch*>(new SkinFramework);
}

}  // namespace vlout::tests
