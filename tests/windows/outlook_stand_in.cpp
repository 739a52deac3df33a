// Stands in for Outlook: a Contacts folder kept in a file of records, `outlook.txt` in the folder
// that VLOUT_TEST_OUTLOOK names. It behaves as the real one where that matters to the component:
// items open as copies, a saved item moves to the end, entry ids find items whatever their place,
// and calls fail as a record's "fault=Member:code:times" says, or "…:times:after so many calls".
// A record of the type "Application" holds the application's own faults, for the member "item"
// those of all items' calls, and as words of "like" in what Outlooks and stores differ: "old" ones
// have no tables; tables may offer no user property ("keyless"); items have no type information
// ("untyped"); memos come back with a line break more ("lines"), attachments under their file's
// name ("names"), and the time of what was saved moves only in an item that is opened anew
// ("times").
#include "tests/windows/stand_ins.h"

#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <sstream>

#include "outlook/person_name.h"
#include "outlook_h.h"
#include "tests/scenarios/records.h"
#include "tests/windows/automation_object.h"
#include "tests/windows/published_object.h"
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

  [[nodiscard]] bool isLike(std::string_view what) const {
    return application_.get("like").find(what) != std::string::npos;
  }

  void save(Record& item) {
    const std::string before = item.get("modified");
    if (item.get("id").empty()) item.set("id", "E" + std::to_string(1000 + records_.size()));
    remove(item.get("id"));
    SYSTEMTIME now{};
    GetLocalTime(&now);
    char stamp[40];
    std::snprintf(stamp, sizeof stamp, "%04u/%02u/%02u %02u:%02u:%02u.%03u", now.wYear, now.wMonth,
                  now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);
    item.set("modified", stamp);
    records_.push_back(item);
    if (isLike("times")) item.set("modified", before);
    write();
  }

  void remove(const std::string& id) {
    std::erase_if(records_, [&](const Record& each) { return each.get("id") == id; });
    write();
  }

  // Fails as the faults of that item, or of the application, say for that member.
  void checkFault(const std::string& id, const std::string& member) {
    checkFault("item");
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
    const bool busy = code == 0x80010001 || code == 0x8001010A;  // rejected, or to be made later
    throw Failure{static_cast<HRESULT>(code), busy ? "" : member + " was refused."};
  }

  void write() const { writeRecords(file_, records_); }

  std::filesystem::path file_;
  std::vector<Record> records_;
  Record application_;
  std::map<std::string, int> calls_;  // of members that have a fault
};

// --- parts of an item ---------------------------------------------------------------------------

std::size_t place(const VARIANT& index, std::size_t count) {
  const auto number = static_cast<std::size_t>(static_cast<long>(_variant_t(index)));
  if (number < 1 || number > count) throw Failure{E_INVALIDARG, "Array index out of bounds."};
  return number - 1;
}

class OneUserProperty : public PublishedObject<UserProperty> {
 public:
  OneUserProperty(windows::ComPtr<IUnknown> owner, Record& item, std::string key)
      : owner_(std::move(owner)), item_(item), key_(std::move(key)) {}

  STDMETHODIMP get_Name(BSTR* name) override { return give(key_.substr(kUser.size()), name); }
  STDMETHODIMP get_Type(OlUserPropertyType* type) override {
    *type = olText;
    return S_OK;
  }
  STDMETHODIMP get_Value(VARIANT* value) override {
    *value = textVariant(item_.get(key_)).Detach();
    return S_OK;
  }
  STDMETHODIMP put_Value(VARIANT value) override {
    item_.set(key_, textOf(_variant_t(value)));
    return S_OK;
  }

 private:
  windows::ComPtr<IUnknown> owner_;  // keeps the item
  Record& item_;
  std::string key_;
};

class ItemUserProperties : public PublishedObject<UserProperties> {
 public:
  ItemUserProperties(windows::ComPtr<IUnknown> owner, Record& item)
      : owner_(std::move(owner)), item_(item) {}

  STDMETHODIMP get_Count(long* count) override {
    *count = static_cast<long>(keys().size());
    return S_OK;
  }
  STDMETHODIMP Item(VARIANT index, UserProperty** result) override {
    return guarded([&] { *result = property(keys()[place(index, keys().size())]); });
  }
  STDMETHODIMP Add(BSTR name, OlUserPropertyType type, VARIANT, VARIANT,
                   UserProperty** result) override {
    return guarded([&] {
      const std::string key = std::string(kUser) + windows::utf8(name);
      if (!find(key).empty() || type != olText) throw Failure{E_INVALIDARG, "Add failed."};
      item_.add(key, "");
      *result = property(key);
    });
  }
  STDMETHODIMP Find(BSTR name, VARIANT, UserProperty** result) override {
    const std::string key = find(std::string(kUser) + windows::utf8(name));
    *result = key.empty() ? nullptr : property(key);
    return S_OK;
  }

