// The stand-in for Outlook as a program of its own, as the real one is: COM starts it
// ("-Embedding"), and it ends with the last reference; or a user has it open already, and it stands
// in the table of running objects. The record "Application" may say what it does at which call that
// comes in: "rejects=after:times", "hangs=after:milliseconds", "dies=after".
#include <windows.h>

#include <objidl.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

#include "tests/scenarios/records.h"
#include "tests/windows/stand_ins.h"
#include "windows/com.h"
#include "windows/counted.h"

namespace vlout::tests {

std::filesystem::path folderOfStandIns() {
  wchar_t file[MAX_PATH] = L"";
  GetModuleFileNameW(nullptr, file, MAX_PATH);
  return std::filesystem::path(file).parent_path();
}

static DWORD mainThread = 0;

void applicationEnded() {
  PostThreadMessageW(mainThread, WM_QUIT, 0, 0);
}

namespace {

constexpr CLSID kOutlook{0x0006F03A, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

std::filesystem::path besideContacts(const char* name) {
  return std::filesystem::path(_wgetenv(L"VLOUT_TEST_OUTLOOK")) / name;
}

void noteEnd() {
  std::ofstream(besideContacts("ended.txt")) << "ended\n";
}

// Decides what becomes of each call, and carries out what the record says.
class Moods : public windows::Counted<IMessageFilter> {
 public:
  Moods() : Counted({IID_IMessageFilter}) {
    for (const Record& each : readRecords(besideContacts("outlook.txt"))) {
      if (each.get("type") == "Application") record_ = each;
    }
    // What it does once it does not do again when it is started anew.
    std::ofstream stream(besideContacts("started.txt"), std::ios::app);
    if (stream.tellp() > 0) record_ = {};
    stream << "started\n";
  }

  STDMETHODIMP_(DWORD) HandleInComingCall(DWORD, HTASK, DWORD, LPINTERFACEINFO) override {
    ++calls_;
    if (const auto [after, times] = numbers("rejects"); calls_ > after && calls_ <= after + times)
      return SERVERCALL_REJECTED;
    if (const auto [after, milliseconds] = numbers("hangs"); calls_ == after)
      Sleep(static_cast<DWORD>(milliseconds));
    if (calls_ == numbers("dies").first) {
      noteEnd();
      TerminateProcess(GetCurrentProcess(), 1);
    }
    return SERVERCALL_ISHANDLED;
  }
  STDMETHODIMP_(DWORD) RetryRejectedCall(HTASK, DWORD, DWORD) override {
    return static_cast<DWORD>(-1);
  }
  STDMETHODIMP_(DWORD) MessagePending(HTASK, DWORD, DWORD) override {
    return PENDINGMSG_WAITDEFPROCESS;
  }

 private:
  [[nodiscard]] std::pair<long, long> numbers(std::string_view key) const {
    std::istringstream text(record_.get(key));
    long after = 0;
    long times = 0;
    char colon = 0;
    text >> after >> colon >> times;
    return {after, times};
  }

  Record record_;
  long calls_ = 0;
};

class Factory : public windows::Counted<IClassFactory> {
 public:
  Factory() : Counted({IID_IClassFactory}) {}
  STDMETHODIMP CreateInstance(IUnknown*, REFIID iid, void** result) override {
    return windows::owned(newOutlookApplication()).CopyTo(iid, result);
  }
  STDMETHODIMP LockServer(BOOL) override { return S_OK; }
};

int run(bool started) {
  const auto moods = windows::makeCounted<Moods>();
  CoRegisterMessageFilter(moods.Get(), nullptr);
  windows::ComPtr<IUnknown> open;  // by the user
  DWORD cookie = 0;
  if (started) {
    const auto factory = windows::makeCounted<Factory>();
    CoRegisterClassObject(kOutlook, factory.Get(), CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE,
                          &cookie);
  } else {
    open = windows::owned(newOutlookApplication());
    RegisterActiveObject(open.Get(), kOutlook, ACTIVEOBJECT_STRONG, &cookie);
    std::ofstream(besideContacts("open.txt")) << "open\n";
  }
  MSG message{};
  SetTimer(nullptr, 0, 100, nullptr);
  while (GetMessageW(&message, nullptr, 0, 0) > 0) {
    DispatchMessageW(&message);
    // The user closes it.
    if (std::filesystem::exists(besideContacts("close.txt"))) break;
  }
  if (started) CoRevokeClassObject(cookie);  // or the next call would reach what is on its way out
  noteEnd();
  return 0;
}

}  // namespace
}  // namespace vlout::tests

int main(int argc, char** argv) {
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  vlout::tests::mainThread = GetCurrentThreadId();
  std::_Exit(vlout::tests::run(argc > 1 && std::strcmp(argv[1], "-Embedding") == 0));
}
