#include "outlook/vcard/vcard_syntax.h"

#include <algorithm>
#include <libebook-contacts/libebook-contacts.h>
#include <memory>

#include "text/ascii.h"
#include "text/utf8.h"

namespace vlout::outlook::vcard {
namespace {

struct GFree {
  void operator()(gpointer memory) const { g_free(memory); }
};
struct GUnref {
  void operator()(gpointer object) const { g_object_unref(object); }
};
using GText = std::unique_ptr<gchar, GFree>;
using Card = std::unique_ptr<EVCard, GUnref>;

constexpr std::string_view kBegin = "BEGIN:VCARD\r\n";
constexpr std::string_view kEnd = "\r\nEND:VCARD\r\n";

// Phones and webmail also escape colons and quotes, which just means the character. In version 2.1
// a backslash is a plain backslash.
std::string withoutNeedlessEscapes(std::string_view line) {
  constexpr std::string_view kEscaped = "nN,;\\\r\n";
  if (line.find('\\') == std::string_view::npos) return std::string(line);
  std::string result;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '\\' && i + 1 < line.size()) {
      if (kEscaped.find(line[i + 1]) != std::string_view::npos) result += '\\';
      ++i;
    }
    result += line[i];
  }
  return result;
}

// What the library has to say about other programs' cards is of no use to this program's user.
void silenceLibrary() {
  static const auto handler = g_log_set_handler(
      "libebook-contacts", G_LOG_LEVEL_WARNING,
      [](const gchar*, GLogLevelFlags, const gchar*, gpointer) {}, nullptr);
  static_cast<void>(handler);
}

bool isControl(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

// What a vCard can carry: valid UTF-8, line breaks as LF, no other control characters than tab.
std::string writable(std::string_view value) {
  const bool plain = std::none_of(value.begin(), value.end(), isControl);
  if (plain) return text::sanitizeUtf8(value);
  std::string result;
  for (std::size_t i = 0; i < value.size(); ++i) {
    const char c = value[i];
    if (c == '\r') {
      if (i + 1 == value.size() || value[i + 1] != '\n') result += '\n';
    } else if (c == '\n' || c == '\t' || !isControl(c)) {
      result += c;
    }
  }
  return text::sanitizeUtf8(result);
}

// True for the name of a group or parameter that programs, including this one, can read back.
bool isName(std::string_view name) {
  return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
    return text::isAsciiDigit(c) || c == '-' || c == '_' || (c >= 'A' && c <= 'Z') ||
           (c >= 'a' && c <= 'z');
  });
}

// A quote in a parameter's value cannot be written.
std::string writableParameter(std::string_view value) {
  std::string result = writable(value);
  std::erase_if(result, [](char c) { return c == '"' || c == '\n'; });
  return result;
}

// The writer decides about encodings, since a rewritten value has its own. Parameters of damaged
// lines are left out too.
bool isWritersOwn(const Parameter& parameter, bool binary) {
  return !isName(parameter.name) || text::equalsIgnoringAsciiCase(parameter.name, "CHARSET") ||
         (!binary && text::equalsIgnoringAsciiCase(parameter.name, "ENCODING"));
}

bool isBinary(const Property& property) {
  const Parameter* const encoding = property.parameter("ENCODING");
  if (encoding == nullptr || encoding->values.empty()) return false;
  const std::string& value = encoding->values.front();
  return text::equalsIgnoringAsciiCase(value, "B") ||
         text::equalsIgnoringAsciiCase(value, "BASE64");
}

void addParameter(EVCardAttribute* attribute, const Parameter& parameter) {
  EVCardAttributeParam* const added = e_vcard_attribute_param_new(parameter.name.c_str());
  for (const std::string& value : parameter.values) {
    e_vcard_attribute_param_add_value(added, writableParameter(value).c_str());
  }
  e_vcard_attribute_add_param(attribute, added);
}

EVCardAttribute* toAttribute(const Property& property, std::string_view charset) {
  EVCardAttribute* const attribute = e_vcard_attribute_new(
      isName(property.group) ? property.group.c_str() : nullptr, property.name.c_str());
  const bool binary = isBinary(property);
  // The library puts each parameter in front of the others.
  for (auto p = property.parameters.rbegin(); p != property.parameters.rend(); ++p) {
    if (!isWritersOwn(*p, binary)) addParameter(attribute, *p);
  }
  if (!charset.empty()) addParameter(attribute, {"CHARSET", {std::string(charset)}});
  for (const std::string& value : property.values) {
    e_vcard_attribute_add_value(attribute, writable(value).c_str());
  }
  return attribute;
}

