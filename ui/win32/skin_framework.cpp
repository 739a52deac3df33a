#include "ui/win32/skin_framework.h"

#include <optional>
#include <string>
#include <vector>

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

// The numbers of a version: "16.3" is 16 and 3.
std::vector<int> versionOf(std::wstring_view text) {
  std::vector<int> numbers{0};
  for (const wchar_t c : text) {
    if (c >= L'0' && c <= L'9') {
      numbers.back() = numbers.back() * 10 + (c - L'0');
    } else {
      numbers.push_back(0);
    }
  }
  return numbers;
}

// The class under its plain name, or under the latest of those that carry a version behind it.
std::optional<CLSID> installedClass() {
  if (const auto plain = classOf(std::wstring(kProgId))) return plain;
  const std::wstring prefix = std::wstring(kProgId) + L".";
  std::wstring latest;
  wchar_t name[256];
  DWORD length = 256;
  for (DWORD i = 0; RegEnumKeyExW(HKEY_CLASSES_ROOT, i, name, &length, nullptr, nullptr, nullptr,
                                  nullptr) == ERROR_SUCCESS;
       ++i, length = 256) {
    const std::wstring_view key(name, length);
    if (key.starts_with(prefix) && versionOf(key) > versionOf(latest)) latest = key;
  }
  return latest.empty() ? std::nullopt : classOf(latest);
}

}  // namespace

void SkinFramework::load(const std::filesystem::path& skinFile) {
  framework_ = {};
  if (skinFile.empty()) return;
  const auto classId = installedClass();
  ComPtr<IDispatch> object;
  if (!classId ||
      FAILED(CoCreateInstance(*classId, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&object)))) {
    return;
  }
  const Dispatch framework(std::move(object), members_, windows::Server::AtHand);
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
