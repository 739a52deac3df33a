// A host that is early bound to the component and has a window of its own: creates the class by its
// identifier, calls the method through the interface as often as the argument says, each time from
// the next screen, looks at what the call leaves of the host's window, and asks the message filter
// that stands in for the host's meanwhile, since Wine never does.
#include <windows.h>

#include <objidl.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <vector>

#include "vloutsync_h.h"
#include "windows/com.h"
#include "windows/counted.h"

namespace {

// Stands for the host's own message filter, which has to be back after a call.
class Filter : public vlout::windows::Counted<IMessageFilter> {
 public:
  Filter() : Counted({IID_IMessageFilter}) {}
  STDMETHODIMP_(DWORD) HandleInComingCall(DWORD, HTASK, DWORD, LPINTERFACEINFO) override {
    return SERVERCALL_ISHANDLED;
  }
  STDMETHODIMP_(DWORD) RetryRejectedCall(HTASK, DWORD, DWORD) override { return 0; }
  STDMETHODIMP_(DWORD) MessagePending(HTASK, DWORD, DWORD) override { return 0; }
};

bool waitsForBusyServers = false;

void CALLBACK askFilter(HWND window, UINT, UINT_PTR timer, DWORD) {
  KillTimer(window, timer);
  vlout::windows::ComPtr<IMessageFilter> filter;
  CoRegisterMessageFilter(nullptr, &filter);
  const DWORD first = filter->RetryRejectedCall(nullptr, 1'000, SERVERCALL_RETRYLATER);
  const DWORD last = filter->RetryRejectedCall(nullptr, 40'000, SERVERCALL_RETRYLATER);
  constexpr DWORD kShortestWait = 100;  // less is none
  waitsForBusyServers = first >= kShortestWait && first < 1'000 && last == static_cast<DWORD>(-1);
  CoRegisterMessageFilter(filter.Get(), nullptr);
}

BOOL CALLBACK addScreen(HMONITOR, HDC, RECT* area, LPARAM list) {
  reinterpret_cast<std::vector<int>*>(list)->push_back(area->left);
  return TRUE;
}

int run(int calls) {
  const auto filter = vlout::windows::makeCounted<Filter>();
  CoRegisterMessageFilter(filter.Get(), nullptr);
  vlout::windows::ComPtr<_ORUN> component;
  HRESULT result = CoCreateInstance(CLSID_ORUN, nullptr, CLSCTX_INPROC_SERVER, IID__ORUN,
                                    reinterpret_cast<void**>(component.GetAddressOf()));
  const HWND window = CreateWindowExW(0, L"STATIC", L"Velmora", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0,
                                      0, 300, 200, nullptr, nullptr, nullptr, nullptr);
  SetActiveWindow(window);
  std::vector<int> screens;  // their left edges
  EnumDisplayMonitors(nullptr, nullptr, addScreen, reinterpret_cast<LPARAM>(&screens));
  std::sort(screens.begin(), screens.end());
  for (int i = 0; i < calls && SUCCEEDED(result); ++i) {
    const std::size_t screen = static_cast<std::size_t>(i + 1) % screens.size();
    SetWindowPos(window, nullptr, screens[screen] + 50, 50, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    SetTimer(window, 1, 10, askFilter);
    VARIANT value;
    value.vt = VT_I4;
    result = component->OUTSYNCRUN(&value);
    if (value.vt != VT_EMPTY || IsWindowEnabled(window) == FALSE || GetActiveWindow() != window) {
      std::cerr << "value " << value.vt << ", enabled " << IsWindowEnabled(window) << ", active "
                << (GetActiveWindow() == window) << '\n';
      return 1;
    }
  }
  DestroyWindow(window);
  if (!waitsForBusyServers) {
    std::cerr << "the component's message filter does not wait\n";
    return 4;
  }
  vlout::windows::ComPtr<IMessageFilter> left;
  CoRegisterMessageFilter(nullptr, &left);
  if (left.Get() != filter.Get()) {
    std::cerr << "the host's message filter is not back\n";
    return 3;
  }
  return SUCCEEDED(result) ? 0 : 2;
}

}  // namespace

int main(int argc, char** argv) {
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  const int status = run(argc > 1 ? std::atoi(argv[1]) : 1);
  CoUninitialize();
  return status;
}