// The text between the framing lines of a card that the library has written.
std::string_view withoutFrame(std::string_view card) {
  constexpr std::string_view kVersion = "VERSION:3.0\r\n";
  constexpr std::string_view kClose = "END:VCARD";
  const std::size_t start = card.find(kVersion) + kVersion.size();
  return card.substr(start, card.rfind(kClose) - start);
}

std::string writeWithLibrary(std::span<const Property* const> properties, std::string_view lineEnd,
                             std::string_view charset) {
  const Card card(e_vcard_new());
  for (const Property* const property : properties) {
    e_vcard_append_attribute(card.get(), toAttribute(*property, charset));
  }
  const GText whole(e_vcard_to_string(card.get(), EVC_FORMAT_VCARD_30));
  // The library takes a picture's data address for a text and escapes its comma.
  const std::string lines = text::replaceAll(withoutFrame(whole.get()), "data:image/jpeg;base64\\,",
                                             "data:image/jpeg;base64,");
  return lineEnd == "\r\n" ? std::string(lines) : text::replaceAll(lines, "\r\n", lineEnd);
}

// --- vCard 2.1, whose writer in the library leaves out what it does not know ---------------------

constexpr std::size_t kFoldAt = 70;

bool needsQuotedPrintable(const std::vector<std::string>& values) {
  return std::any_of(values.begin(), values.end(), [](const std::string& value) {
    return std::any_of(value.begin(), value.end(), [](char c) {
      return isControl(c) || static_cast<unsigned char>(c) >= 0x80 || c == ';' || c == '\\';
    });
  });
}

class QuotedPrintableWriter {
 public:
  QuotedPrintableWriter(std::string& out, std::string_view lineEnd)
      : out_(out), lineEnd_(lineEnd), column_(out.size() - (out.find_last_of("\r\n") + 1)) {}

  void append(std::string_view text) {
    for (const char c : text) {
      if (c == '\n') putEncoded('\r');
      const auto byte = static_cast<unsigned char>(c);
      const bool plain = byte >= 0x20 && byte < 0x7F && c != '=' && c != ';' && c != '\\';
      if (plain && column_ < kFoldAt) {
        out_ += c;
        ++column_;
      } else {
        putEncoded(c);
      }
    }
  }

 private:
  // A line is broken only after an encoded byte, where every reader joins it again.
  void putEncoded(char c) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(c);
    const char code[] = {'=', kDigits[byte >> 4], kDigits[byte & 15]};
    out_.append(code, sizeof code);
    column_ += sizeof code;
    if (column_ < kFoldAt) return;
    out_.append("=").append(lineEnd_);
    column_ = 0;
  }

  std::string& out_;
  std::string_view lineEnd_;
  std::size_t column_;
};

void writeVersion21(const Property& property, std::string_view lineEnd, std::string& out) {
  const bool binary = isBinary(property);
  std::vector<std::string> values;
  for (const std::string& value : property.values) values.push_back(writable(value));
  if (isName(property.group)) out.append(property.group).append(".");
  out += property.name;
  for (const Parameter& parameter : property.parameters) {
    if (isWritersOwn(parameter, false)) continue;
    for (const std::string& each : parameter.values) {
      const std::string value = writableParameter(each);
      const bool quoted = value.find_first_of(";:,=") != std::string::npos;
      out.append(";").append(parameter.name).append(quoted ? "=\"" : "=").append(value);
      if (quoted) out += '"';
    }
  }
  if (binary) {
    out.append(";ENCODING=BASE64:");
    const std::string& data = values.empty() ? std::string() : values.front();
    for (std::size_t i = 0; i < data.size(); i += kFoldAt) {
      out.append(lineEnd).append(" ").append(data, i, kFoldAt);
    }
    out.append(lineEnd).append(lineEnd);  // an empty line ends the data
    return;
  }
  const bool quoted = needsQuotedPrintable(values);
  out += quoted ? ";CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:" : ":";
  QuotedPrintableWriter writer(out, lineEnd);
  const char separator = property.name == "CATEGORIES" ? ',' : ';';
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i > 0) out += separator;
    if (quoted) {
      writer.append(values[i]);
    } else {
      out += values[i];
    }
  }
  out += lineEnd;
}

}  // namespace