 private:
  [[nodiscard]] std::vector<std::string> keys() const {
    std::vector<std::string> result;
    for (const auto& [key, value] : item_.pairs) {
      if (key.starts_with(kUser)) result.push_back(key);
    }
    return result;
  }
  [[nodiscard]] std::string find(const std::string& wanted) const {
    for (const std::string& each : keys()) {
      if (text::equalsIgnoringAsciiCase(each, wanted)) return each;
    }
    return {};
  }
  [[nodiscard]] UserProperty* property(const std::string& key) {
    return new OneUserProperty(owner_, item_, key);
  }

  windows::ComPtr<IUnknown> owner_;
  Record& item_;
};

// An attachment's record value is its display name, a bar and its bytes in hexadecimal digits.
class OneAttachment : public PublishedObject<Attachment> {
 public:
  OneAttachment(windows::ComPtr<IUnknown> owner, std::string& value)
      : owner_(std::move(owner)), value_(value) {}

  STDMETHODIMP get_DisplayName(BSTR* name) override {
    return give(value_.substr(0, value_.rfind('|')), name);
  }
  STDMETHODIMP put_DisplayName(BSTR name) override {
    if (Folder::instance().isLike("names")) return S_OK;
    value_ = windows::utf8(name) + value_.substr(value_.rfind('|'));
    return S_OK;
  }
  STDMETHODIMP get_FileName(BSTR* name) override { return get_DisplayName(name); }

 private:
  windows::ComPtr<IUnknown> owner_;
  std::string& value_;
};

class ItemAttachments : public PublishedObject<Attachments> {
 public:
  ItemAttachments(windows::ComPtr<IUnknown> owner, Record& item)
      : owner_(std::move(owner)), item_(item) {}

  STDMETHODIMP get_Count(long* count) override {
    *count = static_cast<long>(places().size());
    return S_OK;
  }
  STDMETHODIMP Item(VARIANT index, Attachment** result) override {
    return guarded([&] { *result = attachment(places()[place(index, places().size())]); });
  }
  STDMETHODIMP Add(VARIANT source, VARIANT, VARIANT, VARIANT, Attachment** result) override {
    return guarded([&] {
      item_.add(kAttachment, contentOf(text::pathOf(textOf(_variant_t(source)))));
      *result = attachment(item_.pairs.size() - 1);
    });
  }
  STDMETHODIMP Remove(long index) override {
    return guarded([&] {
      const std::size_t at = places()[place(_variant_t(index), places().size())];
      item_.pairs.erase(item_.pairs.begin() + static_cast<std::ptrdiff_t>(at));
    });
  }

 private:
  [[nodiscard]] std::vector<std::size_t> places() const {
    std::vector<std::size_t> result;
    for (std::size_t i = 0; i < item_.pairs.size(); ++i) {
      if (item_.pairs[i].first == kAttachment) result.push_back(i);
    }
    return result;
  }
  [[nodiscard]] Attachment* attachment(std::size_t at) {
    return new OneAttachment(owner_, item_.pairs[at].second);
  }
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

// Servers refuse to have many items open; here, a few are too many.
class Open {
 public:
  Open() {
    constexpr int kMost = 3;
    if (++open_ > kMost) throw Failure{E_OUTOFMEMORY, "Too many items are open."};
  }
  ~Open() { --open_; }
  Open(const Open&) = delete;
  Open& operator=(const Open&) = delete;

 private:
  inline static int open_ = 0;
};

DATE dateOf(const std::string& text) {
  auto date = text::parseDateTime(text.substr(0, 19));
  if (!date) date = text::noDate();
  const double milliseconds = text.size() > 20 ? std::atof(text.c_str() + 20) : 0;
  return windows::toAutomationDate(*date) + milliseconds / 86'400'000.0;
}

// What contacts and lists have in common: a copy of a record, of which what is not saved is lost.
template <typename Interface>
class Item : public PublishedObject<Interface> {
 public:
  explicit Item(const Record& record) : item_(record) {}

  STDMETHODIMP GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override {
    if (Folder::instance().isLike("untyped")) return TYPE_E_LIBNOTREGISTERED;
    return PublishedObject<Interface>::GetTypeInfo(index, locale, info);
  }
  STDMETHODIMP get_EntryID(BSTR* id) override { return give(item_.get("id"), id); }
  STDMETHODIMP get_LastModificationTime(DATE* time) override {
    *time = dateOf(item_.get("modified"));
    return S_OK;
  }
  STDMETHODIMP Save() override {
    Folder::instance().save(item_);
    return S_OK;
  }

 protected:
  void before(const std::string& member) override {
    Folder::instance().checkFault(item_.get("id"), member);
  }

  Record item_;

 private:
  Open open_;
};

class ContactItem : public Item<_ContactItem> {
 public:
  using Item::Item;

