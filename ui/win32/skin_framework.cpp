#include "ui/win32/skin_framework.h"

#include <optional>
#include <string>

#include "text/file_path.h"
#include "windows/text.h"

namespace vlout::ui::win32 {
namespace {

using windows::ComError;
using windows::ComPtr;
using windows::Dispatch;

constexpr std::wstring_view kProgId = L"Codejock.SkinFramework";
constexpr long kApplyMetrics = 1;

std::optional<CLSID> classOf(const std::wstring& progId) {
  CLSID id{};
  if (FAILED(CLSIDFromProgID(progId.c_str(), &id))) return std::nullopt;
  return id;
}

// The class under its plain name, or under the last of those that carry a version behind it.
std::optional<CLSID> installedClass() {
  if (const auto plain = classOf(std::wstring(kProgId))) return plain;
  std::wstring last;
  wchar_t name[256];
  for (DWORD i = 0;; ++i) {
    DWORD length = 256;
    const LSTATUS status =
        RegEnumKeyExW(HKEY_CLASSES_ROOT, i, name, &length, nullptr, nullptr, nullptr, nullptr);
    if (status == ERROR_NO_MORE_ITEMS) break;
    const std::wstring_view key(name, length);
    if (status == ERROR_SUCCESS && key.starts_with(kProgId) && key > last) last = key;
  }
  return last.empty() ? std::nullopt : classOf(last);
}

}  // namespace

void SkinFramework::load(const std::filesystem::path& skinFile) {
  framework_ = {};
  const auto classId = installedClass();
  ComPtr<IDispatch> object;
  if (!classId ||
      FAILED(CoCreateInstance(*classId, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&object)))) {
    return;
  }
  const Dispatch framework(std::move(object), members_);
  try {
    framework.call("LoadSkin",
                   {_variant_t(windows::bstr(text::pathText(skinFile))), _variant_t(L"")});
    framework.put("ApplyOptions", _variant_t(framework.number("ApplyOptions") | kApplyMetrics));
    framework_ = framework;
  } catch (const ComError&) {
    framework_ = {};  // a look is not worth a message
  }
}

void SkinFramework::dress(HWND window) const {
  if (!framework_) return;
  try {
    framework_.call("ApplyWindow", {_variant_t(static_cast<long>(HandleToLong(window)))});
  } catch (const ComError&) {
    return;  // as above
  }
}

}  // namespace vlout::ui::win32
