#include "entry/com/registration.h"

#include <array>
#include <memory>
#include <string>

#include "entry/com/module.h"
#include "vloutsync_h.h"
#include "windows/com.h"

// Missing from the system's headers here.
extern "C" HRESULT WINAPI RegisterTypeLibForUser(ITypeLib* library, OLECHAR* file, OLECHAR* help);
extern "C" HRESULT WINAPI UnRegisterTypeLibForUser(REFGUID id, WORD major, WORD minor,
                                                   LCID language, SYSKIND kind);

namespace vlout::entry::com {
namespace {

constexpr wchar_t kProgId[] = L"VLOUTSync.ORUN";
constexpr WORD kMajor = 1;
constexpr WORD kMinor = 0;

struct KeyCloser {
  void operator()(HKEY key) const { RegCloseKey(key); }
};
using Key = std::unique_ptr<std::remove_pointer_t<HKEY>, KeyCloser>;

std::wstring textOf(REFGUID id) {
  std::array<wchar_t, 39> text{};
  StringFromGUID2(id, text.data(), static_cast<int>(text.size()));
  return text.data();
}

HKEY hiveOf(Scope scope) {
  return scope == Scope::Machine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

HRESULT openClasses(Scope scope, Key& classes) {
  HKEY key = nullptr;
  const LSTATUS status = RegCreateKeyExW(hiveOf(scope), L"Software\\Classes", 0, nullptr, 0,
                                         KEY_READ | KEY_WRITE, nullptr, &key, nullptr);
  classes.reset(key);
  return HRESULT_FROM_WIN32(static_cast<unsigned long>(status));
}

// One value: a key below the classes, the value's name (nullptr for the key's own) and its text.
struct Entry {
  std::wstring key;
  const wchar_t* name;
  std::wstring value;
};

std::array<Entry, 8> entries() {
  const std::wstring classId = textOf(CLSID_ORUN);
  const std::wstring classKey = L"CLSID\\" + classId;
  return {{{kProgId, nullptr, L"VLOUTSync ORUN"},
           {std::wstring(kProgId) + L"\\CLSID", nullptr, classId},
           {classKey, nullptr, L"VLOUTSync ORUN"},
           {classKey + L"\\InprocServer32", nullptr, moduleFile().wstring()},
           {classKey + L"\\InprocServer32", L"ThreadingModel", L"Apartment"},
           {classKey + L"\\ProgID", nullptr, kProgId},
           {classKey + L"\\TypeLib", nullptr, textOf(LIBID_VLOUTSync)},
           {classKey + L"\\Programmable", nullptr, L""}}};
}

HRESULT writeEntries(HKEY classes) {
  for (const Entry& entry : entries()) {
    const auto size = static_cast<DWORD>((entry.value.size() + 1) * sizeof(wchar_t));
    const LSTATUS status =
        RegSetKeyValueW(classes, entry.key.c_str(), entry.name, REG_SZ, entry.value.c_str(), size);
    if (status != ERROR_SUCCESS) return HRESULT_FROM_WIN32(static_cast<unsigned long>(status));
  }
  return S_OK;
}

HRESULT deleteKey(HKEY classes, const std::wstring& key) {
  const LSTATUS status = RegDeleteTreeW(classes, key.c_str());
  if (status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND) return S_OK;
  return HRESULT_FROM_WIN32(static_cast<unsigned long>(status));
}

// Class ids of 32- and 64-bit components are kept apart, ProgIDs are not. Where there is one width
// only, this is the same place as `classes`.
bool otherWidthIsRegistered(Scope scope) {
  constexpr REGSAM kOther = sizeof(void*) == 8 ? KEY_WOW64_32KEY : KEY_WOW64_64KEY;
  const std::wstring server =
      L"Software\\Classes\\CLSID\\" + textOf(CLSID_ORUN) + L"\\InprocServer32";
  HKEY key = nullptr;
  const LSTATUS status = RegOpenKeyExW(hiveOf(scope), server.c_str(), 0, KEY_READ | kOther, &key);
  return Key(key) != nullptr && status == ERROR_SUCCESS;
}

SYSKIND systemKind() {
  return sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32;
}

HRESULT registerLibrary(Scope scope) {
  const std::wstring file = moduleFile().wstring();
  windows::ComPtr<ITypeLib> library;
  const HRESULT result = LoadTypeLibEx(file.c_str(), REGKIND_NONE, library.GetAddressOf());
  if (FAILED(result)) return result;
  auto* const name = const_cast<wchar_t*>(file.c_str());  // which the function only reads
  return scope == Scope::Machine ? RegisterTypeLib(library.Get(), name, nullptr)
                                 : RegisterTypeLibForUser(library.Get(), name, nullptr);
}

HRESULT unregisterLibrary(Scope scope) {
  const HRESULT result =
      scope == Scope::Machine
          ? UnRegisterTypeLib(LIBID_VLOUTSync, kMajor, kMinor, LANG_NEUTRAL, systemKind())
          : UnRegisterTypeLibForUser(LIBID_VLOUTSync, kMajor, kMinor, LANG_NEUTRAL, systemKind());
  return result == TYPE_E_REGISTRYACCESS ? S_OK : result;  // it was not registered
}

}  // namespace

HRESULT registerComponent(Scope scope) {
  Key classes;
  HRESULT result = openClasses(scope, classes);
  if (SUCCEEDED(result)) result = writeEntries(classes.get());
  if (SUCCEEDED(result)) result = registerLibrary(scope);
  if (FAILED(result)) static_cast<void>(unregisterComponent(scope));
  return result;
}

HRESULT unregisterComponent(Scope scope) {
  const HRESULT library = unregisterLibrary(scope);
  Key classes;
  HRESULT result = openClasses(scope, classes);
  if (SUCCEEDED(result)) result = deleteKey(classes.get(), L"CLSID\\" + textOf(CLSID_ORUN));
  if (SUCCEEDED(result) && !otherWidthIsRegistered(scope)) {
    result = deleteKey(classes.get(), kProgId);
  }
  return SUCCEEDED(result) ? library : result;
}

}  // namespace vlout::entry::com
