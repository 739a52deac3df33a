#include "outlook/automation/outlook_store.h"

#include <algorithm>
#include <unordered_set>

#include "outlook/automation/guarded.h"
#include "outlook/pairing.h"
#include "windows/text.h"

namespace vlout::outlook::automation {
namespace {

using windows::ComPtr;
using windows::Dispatch;

constexpr wchar_t kProgId[] = L"Outlook.Application";
constexpr long kContactsFolder = 10;  // olFolderContacts
constexpr long kContactItemCode = 2;  // olContactItem
// A user property of the type text, as a table's column.
constexpr wchar_t kKeyColumn[] =
    L"http://schemas.microsoft.com/mapi/string/{00020329-0000-0000-C000-000000000046}/VLID"
    L"/0x0000001f";

ComPtr<IDispatch> runningInstance(const CLSID& classId) {
  ComPtr<IUnknown> object;
  ComPtr<IDispatch> application;
  if (SUCCEEDED(GetActiveObject(classId, nullptr, &object))) object.As(&application);
  return application;
}

std::string explain(HRESULT result) {
  std::string text = windows::errorText(result);
  if (result == CO_E_SERVER_EXEC_FAILURE) {
    text += "\r\n아웃룩과 벨모라 중 하나만 관리자 권한으로 실행되고 있을 수 있습니다.";
  }
  return text;
}

}  // namespace

bool OutlookStore::connect() {
  windows::BusyPatience::startAfresh();
  // Asked for anew each time: the user may have closed Outlook since. What is held goes only when
  // there is another: an Outlook that nobody holds begins to quit.
  CLSID classId{};
  HRESULT result = CLSIDFromProgID(kProgId, &classId);
  ComPtr<IDispatch> application;
  if (SUCCEEDED(result)) {
    application = runningInstance(classId);
    if (!application) {
      result = CoCreateInstance(classId, nullptr, CLSCTX_SERVER, IID_PPV_ARGS(&application));
    }
  }
  if (!application) {
    connectFailure_ = explain(result);
    return false;
  }
  connectFailure_.clear();
  application_ = Dispatch(std::move(application), classes_.application);
  items_ = {};
  folder_ = {};
  nameSpace_ = {};
  return true;
}

void OutlookStore::openContactsFolder(const std::function<void()>& afterEach) {
  guarded([&] {
    nameSpace_ = application_.object("GetNamespace", classes_.nameSpace, {_variant_t(L"MAPI")});
    folder_ = nameSpace_.object("GetDefaultFolder", classes_.folder, {_variant_t(kContactsFolder)});
    storeId_ = folder_.text("StoreID");
    items_ = folder_.object("Items", classes_.items);
    // Outlook's order moves when an item is saved by anyone, and the walk takes a while.
    constexpr int kTries = 3;
    changedMeanwhile_ = true;
    for (int i = 0; i < kTries && changedMeanwhile_; ++i)
      changedMeanwhile_ = !readEntries(afterEach);
  });
}

bool OutlookStore::readEntries(const NextEntry& next, const std::function<void()>& afterEach) {
  entries_.clear();
  std::unordered_set<std::string> seen;
  const long count = items_.number("Count");
  entries_.reserve(static_cast<std::size_t>(count));
  bool unchanged = true;
  long walked = 0;
  ULONGLONG last = GetTickCount64();
  while (auto entry = next(walked + 1)) {
    ++walked;
    if (!entry->id.empty() && !seen.insert(entry->id).second) {
      unchanged = false;
    } else {
      entries_.push_back(std::move(*entry));
    }
    constexpr ULONGLONG kInterval = 50;  // in milliseconds
    if (GetTickCount64() - last < kInterval) continue;
    afterEach();
    last = GetTickCount64();
  }
  return unchanged && walked == count && items_.number("Count") == count;
}

// The values of a table's row; what is no text is an empty one.
struct OutlookStore::TableRow {
  std::string id, messageClass, key;

  explicit TableRow(const _variant_t& values)
      : id(textAt(values, 0)), messageClass(textAt(values, 1)), key(textAt(values, 2)) {}