  STDMETHODIMP get_Class(OlObjectClass* number) override {
    *number = olContact;
    return S_OK;
  }
  STDMETHODIMP get_UserProperties(UserProperties** result) override {
    *result = new ItemUserProperties(this, item_);
    return S_OK;
  }
  STDMETHODIMP get_Attachments(Attachments** result) override {
    *result = new ItemAttachments(this, item_);
    return S_OK;
  }
  STDMETHODIMP get_LastNameAndFirstName(BSTR* name) override {
    return give(outlook::lastNameAndFirstName(nameOf(item_)), name);
  }
  STDMETHODIMP get_FullName(BSTR* name) override {
    return give(outlook::fullName(nameOf(item_)), name);
  }
  STDMETHODIMP put_FullName(BSTR value) override {
    const outlook::PersonName name = outlook::splitFullName(windows::utf8(value));
    item_.set("LastName", name.last);
    item_.set("FirstName", name.first);
    return S_OK;
  }
  STDMETHODIMP get_Gender(OlGender* gender) override {
    *gender = static_cast<OlGender>(std::atoi(item_.get("Gender").c_str()));
    return S_OK;
  }
  STDMETHODIMP put_Gender(OlGender gender) override {
    if (gender < olUnspecified || gender > olMale) return E_INVALIDARG;
    item_.set("Gender", std::to_string(gender));
    return S_OK;
  }
  STDMETHODIMP Delete() override {
    Folder::instance().remove(item_.get("id"));
    return S_OK;
  }
  STDMETHODIMP ShowCategoriesDialog() override {
    item_.set("Categories", "거래처");
    return S_OK;
  }

#define TEXT_PROPERTY(number, name)                                 \
  STDMETHODIMP get_##name(BSTR* value) override {                   \
    return give(text(#name), value);                                \
  }                                                                 \
  STDMETHODIMP put_##name(BSTR value) override {                    \
    return set(#name, windows::utf8({value, SysStringLen(value)})); \
  }
#define DATE_PROPERTY(number, name)               \
  STDMETHODIMP get_##name(DATE* value) override { \
    *value = dateOf(item_.get(#name));            \
    return S_OK;                                  \
  }                                               \
  STDMETHODIMP put_##name(DATE value) override {  \
    return set(#name, dayOf(value));              \
  }
#include "tests/windows/outlook_properties.h"
#undef TEXT_PROPERTY
#undef DATE_PROPERTY

 private:
  std::string text(std::string_view name) {
    const std::string value = item_.get(name);
    const bool grows = name == "Body" && !value.empty() && Folder::instance().isLike("lines");
    return grows ? value + "\r\n" : value;
  }
  HRESULT set(const char* name, const std::string& value) {
    item_.set(name, value);
    return S_OK;
  }
  static std::string dayOf(DATE value) {
    const std::string day = textOf(_variant_t(value, VT_DATE)).substr(0, 10);
    return day == "4501/01/01" ? "" : day;
  }
};

class DistListItem : public Item<_DistListItem> {
 public:
  using Item::Item;

  STDMETHODIMP get_Class(OlObjectClass* number) override {
    *number = olDistributionList;
    return S_OK;
  }
  STDMETHODIMP get_DLName(BSTR* name) override { return give(item_.get("LastName"), name); }
  STDMETHODIMP put_DLName(BSTR name) override {
    item_.set("LastName", windows::utf8(name));
    return S_OK;
  }
};

IDispatch* open(const std::string& id) {
  Folder::instance().checkFault(id, "open");
  const Record& record = Folder::instance().find(id);
  if (record.get("type") == "ContactItem") return new ContactItem(record);
  return new DistListItem(record);
}

// --- the application and its collections --------------------------------------------------------

class FolderItems : public PublishedObject<_Items> {
 public:
  STDMETHODIMP get_Count(long* count) override {
    *count = static_cast<long>(Folder::instance().records().size());
    return S_OK;
  }
  STDMETHODIMP Item(VARIANT index, IDispatch** result) override {
    return guarded([&] {
      const auto& records = Folder::instance().records();
      *result = open(records[place(index, records.size())].get("id"));
    });
  }
};

std::string valueOf(const Record& record, const std::string& column) {
  if (column == "EntryID") return record.get("id");
  if (column != "MessageClass") return record.get("user:VLID");
  return record.get("type") == "ContactItem" ? "IPM.Contact" : "IPM.DistList";
}

class OneRow : public PublishedObject<Row> {
 public:
  explicit OneRow(std::vector<std::string> values) : values_(std::move(values)) {}
  STDMETHODIMP GetValues(VARIANT* result) override {
    SAFEARRAY* const array =
        SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(values_.size()));
    for (LONG i = 0; i < static_cast<LONG>(values_.size()); ++i) {
      const std::string& value = values_[static_cast<std::size_t>(i)];
      _variant_t cell = value.empty() ? _variant_t() : textVariant(value);
      SafeArrayPutElement(array, &i, &cell);
    }
    result->vt = VT_ARRAY | VT_VARIANT;
    result->parray = array;
    return S_OK;
  }

 private:
  std::vector<std::string> values_;
};

class OneColumn : public PublishedObject<Column> {
 public:
  explicit OneColumn(std::string name) : name_(std::move(name)) {}
  STDMETHODIMP get_Name(BSTR* name) override { return give(name_, name); }

