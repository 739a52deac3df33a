// Comparisons and conversions that look at ASCII letters and digits only, whatever the locale.
// Names of columns, vCard properties and option keys are matched through them.
#pragma once

#include <algorithm>
#include <charconv>
#include <concepts>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "text/language.h"

namespace vlout::text {

[[nodiscard]] constexpr char asciiLower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

[[nodiscard]] constexpr bool isAsciiDigit(char c) {
  return c >= '0' && c <= '9';
}

[[nodiscard]] constexpr bool equalsIgnoringAsciiCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return asciiLower(x) == asciiLower(y);
         });
}

[[nodiscard]] inline std::string toAsciiUpper(std::string_view text) {
  std::string upper(text);
  std::transform(upper.begin(), upper.end(), upper.begin(), [](char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  });
  return upper;
}

// Every character of `text` that is not an ASCII digit is dropped.
[[nodiscard]] inline std::string digitsOnly(std::string_view text) {
  std::string digits;
  std::copy_if(text.begin(), text.end(), std::back_inserter(digits), isAsciiDigit);
  return digits;
}

// `text` as a decimal whole number; nothing if any part of it is something else.
[[nodiscard]] inline std::optional<std::int64_t> parseInteger(std::string_view text) {
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return value;
}

// The number in a narrower type. Throws std::overflow_error if it does not fit.
template <std::signed_integral Narrow>
[[nodiscard]] Narrow narrowed(std::int64_t number) {
  if (std::in_range<Narrow>(number)) return static_cast<Narrow>(number);
  throw std::overflow_error(
      say("%1: 너무 큰 수입니다", "%1: number too large", {std::to_string(number)}));
}

// Replaces every occurrence of `from` in one pass; what a replacement produces is not searched
// again.
[[nodiscard]] inline std::string replaceAll(std::string_view text, std::string_view from,
                                            std::string_view to) {
  std::string result;
  std::size_t start = 0;
  for (std::size_t found = text.find(from); found != std::string_view::npos;
       found = text.find(from, start)) {
    result.append(text, start, found - start).append(to);
    start = found + from.size();
  }
  return result.append(text.substr(start));
}

// The text with each of its line ends, whatever they are, as "\n".
[[nodiscard]] inline std::string withPlainLineEnds(std::string_view text) {
  return replaceAll(replaceAll(text, "\r\n", "\n"), "\r", "\n");
}

}  // namespace vlout::text
