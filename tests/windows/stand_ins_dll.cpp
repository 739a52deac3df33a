// The DLL of the stand-ins: registers them under the names and identifiers of what they stand for.
#include "tests/windows/stand_ins.h"

#include <array>
#include <fstream>
#include <string>

#include "windows/com.h"
#include "windows/counted.h"

namespace {

struct StandIn {
  CLSID classId;
  const wchar_t* progId;
  IUnknown* (*make)();
};

const std::array<StandIn, 4> kStandIns{
    {{{0x00000514, 0, 0x10, {0x80, 0, 0, 0xAA, 0, 0x6D, 0x2E, 0xA4}},
      L"ADODB.Connection",
      vlout::tests::newAdoConnection},
     {{0x00000535, 0, 0x10, {0x80, 0, 0, 0xAA, 0, 0x6D, 0x2E, 0xA4}},
      L"ADODB.Recordset",
      vlout::tests::newAdoRecordset},
     {{0x0006F03A, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}},
      L"Outlook.Application",
      vlout::tests::newOutlookApplication},
     {{0x4D1F3A61, 0x92C7, 0x4E0D, {0x8B, 0x15, 0x6A, 0x3C, 0x77, 0xE2, 0x90, 0x5F}},
      L"Codejock.SkinFramework.1",
      vlout::tests::newSkinFramework}}};

class Factory : public vlout::windows::Counted<IClassFactory> {
 public:
  explicit Factory(const StandIn& standIn) : Counted({IID_IClassFactory}), standIn_(standIn) {}
  STDMETHODIMP CreateInstance(IUnknown*, REFIID iid, void** result) override {
    return vlout::windows::owned(standIn_.make()).CopyTo(iid, result);
  }
  STDMETHODIMP LockServer(BOOL) override { return S_OK; }

 private:
  const StandIn& standIn_;
};

HINSTANCE self = nullptr;

LSTATUS setText(const std::wstring& key, const wchar_t* name, const std::wstring& value) {
  return RegSetKeyValueW(HKEY_LOCAL_MACHINE, (L"Software\\Classes\\" + key).c_str(), name, REG_SZ,
                         value.c_str(), static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
}

}  // namespace

std::filesystem::path vlout::tests::folderOfStandIns() {
  wchar_t file[MAX_PATH] = L"";
  GetModuleFileNameW(self, file, MAX_PATH);
  return std::filesystem::path(file).parent_path();
}

void vlout::tests::applicationEnded() {
  std::ofstream(std::filesystem::path(_wgetenv(L"VLOUT_TEST_OUTLOOK")) / "ended.txt") << "ended\n";
}

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) self = module;
  return TRUE;
}

STDAPI DllGetClassObject(REFCLSID classId, REFIID iid, LPVOID* result) {
  for (const StandIn& each : kStandIns) {
    if (each.classId != classId) continue;
    return vlout::windows::makeCounted<Factory>(each).CopyTo(iid, result);
  }
  return CLASS_E_CLASSNOTAVAILABLE;
}

STDAPI DllCanUnloadNow() {
  return S_FALSE;
}

STDAPI DllRegisterServer() {
  wchar_t file[MAX_PATH] = L"";
  GetModuleFileNameW(self, file, MAX_PATH);
  for (const StandIn& each : kStandIns) {
    wchar_t id[39] = L"";
    StringFromGUID2(each.classId, id, 39);
    const std::wstring server = std::wstring(L"CLSID\\") + id + L"\\InprocServer32";
    const bool done = setText(std::wstring(each.progId) + L"\\CLSID", nullptr, id) == 0 &&
                      setText(server, nullptr, file) == 0 &&
                      setText(server, L"ThreadingModel", L"Apartment") == 0;
    if (!done) return E_FAIL;
  }
  return S_OK;
}
