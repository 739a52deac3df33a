#include "text/letter_case.h"

#ifdef _WIN32
#include <string>
#include <windows.h>
#else
#include <algorithm>
#include <glib.h>

#include "text/utf8.h"
#endif

namespace vlout::text {

#ifdef _WIN32

namespace {

std::wstring wide(std::string_view text) {
  const int length = static_cast<int>(text.size());
  std::wstring result(text.size(), L'\0');  // UTF-16 never has more units than UTF-8 has bytes
  const int units = MultiByteToWideChar(CP_UTF8, 0, text.data(), length, result.data(), length);
  result.resize(static_cast<std::size_t>(units));
  return result;
}

}  // namespace

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
  return CompareStringOrdinal(wide(a).c_str(), -1, wide(b).c_str(), -1, TRUE) == CSTR_EQUAL;
}

#else

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
  // Goes through the capital, which a letter such as "ς" shares with its other form.
  const auto folded = [](std::string_view character) {
    return g_unichar_tolower(g_unichar_toupper(codePoint(character)));
  };
  const auto x = characters(a);
  const auto y = characters(b);
  return std::equal(x.begin(), x.end(), y.begin(), y.end(),
                    [&](auto one, auto other) { return folded(one) == folded(other); });
}

#endif

}  // namespace vlout::text
