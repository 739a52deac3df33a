// Functions of the system that only later versions of Windows have.
#pragma once

#include <windows.h>

namespace vlout::windows {

// The function of that name, or nothing where the system has none.
template <typename Function>
[[nodiscard]] Function fromUser32(const char* name) {
  return reinterpret_cast<Function>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), name)));
}

// The same of a library that need not be loaded yet, nor be there.
template <typename Function>
[[nodiscard]] Function fromSystem(const wchar_t* library, const char* name) {
  // Never released: the function may be called at any time.
  const HMODULE module = LoadLibraryExW(library, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
  if (module == nullptr) return nullptr;
  return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

}  // namespace vlout::windows
