// The DLL's exports. Nothing that is thrown inside passes them.
#include <windows.h>

#include <cwchar>

#include "entry/com/module.h"
#include "entry/com/orun_object.h"
#include "entry/com/registration.h"

namespace {

namespace com = vlout::entry::com;

template <typename Call>
HRESULT guarded(Call call) {
  try {
    return call();
  } catch (...) {
    return E_FAIL;
  }
}

}  // namespace

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) com::setModule(module);
  return TRUE;
}

STDAPI DllGetClassObject(REFCLSID classId, REFIID iid, LPVOID* result) {
  return guarded([&] { return com::getClassObject(classId, iid, result); });
}

STDAPI DllCanUnloadNow() {
  return com::InUse::any() ? S_FALSE : S_OK;
}

STDAPI DllRegisterServer() {
  return guarded([] { return com::registerComponent(com::Scope::Machine); });
}

STDAPI DllUnregisterServer() {
  return guarded([] { return com::unregisterComponent(com::Scope::Machine); });
}

// `regsvr32 /n /i:user VLOUTSync.dll` registers for the present user, without an administrator.
STDAPI DllInstall(BOOL install, LPCWSTR commandLine) {
  const bool user = commandLine != nullptr && _wcsicmp(commandLine, L"user") == 0;
  const auto scope = user ? com::Scope::User : com::Scope::Machine;
  return guarded([&] {
    return install != FALSE ? com::registerComponent(scope) : com::unregisterComponent(scope);
  });
}
