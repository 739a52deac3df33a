#include "store/jet/jet_value.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <iconv.h>

#include "store/connection.h"
#include "text/date_time.h"
#include "text/language.h"

namespace vlout::store::jet {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

std::uint64_t littleEndian(std::string_view bytes) {
  std::uint64_t number = 0;
  for (std::size_t i = bytes.size(); i-- > 0;) {
    number = number << 8U | static_cast<unsigned char>(bytes[i]);
  }
  return number;
}

template <typename Real>
Real realOf(std::string_view bytes) {
  using Bits = std::conditional_t<sizeof(Real) == 4, std::uint32_t, std::uint64_t>;
  const auto bits = static_cast<Bits>(littleEndian(bytes));
  Real number = 0;
  std::memcpy(&number, &bits, sizeof number);
  return number;
}

template <typename Real>
std::string shortest(Real number) {
  std::array<char, 40> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  return {digits.data(), end};
}

// The number with these digits, the last `scale` of them after the point, without trailing zeros.
std::string withPoint(bool isNegative, std::string digits, std::size_t scale) {
  if (digits.size() <= scale) digits.insert(0, scale + 1 - digits.size(), '0');
  if (scale > 0) {
    digits.insert(digits.size() - scale, 1, '.');
    digits.erase(digits.find_last_not_of('0') + 1);
    if (digits.back() == '.') digits.pop_back();
  }
  return isNegative && digits != "0" ? "-" + digits : digits;
}

void appendHex(std::string& text, std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text += kDigits[byte >> 4U];
    text += kDigits[byte & 15U];
  }
}

}  // namespace

struct JetTextDecoder::Handle {
  explicit Handle(iconv_t opened) : value(opened) {}
  ~Handle() { iconv_close(value); }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  iconv_t value;
};

JetTextDecoder::JetTextDecoder(const std::string& charset, std::size_t unit) : unit_(unit) {
  static const auto kFailed = reinterpret_cast<iconv_t>(-1);  // NOLINT: POSIX says so
  const iconv_t opened = iconv_open("UTF-8", charset.c_str());
  if (opened == kFailed)
    throw DatabaseError(
        text::say("문자 집합을 알 수 없습니다: %1", "unknown character set: %1", {charset}));
  handle_ = std::make_unique<Handle>(opened);
}

JetTextDecoder::~JetTextDecoder() = default;

JetValue JetTextDecoder::decode(std::string_view bytes) {
  iconv(handle_->value, nullptr, nullptr, nullptr, nullptr);
  std::string source(bytes);
  // In no character set does a byte become more than four; a replacement takes three.
  std::string result(source.size() * 4, '\0');
  char* in = source.data();
  char* out = result.data();
  std::size_t inLeft = source.size();
  std::size_t outLeft = result.size();
  JetValue value;
  while (inLeft > 0 && iconv(handle_->value, &in, &inLeft, &out, &outLeft) != 0) {
    value.isWhole = false;
    out = std::copy(kReplacement.begin(), kReplacement.end(), out);
    outLeft -= kReplacement.size();
    const std::size_t skipped = std::min(unit_, inLeft);
    in += skipped;
    inLeft -= skipped;
  }
  result.resize(result.size() - outLeft);
  value.text = std::move(result);
  return value;
}

std::string expandJetText(std::string_view bytes) {
  constexpr std::string_view kSqueezed = "\xFF\xFE";
  if (!bytes.starts_with(kSqueezed)) return std::string(bytes);
  std::string wide;
  bool isSqueezed = true;
  for (std::size_t i = kSqueezed.size(); i < bytes.size();) {
    if (bytes[i] == '\0') {
      isSqueezed = !isSqueezed;
      ++i;
    } else if (isSqueezed) {
      wide += bytes[i++];
      wide += '\0';
    } else {
      wide += bytes.substr(i, 2);
      i += 2;
    }
  }
  return wide;
}

std::int64_t jetInteger(std::string_view bytes, bool isSigned) {
  const std::uint64_t number = littleEndian(bytes);
  const auto unused = static_cast<unsigned>(64 - 8 * bytes.size());
  return isSigned ? static_cast<std::int64_t>(number << unused) >> unused
                  : static_cast<std::int64_t>(number);
}

std::string jetReal(std::string_view bytes) {
  return bytes.size() == sizeof(float) ? shortest(realOf<float>(bytes))
                                       : shortest(realOf<double>(bytes));
}

JetValue jetDateTime(std::string_view bytes) {
  constexpr std::int64_t kDay = 86400;
  const auto number = realOf<double>(bytes);
  const std::int64_t first = text::makeDateTime(100, 1, 1).value().seconds;
  const std::int64_t last = text::makeDateTime(9999, 12, 31, 23, 59, 59).value().seconds;
  const double days = std::trunc(number);
  if (std::abs(days) < 1e7) {
    // Before the first day the time still counts forward from midnight: -1.25 is the day before at
    // six in the morning.
    const auto time = static_cast<std::int64_t>(std::llround(std::abs(number - days) * kDay));
    const std::int64_t seconds = text::makeDateTime(1899, 12, 30).value().seconds +
                                 static_cast<std::int64_t>(days) * kDay + time;
    if (seconds >= first && seconds <= last) return {.text = text::formatStamp({seconds, 0})};
  }
  return {.text = shortest(number), .isWhole = false};
}

std::string jetMoney(std::string_view bytes) {
  const std::int64_t number = jetInteger(bytes, true);
  const auto magnitude = static_cast<std::uint64_t>(number);
  return withPoint(number < 0, std::to_string(number < 0 ? 0 - magnitude : magnitude), 4);
}

std::string jetNumeric(std::string_view bytes, int scale) {
  // Four words, the highest one first.
  std::array<std::uint32_t, 4> words{};
  for (std::size_t i = 0; i < words.size(); ++i) {
    words[i] = static_cast<std::uint32_t>(littleEndian(bytes.substr(1 + 4 * i, 4)));
  }
  std::string digits;
  const auto isLeft = [&] {
    return std::any_of(words.begin(), words.end(), [](auto w) { return w != 0; });
  };
  do {
    std::uint64_t rest = 0;
    for (std::uint32_t& word : words) {
      const std::uint64_t dividend = rest << 32U | word;
      word = static_cast<std::uint32_t>(dividend / 10);
      rest = dividend % 10;
    }
    digits += static_cast<char>('0' + rest);
  } while (isLeft());
  std::reverse(digits.begin(), digits.end());
  const bool isNegative = (static_cast<unsigned char>(bytes[0]) & 0x80U) != 0;
  return withPoint(isNegative, std::move(digits), static_cast<std::size_t>(std::max(scale, 0)));
}

std::string jetGuid(std::string_view bytes) {
  // The first three groups are numbers, lowest byte first.
  std::string ordered(bytes);
  std::reverse(ordered.begin(), ordered.begin() + 4);
  std::reverse(ordered.begin() + 4, ordered.begin() + 6);
  std::reverse(ordered.begin() + 6, ordered.begin() + 8);
  std::string text = "{";
  std::size_t start = 0;
  for (const std::size_t size : {4U, 2U, 2U, 2U, 6U}) {
    if (start > 0) text += '-';
    appendHex(text, std::string_view(ordered).substr(start, size));
    start += size;
  }
  return text + "}";
}

}  // namespace vlout::store::jet