 private:
  std::string name_;
};

class TableColumns : public PublishedObject<Columns> {
 public:
  using Names = std::shared_ptr<std::vector<std::string>>;
  explicit TableColumns(Names names) : names_(std::move(names)) {}
  // Members of the object model by their own names, user properties by namespace and type.
  STDMETHODIMP Add(BSTR name, Column** result) override {
    return guarded([&] {
      const std::string text = windows::utf8(name);
      const bool known = text == "EntryID" || text == "MessageClass" ||
                         (!Folder::instance().isLike("keyless") &&
                          text ==
                              "http://schemas.microsoft.com/mapi/string/"
                              "{00020329-0000-0000-C000-000000000046}/VLID/0x0000001f");
      if (!known) throw Failure{E_INVALIDARG, "The property is unknown."};
      names_->push_back(text);
      *result = new OneColumn(text);
    });
  }
  STDMETHODIMP RemoveAll() override {
    names_->clear();
    return S_OK;
  }

 private:
  Names names_;
};

class FolderTable : public PublishedObject<Table> {
 public:
  STDMETHODIMP get_Columns(Columns** result) override {
    *result = new TableColumns(columns_);
    return S_OK;
  }
  STDMETHODIMP get_EndOfTable(VARIANT_BOOL* end) override {
    *end = next_ == rows_.size() ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
  }
  STDMETHODIMP GetNextRow(Row** result) override {
    if (next_ == rows_.size()) return E_FAIL;
    std::vector<std::string> values;
    for (const std::string& column : *columns_) values.push_back(valueOf(rows_[next_], column));
    ++next_;
    *result = new OneRow(std::move(values));
    return S_OK;
  }

 protected:
  void before(const std::string& member) override { Folder::instance().checkFault(member); }

 private:
  std::vector<Record> rows_ = Folder::instance().records();
  std::size_t next_ = 0;
  TableColumns::Names columns_ = std::make_shared<std::vector<std::string>>(
      std::vector<std::string>{"EntryID", "Subject", "CreationTime"});
};

constexpr const char* kStore = "00000000-store";

class ContactsFolder : public PublishedObject<MAPIFolder> {
 public:
  STDMETHODIMP get_Items(_Items** result) override {
    *result = new FolderItems;
    return S_OK;
  }
  STDMETHODIMP get_StoreID(BSTR* id) override { return give(kStore, id); }
  STDMETHODIMP GetTable(VARIANT, VARIANT, Table** result) override {
    if (Folder::instance().isLike("old")) return DISP_E_MEMBERNOTFOUND;
    *result = new FolderTable;
    return S_OK;
  }
};

class NameSpace : public PublishedObject<_NameSpace> {
 public:
  STDMETHODIMP GetDefaultFolder(OlDefaultFolders type, MAPIFolder** result) override {
    if (type != olFolderContacts) return E_INVALIDARG;
    *result = new ContactsFolder;
    return S_OK;
  }
  STDMETHODIMP GetItemFromID(BSTR id, VARIANT store, IDispatch** result) override {
    return guarded([&] {
      // An entry id is found in the store that it belongs to.
      if (store.vt != VT_BSTR || textOf(_variant_t(store)) != kStore) {
        throw Failure{static_cast<HRESULT>(0x8004010F), "The store is not known."};
      }
      *result = open(windows::utf8(id));
    });
  }
};

class Application : public PublishedObject<_Application> {
 public:
  Application() { ++living_; }
  ~Application() override {
    if (--living_ == 0) applicationEnded();
  }
  STDMETHODIMP get_Version(BSTR* version) override { return give("0.0", version); }
  STDMETHODIMP CreateItem(OlItemType type, IDispatch** result) override {
    return guarded([&] {
      if (type != olContactItem) throw Failure{E_INVALIDARG, "No such item."};
      Record record;
      record.set("type", "ContactItem");
      *result = new ContactItem(record);
    });
  }
  STDMETHODIMP GetNamespace(BSTR type, _NameSpace** result) override {
    if (windows::utf8(type) != "MAPI") return E_INVALIDARG;
    *result = new NameSpace;
    return S_OK;
  }

 protected:
  void before(const std::string& member) override { Folder::instance().checkFault(member); }

 private:
  inline static int living_ = 0;
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
