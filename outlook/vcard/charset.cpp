#include "outlook/vcard/charset.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <iconv.h>

#include "text/ascii.h"
#include "text/utf8.h"

namespace vlout::outlook::vcard {
namespace {

// Sets that are read as a larger one, and spellings that the system does not know. The names are in
// upper case, with letters and digits only.
struct Known {
  std::string_view name;
  std::string_view read;
  std::string_view write;
};
constexpr auto kKnown = std::to_array<Known>({
    {"UTF8", "UTF-8", "UTF-8"},
    {"EUCKR", "CP949", "EUC-KR"},
    {"KSC56011987", "CP949", "EUC-KR"},
    {"KSC5601", "CP949", "EUC-KR"},
    {"KSX1001", "CP949", "EUC-KR"},
    {"CP949", "CP949", "CP949"},
    {"MS949", "CP949", "CP949"},
    {"WINDOWS949", "CP949", "CP949"},
    {"XWINDOWS949", "CP949", "CP949"},
    {"SHIFTJIS", "CP932", "CP932"},
    {"SJIS", "CP932", "CP932"},
    {"XSJIS", "CP932", "CP932"},
    {"GB2312", "GB18030", "GB2312"},
    {"GBK", "GB18030", "GBK"},
    {"ISO88591", "CP1252", "ISO-8859-1"},
    {"LATIN1", "CP1252", "ISO-8859-1"},
});

Known known(std::string_view charset) {
  std::string name = text::toAsciiUpper(charset);
  std::erase_if(name, [](char c) { return !text::isAsciiDigit(c) && (c < 'A' || c > 'Z'); });
  const auto* const found = std::find_if(kKnown.begin(), kKnown.end(),
                                         [&](const Known& entry) { return entry.name == name; });
  return found == kKnown.end() ? Known{charset, charset, charset} : *found;
}

class Converter {
 public:
  Converter(std::string to, std::string from) : to_(std::move(to)), from_(std::move(from)) {
    // An empty name would mean the locale's set, and a slash begins an instruction to leave out
    // what cannot be converted.
    const std::string names = to_ + from_;
    if (to_.empty() || from_.empty() || names.find('/') != std::string::npos) return;
    handle_ = iconv_open(to_.c_str(), from_.c_str());
  }
  ~Converter() {
    if (isOpen()) iconv_close(handle_);
  }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  [[nodiscard]] bool converts(std::string_view to, std::string_view from) const {
    return to_ == to && from_ == from;
  }

  std::optional<std::string> convert(std::string_view text) {
    if (!isOpen()) return std::nullopt;
    iconv(handle_, nullptr, nullptr, nullptr, nullptr);
    std::string source(text);
    std::string result(text.size() + text.size() / 2 + 16, '\0');
    char* in = source.data();
    std::size_t inLeft = source.size();
    std::size_t filled = 0;
    bool flushing = false;
    while (true) {
      char* out = result.data() + filled;
      std::size_t outLeft = result.size() - filled;
      const std::size_t replaced =
          iconv(handle_, flushing ? nullptr : &in, flushing ? nullptr : &inLeft, &out, &outLeft);
      filled = result.size() - outLeft;
      if (replaced == static_cast<std::size_t>(-1) && errno == E2BIG) {
        result.resize(result.size() * 2);
      } else if (replaced != 0) {
        return std::nullopt;  // not of the set, or only to be had in another form
      } else if (flushing) {
        break;
      } else {
        flushing = true;
      }
    }
    result.resize(filled);
    return result;
  }

 private:
  inline static const iconv_t kNone = reinterpret_cast<iconv_t>(-1);  // NOLINT: POSIX says so
  [[nodiscard]] bool isOpen() const { return handle_ != kNone; }

