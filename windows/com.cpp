#include "windows/com.h"

#include <cmath>
#include <cstdio>

#include "windows/text.h"

namespace vlout::windows {
namespace {

constexpr std::int64_t kSecondsPerDay = 86400;
// Automation dates count from 1899-12-30.
constexpr std::int64_t kDaysToUnixEpoch = 25569;

}  // namespace

std::string errorText(HRESULT code) {
  wchar_t buffer[512] = L"";
  DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                static_cast<DWORD>(code), 0, buffer, 511, nullptr);
  while (length > 0 && buffer[length - 1] <= L' ') --length;
  char number[16];
  std::snprintf(number, sizeof number, "0x%08lX", static_cast<unsigned long>(code));
  if (length == 0) return number;
  return utf8({buffer, length}) + " (" + number + ")";
}

std::string variantText(const VARIANT& value) {
  switch (value.vt) {
    case VT_EMPTY:
    case VT_NULL:
      return {};
    case VT_BSTR:
      return utf8({value.bstrVal, SysStringLen(value.bstrVal)});
    case VT_DATE:
      return text::formatStamp(fromAutomationDate(value.date));
    default:
      break;
  }
  _variant_t text;
  // Never the user's own locale: the text may become a part of a statement.
  const HRESULT result =
      VariantChangeTypeEx(&text, const_cast<VARIANT*>(&value), LOCALE_INVARIANT, 0, VT_BSTR);
  if (FAILED(result)) throw ComError(result, errorText(result));
  return variantText(text);
}

text::DateTime fromAutomationDate(double days) {
  const double day = std::trunc(days);
  // The part behind the point is the time of day, also before 1899, where the number is negative.
  const auto milliseconds =
      static_cast<std::int64_t>(std::round(std::fabs(days - day) * 1000.0 * kSecondsPerDay));
  return {
      (static_cast<std::int64_t>(day) - kDaysToUnixEpoch) * kSecondsPerDay + milliseconds / 1000,
      static_cast<std::int32_t>(milliseconds % 1000 * 1'000'000)};
}

double toAutomationDate(text::DateTime time) {
  const std::int64_t second = ((time.seconds % kSecondsPerDay) + kSecondsPerDay) % kSecondsPerDay;
  const std::int64_t unixDay = (time.seconds - second) / kSecondsPerDay;
  const auto day = static_cast<double>(unixDay + kDaysToUnixEpoch);
  const double fraction = static_cast<double>(second) / static_cast<double>(kSecondsPerDay);
  return day < 0 ? day - fraction : day + fraction;
}

}  // namespace vlout::windows
