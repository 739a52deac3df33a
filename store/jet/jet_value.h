// Decodes the values of a Jet file's fields from their bytes. JetFile decodes every field here.
// Nothing depends on regional settings, and what cannot be decoded is marked, not dropped.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vlout::store::jet {

enum class JetType { Boolean, Integer, Real, Decimal, DateTime, Text, Guid, Binary, Unknown };

struct JetColumn {
  std::string name;
  JetType type = JetType::Unknown;
};

// One field: nothing for NULL, otherwise its text (the bytes of a Binary). A DateTime is
// "yyyy/mm/dd hh:mm:ss", a Boolean 0 or 1, a Decimal exact.
struct JetValue {
  std::optional<std::string> text;
  bool isWhole = true;  // false when a part could not be decoded and U+FFFD stands in its place
};

using JetRow = std::vector<JetValue>;

// Decodes texts of one character set.
class JetTextDecoder {
 public:
  // `charset` as iconv names it, `unit` the bytes to pass over where a text is not of that set.
  // Throws DatabaseError when there is no such character set.
  JetTextDecoder(const std::string& charset, std::size_t unit);
  ~JetTextDecoder();
  JetTextDecoder(const JetTextDecoder&) = delete;
  JetTextDecoder& operator=(const JetTextDecoder&) = delete;

  [[nodiscard]] JetValue decode(std::string_view bytes);

 private:
  struct Handle;
  std::unique_ptr<Handle> handle_;
  std::size_t unit_;
};

// A Jet 4 text as plain UTF-16: such files may keep a text with its zero bytes squeezed out.
[[nodiscard]] std::string expandJetText(std::string_view bytes);

// `bytes` as a little-endian whole number of its 1 to 8 bytes; `isSigned` extends its sign.
[[nodiscard]] std::int64_t jetInteger(std::string_view bytes, bool isSigned);

// A single (4 bytes) or double (8 bytes) in the fewest digits that give it back.
[[nodiscard]] std::string jetReal(std::string_view bytes);

// Days since 1899-12-30 as a double, rounded to the second. A number that is no date in the years
// 100 to 9999 is given as it is, and not whole.
[[nodiscard]] JetValue jetDateTime(std::string_view bytes);

// A currency: ten-thousandths in 8 bytes.
[[nodiscard]] std::string jetMoney(std::string_view bytes);

// A decimal: a byte with the sign and 16 bytes of digits, with `scale` of them after the point.
[[nodiscard]] std::string jetNumeric(std::string_view bytes, int scale);

// A replication id in braces, as Windows writes one.
[[nodiscard]] std::string jetGuid(std::string_view bytes);

}  // namespace vlout::store::jet
