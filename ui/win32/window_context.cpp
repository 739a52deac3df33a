#include "ui/win32/window_context.h"

#include <commctrl.h>

#include "windows/late_bound.h"

namespace vlout::ui::win32 {
namespace {

constexpr int kManifestResource = 2;  // where a DLL's manifest lies

using SetDpiContext = void*(WINAPI*)(void*);

SetDpiContext setDpiContext() {
  return windows::fromUser32<SetDpiContext>("SetThreadDpiAwarenessContext");
}

// DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2
void* perMonitorAware() {
  return reinterpret_cast<void*>(static_cast<INT_PTR>(-4));
}

HANDLE createActivation(HINSTANCE module) {
  ACTCTXW context{};
  context.cbSize = sizeof context;
  context.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
  context.hModule = module;
  context.lpResourceName = MAKEINTRESOURCEW(kManifestResource);
  return CreateActCtxW(&context);
}

}  // namespace

WindowContext::WindowContext(HINSTANCE module) : manifest_(createActivation(module)) {
  if (manifest_ != INVALID_HANDLE_VALUE) ActivateActCtx(manifest_, &activation_);
  if (const auto set = setDpiContext()) oldDpiContext_ = set(perMonitorAware());
  INITCOMMONCONTROLSEX controls{};
  controls.dwSize = sizeof controls;
  controls.dwICC = ICC_LISTVIEW_CLASSES | ICC_TREEVIEW_CLASSES | ICC_BAR_CLASSES |
                   ICC_PROGRESS_CLASS | ICC_STANDARD_CLASSES;
  InitCommonControlsEx(&controls);
}

WindowContext::~WindowContext() {
  if (oldDpiContext_ != nullptr) setDpiContext()(oldDpiContext_);
  if (activation_ != 0) DeactivateActCtx(0, activation_);
  if (manifest_ != INVALID_HANDLE_VALUE) ReleaseActCtx(manifest_);
}

}  // namespace vlout::ui::win32
