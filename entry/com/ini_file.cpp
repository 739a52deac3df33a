#include "entry/ini_file.h"

#include <windows.h>

#include "windows/text.h"

namespace vlout::entry {

using windows::wide;

std::string IniFile::read(std::string_view section, std::string_view key) const {
  wchar_t buffer[255] = L"";
  const DWORD length = GetPrivateProfileStringW(wide(section).c_str(), wide(key).c_str(), L"",
                                                buffer, 255, file_.c_str());
  return windows::utf8({buffer, length});
}

bool IniFile::write(std::string_view section, const std::vector<Entry>& entries) const {
  bool written = true;
  for (const Entry& entry : entries) {
    written = WritePrivateProfileStringW(wide(section).c_str(), wide(entry.key).c_str(),
                                         wide(entry.value).c_str(), file_.c_str()) != FALSE &&
              written;
  }
  return written;
}

}  // namespace vlout::entry