bool Property::hasNoValue() const {
  return std::all_of(values.begin(), values.end(),
                     [](const std::string& value) { return value.empty(); });
}

bool Property::hasType(std::string_view type) const {
  for (const Parameter& parameter : parameters) {
    if (!text::equalsIgnoringAsciiCase(parameter.name, "TYPE")) continue;
    for (std::string_view list : parameter.values) {
      // Version 4.0 quotes several types as one value.
      while (!list.empty()) {
        const std::string_view one = list.substr(0, list.find(','));
        if (text::equalsIgnoringAsciiCase(one, type)) return true;
        list.remove_prefix(std::min(list.size(), one.size() + 1));
      }
    }
  }
  return false;
}

const Parameter* Property::parameter(std::string_view parameterName) const {
  const auto found =
      std::find_if(parameters.begin(), parameters.end(), [&](const Parameter& parameter) {
        return text::equalsIgnoringAsciiCase(parameter.name, parameterName);
      });
  return found == parameters.end() ? nullptr : &*found;
}

void Property::removeParameter(std::string_view parameterName) {
  std::erase_if(parameters, [&](const Parameter& parameter) {
    return text::equalsIgnoringAsciiCase(parameter.name, parameterName);
  });
}

std::string Property::component(std::size_t index) const {
  return index < values.size() ? values[index] : std::string();
}

void Property::setComponent(std::size_t index, std::string_view value) {
  if (values.size() <= index) values.resize(index + 1);
  values[index] = value;
}

std::string Property::whole() const {
  std::string result;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i > 0) result += ';';  // a semicolon that a careless writer left without its backslash
    result += values[i];
  }
  return result;
}

Property readProperty(std::string_view line, Version version, std::string_view unnamed,
                      FileForm form) {
  silenceLibrary();
  ContentLine content = takeApart(line, form);
  auto plain = decodeLine(content, unnamed);
  const bool unreadable = !plain;
  if (unreadable) {
    content.value.clear();
    plain = text::sanitizeUtf8(content.head) + ":";
  }
  if (version != Version::V21) plain = withoutNeedlessEscapes(*plain);
  std::string card(kBegin);
  card.append(*plain).append(kEnd);
  const Card parsed(e_vcard_new_from_string(card.c_str()));
  Property property{.unreadable = unreadable};
  const GList* const attributes = e_vcard_get_attributes(parsed.get());
  if (attributes == nullptr) return property;
  auto* const attribute = static_cast<EVCardAttribute*>(attributes->data);
  const auto orEmpty = [](const char* text) { return text == nullptr ? "" : text; };
  property.group = orEmpty(e_vcard_attribute_get_group(attribute));
  property.name = text::toAsciiUpper(orEmpty(e_vcard_attribute_get_name(attribute)));
  for (GList* p = e_vcard_attribute_get_params(attribute); p != nullptr; p = p->next) {
    auto* const source = static_cast<EVCardAttributeParam*>(p->data);
    Parameter parameter{e_vcard_attribute_param_get_name(source), {}};
    for (GList* v = e_vcard_attribute_param_get_values(source); v != nullptr; v = v->next) {
      parameter.values.emplace_back(static_cast<const char*>(v->data));
    }
    property.parameters.push_back(std::move(parameter));
  }
  for (GList* v = unreadable ? nullptr : e_vcard_attribute_get_values(attribute); v != nullptr;
       v = v->next) {
    // What could not be written back is not read either; otherwise the two would differ.
    property.values.push_back(writable(orEmpty(static_cast<const char*>(v->data))));
  }
  return property;
}

std::string writeProperties(std::span<const Property* const> properties, Version version,
                            std::string_view lineEnd, std::string_view charset) {
  if (version != Version::V21) return writeWithLibrary(properties, lineEnd, charset);
  std::string out;
  for (const Property* const property : properties) writeVersion21(*property, lineEnd, out);
  return out;
}

std::string encodeBase64(std::string_view bytes) {
  const GText text(g_base64_encode(reinterpret_cast<const guchar*>(bytes.data()), bytes.size()));
  return text.get();
}

std::string decodeBase64(std::string_view text) {
  gsize size = 0;
  const std::string terminated(text);
  const std::unique_ptr<guchar, GFree> bytes(g_base64_decode(terminated.c_str(), &size));
  return {reinterpret_cast<const char*>(bytes.get()), size};
}

std::string newUid() {
  const GText uid(g_uuid_string_random());
  return uid.get();
}

}  // namespace vlout::outlook::vcard
