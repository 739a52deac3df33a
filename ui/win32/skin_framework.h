// The host's skin framework, if it is installed: a control that gives windows the look of a skin
// file. Win32Toolkit loads a skin and applies it to each window. If any of that fails, windows keep
// the standard look.
#pragma once

#include <windows.h>

#include <filesystem>

#include "windows/dispatch.h"

namespace vlout::ui::win32 {

class SkinFramework {
 public:
  // After an empty path, no more windows are dressed.
  void load(const std::filesystem::path& skinFile);
  void dress(HWND window) const;

 private:
  windows::MemberIds members_;
  windows::Dispatch framework_;
};

}  // namespace vlout::ui::win32
