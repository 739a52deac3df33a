#include "outlook/evolution/fingerprint.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "outlook/contact_property.h"
#include "outlook/vcard/card_text.h"
#include "text/ascii.h"

namespace vlout::outlook::evolution {
namespace {

using vcard::CardText;
using vcard::Parameter;
using vcard::Property;

constexpr std::string_view kRemark = "X-EVOLUTION-";
constexpr std::array<std::string_view, 4> kNoContent{"REV", "VERSION", "UID", "X-VLID"};

// FNV-1a.
class Hash {
 public:
  void add(std::string_view text) {
    for (const char c : text) {
      value_ ^= static_cast<unsigned char>(c);
      value_ *= 0x100000001b3;
    }
  }
  [[nodiscard]] std::uint64_t value() const { return value_; }

 private:
  std::uint64_t value_ = 0xcbf29ce484222325;
};

bool isMapped(std::string_view name) {
  const auto table = contactProperties();
  return std::any_of(table.begin(), table.end(), [&](const PropertyInfo& info) {
    return (' ' + std::string(info.vcard.names) + ' ').find(' ' + std::string(name) + ' ') !=
           std::string::npos;
  });
}

bool isContent(std::string_view name) {
  if (name.starts_with(kRemark)) return isMapped(name);
  return std::find(kNoContent.begin(), kNoContent.end(), name) == kNoContent.end();
}

std::string contentOf(const Parameter& parameter) {
  std::vector<std::string> values;
  for (const std::string& value : parameter.values) values.push_back(text::toAsciiUpper(value));
  std::sort(values.begin(), values.end());
  std::string result = text::toAsciiUpper(parameter.name);
  for (const std::string& value : values) result += '\x1F' + value;
  return result;
}

std::string contentOf(const Property& property) {
  std::vector<std::string> parameters;
  for (const Parameter& parameter : property.parameters) {
    if (text::toAsciiUpper(parameter.name).starts_with(kRemark)) continue;
    parameters.push_back(contentOf(parameter));
  }
  std::sort(parameters.begin(), parameters.end());
  std::string result = text::toAsciiUpper(property.group);
  for (const std::string& parameter : parameters) result += '\x1E' + parameter;
  result += '\x1D';
  // A list whose commas were escaped comes back as one value.
  const char separator = property.name == "N" || property.name == "ADR" ? ';' : ',';
  for (std::size_t i = 0; i < property.values.size(); ++i) {
    if (i > 0) result += separator;
    result += property.values[i];
  }
  while (!result.empty() && result.back() == ';') result.pop_back();  // empty components
  return result;
}

}  // namespace

std::uint64_t contentFingerprint(std::string_view cardText) {
  const CardText card(cardText);
  std::vector<std::pair<std::string, std::string>> lines;
  for (CardText::Position i = 0; i < card.size(); ++i) {
    const std::string_view name = card.name(i);
    if (isContent(name)) lines.emplace_back(name, contentOf(card.property(i)));
  }
  // The order of lines with the same name tells the first number from the second.
  std::stable_sort(lines.begin(), lines.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  Hash hash;
  for (const auto& [name, content] : lines) {
    hash.add(name);
    hash.add("\x1D");
    hash.add(content);
    hash.add("\n");
  }
  return hash.value();
}

// Eight bytes at a time, since every run takes it of every contact.
std::uint64_t textFingerprint(std::string_view cardText) {
  constexpr std::uint64_t kOdd = 0x9e3779b97f4a7c15;
  std::uint64_t value = cardText.size();
  const auto add = [&](std::string_view bytes) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes.data(), bytes.size());
    value = (value ^ word) * kOdd;
    value ^= value >> 32;
  };
  while (cardText.size() > sizeof value) {
    add(cardText.substr(0, sizeof value));
    cardText.remove_prefix(sizeof value);
  }
  add(cardText);
  return value;
}

}  // namespace vlout::outlook::evolution