 private:
  static std::string textAt(const _variant_t& values, LONG index) {
    _variant_t value;
    if (values.vt != (VT_ARRAY | VT_VARIANT) ||
        FAILED(SafeArrayGetElement(values.parray, &index, &value)) || value.vt != VT_BSTR) {
      return {};
    }
    return windows::variantText(value);
  }
};

// Through the folder's table where it has one that can be read to its end, which tells what most
// items are without opening them; else through the items themselves.
bool OutlookStore::readEntries(const std::function<void()>& afterEach) {
  if (const Dispatch table = openTable()) {
    const NextEntry next = [&](long) -> std::optional<Entry> {
      if (table.number("EndOfTable") != 0) return std::nullopt;
      const Dispatch row = table.object("GetNextRow", classes_.tableRow);
      return entryOf(TableRow(row.call("GetValues")));
    };
    try {
      return readEntries(next, afterEach);
    } catch (const windows::ComError&) {
      // What the items themselves say then counts.
    }
  }
  const long count = items_.number("Count");
  const NextEntry next = [&](long index) -> std::optional<Entry> {
    if (index > count) return std::nullopt;
    Entry entry{};
    readItem(entry, [&] { return items_.object("Item", classes_.item, {_variant_t(index)}); });
    return entry;
  };
  return readEntries(next, afterEach);
}

// Outlook has tables since 2007; whether one offers a user property is the store's affair.
Dispatch OutlookStore::openTable() {
  try {
    Dispatch table = folder_.object("GetTable", classes_.table);
    const Dispatch columns = table.object("Columns", classes_.columns);
    columns.call("RemoveAll");
    columns.call("Add", {_variant_t(L"EntryID")});
    columns.call("Add", {_variant_t(L"MessageClass")});
    try {
      columns.call("Add", {_variant_t(kKeyColumn)});
    } catch (const windows::ComError&) {
      // Then each contact is opened for its key.
    }
    return table;
  } catch (const windows::ComError&) {
    return {};
  }
}

// A contact whose key the table tells is not opened. One without may have a key all the same, of
// another type or spelling.
OutlookStore::Entry OutlookStore::entryOf(const TableRow& row) {
  Entry entry{};
  entry.id = row.id;
  Dispatch opened;
  try {
    guarded([&] { entry.typeName = typeNameOfClass(row, opened); });
  } catch (const ContactStoreError& error) {
    entry.failure = error.what();
    return entry;
  }
  if (entry.typeName != kContactItem) return entry;
  entry.key = row.key;
  if (!entry.key.empty()) return entry;
  readItem(entry, [&] { return opened ? opened : find(row.id); });
  return entry;
}

// Items of one message class have one type, and its first item tells it, which is left in `opened`.
std::string OutlookStore::typeNameOfClass(const TableRow& row, Dispatch& opened) {
  const auto known = typeNames_.find(row.messageClass);
  if (known != typeNames_.end()) return known->second;
  opened = find(row.id);
  std::string name = typeNameOf(opened);
  if (!row.messageClass.empty()) typeNames_.emplace(row.messageClass, name);
  return name;
}

// Items of other types are asked for no more than that: their members have other ids than a
// contact's.
void OutlookStore::readItem(Entry& entry, const OutlookContact::Opener& open) {
  try {
    OutlookContact contact(classes_, open, nullptr, entry.typeName);
    entry.typeName = contact.typeName();
    if (entry.typeName == kContactItem) {
      entry.id = contact.entryId();
      entry.key = contact.userPropertyText(kVLID);
      if (!entry.key.empty()) return;
      const auto& texts = entry.texts.emplace(contact.personTexts());
      const auto last = texts.find(ContactProperty::LastName);
      const auto first = texts.find(ContactProperty::FirstName);
      const bool isNamed = last != texts.end() && first != texts.end();
      if (isNamed) entry.name = {.last = last->second, .first = first->second};
    }
  } catch (const ContactStoreError& error) {
    entry.typeName.clear();
    entry.failure = error.what();
  }
}

bool OutlookStore::mayHideContacts() const {
  return changedMeanwhile_ || std::any_of(entries_.begin(), entries_.end(), [](const Entry& entry) {
           return entry.typeName.empty();
         });
}

std::unique_ptr<Contact> OutlookStore::item(std::size_t index) {
  if (index < 1 || index > entries_.size()) {
    throw ContactStoreError("연락처가 없습니다 #" + std::to_string(index));
  }
  Entry& entry = entries_[index - 1];
  auto open = [this, &entry] {
    // Never by its index: Outlook's order may have moved, and it would be another contact.
    if (entry.id.empty()) throw ContactStoreError(entry.failure);
    return find(entry.id);
  };
  auto contact = std::make_unique<OutlookContact>(
      classes_, open, [this](const std::string& id) { return find(id); }, entry.typeName);
  // Once: whom it is for is decided by them without opening it, what is transferred is read anew.
  if (entry.texts) {
    contact->expect(std::move(*entry.texts));
    entry.texts.reset();
  }
  return contact;
}

Dispatch OutlookStore::find(const std::string& entryId) {
  return nameSpace_.object(
      "GetItemFromID", classes_.item,
      {_variant_t(windows::bstr(entryId)), _variant_t(windows::bstr(storeId_))});
}

Dispatch OutlookStore::createItem() {
  return application_.object("CreateItem", classes_.item, {_variant_t(kContactItemCode)});
}

std::unique_ptr<Contact> OutlookStore::create() {
  return std::make_unique<OutlookContact>(
      classes_, [this] { return createItem(); }, [this](const std::string& id) { return find(id); },
      std::string(kContactItem));
}

std::string OutlookStore::chooseCategories() {
  return guarded([&] {
    const Dispatch contact = createItem();
    CoAllowSetForegroundWindow(contact.get(), nullptr);  // or its dialog opens behind our window
    contact.call("ShowCategoriesDialog");
    return contact.text("Categories");
  });
}

}  // namespace vlout::outlook::automation
