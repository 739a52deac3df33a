// The host's skin framework, when it is installed: a control that gives windows the look of a skin
// file. Win32Toolkit loads a skin with it and has it dress each window; where anything of that
// fails, windows keep the standard look.
#pragma once

#include <windows.h>

#include <filesystem>

#include "windows/dispatch.h"

namespace vlout::ui::win32 {

class SkinFramework {
 public:
  // Nothing is dressed any more after an empty path.
  void load(const std::filesystem::path& skinFile);
  void dress(HWND window) const;

 private:
  windows::MemberIds members_;
  windows::Dispatch framework_;
};

}  // namespace vlout::ui::win32
