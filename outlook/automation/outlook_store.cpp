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

// The name by which a contact is known when it cannot be read later; a refusal now costs it no more
// than that.
PersonName nameOf(OutlookContact& contact) {
  try {
    return {.last = contact.text(ContactProperty::LastName),
            .first = contact.text(ContactProperty::FirstName)};
  } catch (const ContactStoreError&) {
    return {};
  }
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
  nameSpace_ = {};
  return true;
}

void OutlookStore::openContactsFolder(const std::function<void()>& afterEach) {
  guarded([&] {
    nameSpace_ = application_.object("GetNamespace", classes_.nameSpace, {_variant_t(L"MAPI")});
    const Dispatch folder =
        nameSpace_.object("GetDefaultFolder", classes_.folder, {_variant_t(kContactsFolder)});
    storeId_ = folder.text("StoreID");
    items_ = folder.object("Items", classes_.items);
    // Outlook's order moves when an item is saved by anyone, and the walk takes a while.
    constexpr int kTries = 3;
    changedMeanwhile_ = true;
    for (int i = 0; i < kTries && changedMeanwhile_; ++i)
      changedMeanwhile_ = !readEntries(afterEach);
  });
}

bool OutlookStore::readEntries(const std::function<void()>& afterEach) {
  entries_.clear();
  std::unordered_set<std::string> seen;
  const long count = items_.number("Count");
  entries_.reserve(static_cast<std::size_t>(count));
  bool unchanged = true;
  ULONGLONG last = GetTickCount64();
  for (long i = 1; i <= count; ++i) {
    Entry entry = readEntry(i);
    if (!entry.id.empty() && !seen.insert(entry.id).second) {
      unchanged = false;
    } else {
      entries_.push_back(std::move(entry));
    }
    constexpr ULONGLONG kInterval = 50;  // in milliseconds
    if (GetTickCount64() - last < kInterval) continue;
    afterEach();
    last = GetTickCount64();
  }
  return unchanged && items_.number("Count") == count;
}

// Items of other types are asked for no more than that: their members have other ids than a
// contact's.
OutlookStore::Entry OutlookStore::readEntry(long index) {
  Entry entry;
  try {
    OutlookContact contact(
        classes_, [&] { return items_.object("Item", classes_.item, {_variant_t(index)}); }, "");
    entry.typeName = contact.typeName();
    if (entry.typeName == kContactItem) {
      entry.id = contact.entryId();
      entry.key = contact.userPropertyText(kVLID);
      if (entry.key.empty()) entry.name = nameOf(contact);
    }
  } catch (const ContactStoreError& error) {
    entry.typeName.clear();
    entry.failure = error.what();
  }
  return entry;
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
  const Entry& entry = entries_[index - 1];
  auto open = [this, &entry] {
    // Never by its index: Outlook's order may have moved, and it would be another contact.
    if (entry.id.empty()) throw ContactStoreError(entry.failure);
    return nameSpace_.object(
        "GetItemFromID", classes_.item,
        {_variant_t(windows::bstr(entry.id)), _variant_t(windows::bstr(storeId_))});
  };
  return std::make_unique<OutlookContact>(classes_, open, entry.typeName);
}

Dispatch OutlookStore::createItem() {
  return application_.object("CreateItem", classes_.item, {_variant_t(kContactItemCode)});
}

std::unique_ptr<Contact> OutlookStore::create() {
  return std::make_unique<OutlookContact>(
      classes_, [this] { return createItem(); }, std::string(kContactItem));
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
