// Functions of the system's user interface that only later versions of Windows have.
#pragma once

#include <windows.h>

namespace vlout::windows {

// The function of that name, or nothing where the system has none.
template <typename Function>
[[nodiscard]] Function fromUser32(const char* name) {
  return reinterpret_cast<Function>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), name)));
}

}  // namespace vlout::windows
