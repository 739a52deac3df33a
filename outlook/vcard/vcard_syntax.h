// The syntax of single vCard properties, read and written with libebook-contacts. This is the only
// place that knows that library; the rest of the folder works on the plain structure below.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "outlook/vcard/content_line.h"

namespace vlout::outlook::vcard {

enum class Version { V21, V30, V40 };

struct Parameter {
  std::string name;
  std::vector<std::string> values;

  bool operator==(const Parameter&) const = default;
};

// One property, decoded: texts in UTF-8, without escapes or quoted-printable. Binary values stay in
// base64. A property whose bytes are not valid in their character set has no values.
struct Property {
  std::string group{};
  std::string name{};
  std::vector<Parameter> parameters{};
  std::vector<std::string> values{};
  bool unreadable = false;

  bool operator==(const Property&) const = default;
  [[nodiscard]] bool hasNoValue() const;

  // Whether the property carries that type, in whatever form the card spells it.
  [[nodiscard]] bool hasType(std::string_view type) const;
  [[nodiscard]] const Parameter* parameter(std::string_view parameterName) const;
  void removeParameter(std::string_view parameterName);

  // A component of a structured value, or an empty text.
  [[nodiscard]] std::string component(std::size_t index) const;
  void setComponent(std::size_t index, std::string_view value);
  // The value as one text.
  [[nodiscard]] std::string whole() const;
};

// The property in `line`, a content line with its continuation lines; it has no name if the line is
// no property. If the line names no character set, its text is in `unnamed`.
[[nodiscard]] Property readProperty(std::string_view line, Version version,
                                    std::string_view unnamed, FileForm form);

// The content lines for `properties`, folded, in the syntax of `version`, each ended by `lineEnd`.
// The text is UTF-8; `charset` is only the name that the lines get.
[[nodiscard]] std::string writeProperties(std::span<const Property* const> properties,
                                          Version version, std::string_view lineEnd,
                                          std::string_view charset = {});

[[nodiscard]] std::string encodeBase64(std::string_view bytes);
[[nodiscard]] std::string decodeBase64(std::string_view text);

// A new identifier for a new card.
[[nodiscard]] std::string newUid();

}  // namespace vlout::outlook::vcard
