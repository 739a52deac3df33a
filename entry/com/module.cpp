#include "entry/com/module.h"

#include <exception>
#include <memory>
#include <string>
#include <system_error>

#include "entry/com/message_filter.h"
#include "entry/orun.h"
#include "outlook/automation/outlook_store.h"
#include "store/ado/ado_connection.h"
#include "ui/win32/win32_toolkit.h"
#include "ui/win32/window_context.h"

namespace vlout::entry::com {
namespace {

HINSTANCE moduleHandle = nullptr;

// The one component of the process. It is never taken down: its database connection stays open for
// the life of the process, and at the end of that COM is gone before a DLL's own objects are.
struct Component {
  Component() : toolkit(new ui::win32::Win32Toolkit(module())) {}

  ui::win32::Win32Toolkit* toolkit;  // the runtime's
  Runtime runtime{
      moduleFile().parent_path(),
      {.makeConnection = [] { return std::make_unique<store::ado::AdoConnection>(); },
       .makeContacts = [] { return std::make_unique<outlook::automation::OutlookStore>(); },
       .toolkit = std::unique_ptr<ui::Toolkit>(toolkit)}};
  InUse stays;
};

Component* component = nullptr;
std::atomic<bool> running{false};

void run() {
  const ui::win32::WindowContext context(module());
  const MessageFilter filter;
  if (component == nullptr) component = std::make_unique<Component>().release();
  try {
    ORUN(component->runtime).OUTSYNCRUN();
  } catch (const std::exception& error) {
    component->runtime.releaseMainWindow();
    component->toolkit->messageBox(ui::MessageIcon::Critical, error.what());
  }
}

}  // namespace

HINSTANCE module() {
  return moduleHandle;
}

void setModule(HINSTANCE module) {
  moduleHandle = module;
}

std::filesystem::path moduleFile() {
  std::wstring name(MAX_PATH, L'\0');
  while (true) {
    const DWORD length = GetModuleFileNameW(module(), name.data(), static_cast<DWORD>(name.size()));
    if (length == 0) {
      throw std::system_error(static_cast<int>(GetLastError()), std::system_category(),
                              "VLOUTSync.dll");
    }
    if (length < name.size()) return name.substr(0, length);
    name.resize(name.size() * 2);
  }
}

void runComponent() noexcept {
  if (running.exchange(true)) {
    if (component != nullptr) component->toolkit->activate();
    return;
  }
  try {
    run();
  } catch (...) {
    // What is left failed before there was anything to show it with; the host hears of nothing.
    MessageBoxW(GetActiveWindow(), L"VLOUTSync를 시작할 수 없습니다.", L"VLOUTSync",
                MB_OK | MB_ICONSTOP);
  }
  running = false;
}

}  // namespace vlout::entry::com