  std::string to_;
  std::string from_;
  iconv_t handle_ = kNone;
};

// The cards of a folder mostly share one set, so the last converter is used again.
std::optional<std::string> convert(std::string_view text, std::string_view to,
                                   std::string_view from) {
  thread_local std::optional<Converter> last;
  if (!last || !last->converts(to, from)) last.emplace(std::string(to), std::string(from));
  return last->convert(text);
}

// All printable ASCII characters, which a set must leave as they are if a card is to be written in
// it.
std::string printableAscii() {
  std::string all;
  for (char c = ' '; c <= '~'; ++c) all += c;
  return all;
}

bool shifts(char c) {
  return c == '\x0E' || c == '\x0F' || c == '\x1B';
}

}  // namespace

bool isAscii(std::string_view bytes) {
  return std::all_of(bytes.begin(), bytes.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::optional<std::string> decode(std::string_view bytes, std::string_view charset) {
  const Known set = known(charset);
  if (set.read == kUtf8) {
    if (!text::isValidUtf8(bytes)) return std::nullopt;
    return std::string(bytes);
  }
  auto text = convert(bytes, kUtf8, set.read);
  // Five bytes are undefined in the set that Latin-1 is read as; in Latin-1 itself they are control
  // characters.
  if (!text && set.write == kLatin1) text = convert(bytes, kUtf8, kLatin1);
  if (text && !text::isValidUtf8(*text)) return std::nullopt;
  return text;
}

std::optional<std::string> encode(std::string_view text, std::string_view charset) {
  const std::string_view set = known(charset).write;
  static const std::string ascii = printableAscii();
  const bool wide = isWide(set);
  if (!wide && convert(ascii, set, kUtf8) != ascii) return std::nullopt;
  auto bytes = convert(text, set, kUtf8);
  if (!wide && bytes && std::any_of(bytes->begin(), bytes->end(), shifts)) return std::nullopt;
  return bytes;
}

bool isWide(std::string_view charset) {
  const std::string name = text::toAsciiUpper(charset);
  return name.starts_with("UTF-16") || name.starts_with("UTF-32") || name.starts_with("UCS") ||
         name.starts_with("ISO-10646") || name == "UNICODE";
}

namespace {

bool isOf(std::string_view text, std::string_view charset) {
  return decode(text, charset).has_value();
}

// A character of three bytes or more, as Korean has in UTF-8. Other text hardly ever contains one
// by chance, while two bytes of code page 949 or Latin-1 often look like a UTF-8 character.
bool holdsLongUtf8(std::string_view text) {
  const auto characters = text::characters(text);
  return std::any_of(characters.begin(), characters.end(),
                     [](std::string_view character) { return character.size() > 2; });
}

// A Hangul syllable of the old standard set: its two bytes are signs and capitals in Latin-1, which
// words do not have side by side.
bool holdsKorean(std::string_view text) {
  for (std::size_t i = 0; i + 1 < text.size(); ++i) {
    const auto lead = static_cast<unsigned char>(text[i]);
    const auto trail = static_cast<unsigned char>(text[i + 1]);
    if (lead < 0x80) continue;
    if (lead >= 0xB0 && lead <= 0xC8 && trail >= 0xA1) return isOf(text, kKorean);
    ++i;
  }
  return false;
}

}  // namespace

std::vector<std::string_view> unnamedCharsets(const std::vector<std::string>& texts) {
  using text::isValidUtf8;
  std::vector<std::string_view> sets(texts.size(), kUtf8);
  const auto anyIs = [&](auto is) { return std::any_of(texts.begin(), texts.end(), is); };
  if (!anyIs([](const auto& text) { return !isValidUtf8(text); })) return sets;
  if (anyIs([](const auto& text) { return isValidUtf8(text) && holdsLongUtf8(text); })) {
    for (std::size_t i = 0; i < texts.size(); ++i) {
      const bool other = !isValidUtf8(texts[i]) && !holdsLongUtf8(texts[i]);
      if (other && isOf(texts[i], kKorean)) sets[i] = kKorean;
    }
    return sets;
  }
  if (!anyIs([](const auto& text) { return !isOf(text, kKorean); }) || anyIs(holdsKorean)) {
    sets.assign(texts.size(), kKorean);
    return sets;
  }
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (!isValidUtf8(texts[i])) sets[i] = kLatin1;
  }
  return sets;
}

}  // namespace vlout::outlook::vcard
