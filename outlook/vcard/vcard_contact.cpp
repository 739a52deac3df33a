#include "outlook/vcard/vcard_contact.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <fstream>
#include <iterator>
#include <sstream>

#include "outlook/pairing.h"
#include "text/ascii.h"
#include "text/hash.h"
#include "text/language.h"
#include "text/trim.h"
#include "text/utf8.h"

namespace vlout::outlook::vcard {
namespace {

using P = ContactProperty;

constexpr std::string_view kVlidName = "X-VLID";
constexpr std::string_view kAttachment = "X-ATTACH";
constexpr std::string_view kFileName = "X-FILENAME";
// Marks a second value that stands alone ("2"), and lines beyond those that properties exist for
// ("more"), so that they do not move up when the first or second value goes.
constexpr std::string_view kSlot = "X-VELMORA-SLOT";
constexpr std::string_view kSecond = "2";
constexpr std::string_view kMore = "more";
constexpr std::string_view kTelScheme = "tel:";
constexpr std::string_view kPhoto = "PHOTO";
constexpr std::string_view kPhotoMark = "X-VELMORA-PHOTO";
constexpr std::string_view kJpegUri = "data:image/jpeg";
const Parameter kJpegType{"TYPE", {"JPEG"}};

// Apart from the blanks between and around them.
bool sameWords(const std::string& a, const std::string& b) {
  using Words = std::istream_iterator<std::string>;
  std::istringstream left(a);
  std::istringstream right(b);
  return std::equal(Words(left), Words(), Words(right), Words());
}

// Calls `use` for each word of a list separated by blanks, until it returns true.
template <typename Use>
bool anyWord(std::string_view list, Use use) {
  while (!list.empty()) {
    const std::string_view word = list.substr(0, list.find(' '));
    if (use(word)) return true;
    list.remove_prefix(std::min(list.size(), word.size() + 1));
  }
  return false;
}

bool hasTypesOf(const VCardPlace& place, const Property& property) {
  const auto absent = [&](std::string_view type) { return !property.hasType(type); };
  const auto present = [&](std::string_view type) { return property.hasType(type); };
  return !anyWord(place.requiredTypes, absent) && !anyWord(place.excludedTypes, present);
}

// The component of a structured value that belongs to a property. Webmail puts whole addresses into
// the extended address and leaves the street empty. The line as it was read decides that, since an
// address is emptied before it is written.
std::size_t componentOf(const VCardPlace& place, const Property& property) {
  constexpr std::size_t kExtended = 1;
  constexpr std::size_t kStreet = 2;
  const auto component = static_cast<std::size_t>(place.component);
  const bool extended = property.name == "ADR" && component == kStreet &&
                        property.component(kStreet).empty() &&
                        !property.component(kExtended).empty();
  return extended ? kExtended : component;
}

// The slot that a line was given; empty for a line that has its place by its order.
std::string_view slotOf(const Property& property) {
  const Parameter* const slot = property.parameter(kSlot);
  return slot == nullptr || slot->values.empty() ? std::string_view() : slot->values.front();
}

// True if two lines are of the same kind: business, home or other.
bool isSameKind(const Property& a, const Property& b) {
  return a.hasType("WORK") == b.hasType("WORK") && a.hasType("HOME") == b.hasType("HOME");
}

bool isUri(const Property& property) {
  const Parameter* const value = property.parameter("VALUE");
  return value != nullptr && !value->values.empty() &&
         text::equalsIgnoringAsciiCase(value->values.front(), "uri");
}

// The content of a picture, or its address.
std::string pictureIn(const Property& photo) {
  const std::string value = photo.whole();
  if (value.starts_with("data:")) return decodeBase64(value.substr(value.find(',') + 1));
  return photo.parameter("ENCODING") == nullptr ? value : decodeBase64(value);
}

std::string markOf(std::string_view picture) {
  return std::to_string(text::hashOf(picture));
}

std::string wholeValue(const Property& property) {
  std::string value = property.whole();
  if (isUri(property) && text::equalsIgnoringAsciiCase(
                             std::string_view(value).substr(0, kTelScheme.size()), kTelScheme)) {
    value.erase(0, kTelScheme.size());
  }
  return value;
}

std::vector<std::string> splitCategories(std::string_view list) {
  std::vector<std::string> result;
  while (!list.empty()) {
    const std::string_view part = list.substr(0, list.find_first_of(",;"));
    const std::string_view name = text::trim(part);
    if (!name.empty()) result.emplace_back(name);
    list.remove_prefix(std::min(list.size(), part.size() + 1));
  }
  return result;
}

std::string joinCategories(const std::vector<std::string>& names) {
  std::string result;
  for (const std::string& name : names) {
    if (name.empty()) continue;
    if (!result.empty()) result += ", ";
    result += name;
  }
  return result;
}

// Dates as cards have them: 1980-03-22 or 19800322, either with a time after it. A date without a
// year counts as none and stays in the card as it is.
std::optional<text::DateTime> readDate(std::string_view value) {
  value = value.substr(0, value.find('T'));
  if (value.size() == 8 && std::all_of(value.begin(), value.end(), text::isAsciiDigit)) {
    std::string separated(value);
    separated.insert(6, "-").insert(4, "-");
    return text::parseDateTime(separated);
  }
  return text::parseDateTime(value);
}

// A file name as a parameter value, which cannot contain quotes, separators or line breaks.
std::string encodeFileName(std::string_view name) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  constexpr std::string_view kSpecial = "%\"\\;:,=^";
  std::string result;
  for (const char c : text::sanitizeUtf8(name)) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F || kSpecial.find(c) != std::string_view::npos) {
      result += '%';
      result += kDigits[byte >> 4];
      result += kDigits[byte & 15];
    } else {
      result += c;
    }
  }
  return result;
}

std::string decodeFileName(std::string_view value) {
  std::string name;
  for (std::size_t i = 0; i < value.size(); ++i) {
    unsigned byte = 0;
    const std::string_view code = value.substr(i + 1, 2);
    const char* const end = code.data() + code.size();
    if (value[i] == '%' && code.size() == 2 &&
        std::from_chars(code.data(), end, byte, 16).ptr == end) {
      name += static_cast<char>(byte);
      i += 2;
    } else {
      name += value[i];
    }
  }
  return name;
}

std::string utcNow(Version version) {
  const auto now =
      std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()).time_since_epoch();
  std::string stamp = text::formatStamp({now.count(), 0});  // "yyyy/mm/dd hh:mm:ss"
  stamp[4] = stamp[7] = '-';
  stamp[10] = 'T';
  if (version == Version::V40) std::erase_if(stamp, [](char c) { return c == '-' || c == ':'; });
  return stamp + "Z";
}

Gender genderOf(const Property& property) {
  const std::string value = text::toAsciiUpper(property.component(0));
  if (property.name == "X-WAB-GENDER") {
    if (value == "1") return Gender::Female;
    return value == "2" ? Gender::Male : Gender::Unspecified;
  }
  if (value.starts_with('F') || value == "여") return Gender::Female;
  return value.starts_with('M') || value == "남" ? Gender::Male : Gender::Unspecified;
}

std::string genderText(std::string_view propertyName, Gender value) {
  const bool male = value == Gender::Male;
  if (propertyName == "X-WAB-GENDER") return male ? "2" : "1";
  if (propertyName == "GENDER") return male ? "M" : "F";
  return male ? "Male" : "Female";
}

}  // namespace

PersonName nameOf(const CardText& card) {
  PersonName result;
  if (const auto line = card.firstNamed("N")) {
    const Property& n = card.property(*line);
    result = {.last = n.component(0),
              .first = n.component(1),
              .middle = n.component(2),
              .title = n.component(3),
              .suffix = n.component(4)};
  }
  if (!result.empty()) return result;
  const auto displayed = card.firstNamed("FN");
  return displayed ? splitFullName(card.property(*displayed).whole()) : result;
}

VCardContact::VCardContact(CardHome& home, std::optional<std::size_t> position)
    : home_(home), position_(position) {}

CardText& VCardContact::card() {
  if (!card_) {
    card_ = position_ ? CardText(home_.readCard(*position_), home_.formAt(*position_)) : CardText();
    forgetDerivedName();
  }
  return *card_;
}

// A card without a person shows its company or address instead of a name. That must follow when the
// company or the address changes, so it is made again when the card is saved.
void VCardContact::forgetDerivedName() {
  const auto displayed = card().firstNamed("FN");
  if (!displayed) return;
  const auto n = card().firstNamed("N");
  if (n && (card().property(*n).unreadable || !card().property(*n).hasNoValue())) return;
  if (card().property(*displayed).unreadable) return;
  const std::string shown = card().property(*displayed).whole();
  if (shown == readable(P::CompanyName) || shown == readable(P::Email1Address)) {
    card().change(*displayed).values.clear();
  }
}

std::string VCardContact::typeName() {
  const bool group = position_ && home_.isGroupAt(*position_);
  return group ? "DistListItem" : std::string(kContactItem);
}

// --- finding lines ------------------------------------------------------------------------------

// Calls `use` for each line that belongs to the place, in order, until it returns true. Returns
// that line.
template <typename Use>
std::optional<CardText::Position> VCardContact::firstMatching(const Place& place, Use use) {
  std::optional<CardText::Position> found;
  anyWord(place.names, [&](std::string_view name) {
    for (auto line = card().firstNamed(name); line; line = card().firstNamed(name, *line + 1)) {
      const Property& property = card().property(*line);
      if (!hasTypesOf(place, property) || !use(property, *line)) continue;
      found = line;
      return true;
    }
    return false;
  });
  return found;
}

std::optional<CardText::Position> VCardContact::find(const Place& place) {
  if (place.slot == 1) {
    const auto first = firstMatching(
        place, [](const Property& property, std::size_t) { return slotOf(property).empty(); });
    return first ? first : findLabelled(place);
  }
  const auto marked = firstMatching(
      place, [](const Property& property, std::size_t) { return slotOf(property) == kSecond; });
  if (marked) return marked;
  int count = 0;
  return firstMatching(place, [&](const Property& property, std::size_t) {
    return slotOf(property).empty() && ++count == 2;
  });
}

// Some address books write a pair of lines in one group, of which the second says what the first
// is.
std::optional<CardText::Position> VCardContact::findLabelled(const Place& place) {
  if (place.labelledName.empty()) return std::nullopt;
  for (const CardText::Position labelLine : card().named("X-ABLABEL")) {
    const Property& label = card().property(labelLine);
    if (label.whole().find(place.label) == std::string::npos) continue;
    for (const CardText::Position line : card().named(place.labelledName)) {
      if (card().property(line).group == label.group) return line;
    }
  }
  return std::nullopt;
}

// --- changing lines -----------------------------------------------------------------------------

std::string VCardContact::newName(const Place& place) {
  if (card().version() == Version::V40 && !place.nameInVersion4.empty()) {
    return std::string(place.nameInVersion4);
  }
  return std::string(place.names.substr(0, place.names.find(' ')));
}

void VCardContact::insertNew(const Place& place, std::string_view value) {
  Property property;
  property.name = newName(place);
  if (!place.newTypes.empty()) {
    Parameter types{"TYPE", {}};
    anyWord(place.newTypes, [&](std::string_view type) {
      types.values.emplace_back(type);
      return false;
    });
    property.parameters.push_back(std::move(types));
  }
  if (place.component < 0) {
    property.values = {std::string(value)};
  } else {
    // Structured values have as many components as the standard says.
    const std::size_t components = property.name == "ADR" ? 7 : property.name == "N" ? 5 : 0;
    property.values.resize(components);
    property.setComponent(static_cast<std::size_t>(place.component), value);
  }
  const auto first = firstMatching(place, [](const Property&, std::size_t) { return true; });
  const auto takesFirstPlace = firstMatching(
      place, [](const Property& other, std::size_t) { return slotOf(other).empty(); });
  if (place.slot == 2 && !takesFirstPlace) {
    property.parameters.push_back({std::string(kSlot), {std::string(kSecond)}});
  }
  if (place.slot == 1 && first) {
    card().insert(*first, std::move(property));
  } else {
    card().append(std::move(property));
  }
}

void VCardContact::removeLine(CardText::Position position) {
  const std::string group = card().property(position).group;
  card().remove(position);
  if (group.empty()) return;
  for (const CardText::Position label : card().named("X-ABLABEL")) {
    if (card().property(label).group != group) continue;
    card().remove(label);
    return;
  }
}

// A delivery label repeats the address that it belongs to; once that has changed, it contradicts
// it.
void VCardContact::removeStaleLabels() {
  for (const CardText::Position line : card().named("ADR")) {
    if (!card().isChanged(line)) continue;
    Property& address = card().change(line);
    address.removeParameter("LABEL");
    for (const CardText::Position label : card().named("LABEL")) {
      // A line without a value is not written.
      if (isSameKind(card().property(label), address)) card().change(label).values.clear();
    }
  }
}

void VCardContact::setValue(const Place& place, std::string_view value) {
  const auto line = find(place);
  if (!line) {
    if (!value.empty()) insertNew(place, value);
    return;
  }
  if (valueAt(place, *line) == value) return;  // what the contact says already stays as it is
  if (place.component >= 0) {
    // A structured value that loses its last component may get another one next, so its line stays.
    Property& changed = card().change(*line);
    changed.setComponent(componentOf(place, card().original(*line)), value);
    changed.unreadable = false;
  } else if (value.empty()) {
    removeValue(place, *line);
  } else {
    Property& changed = card().change(*line);
    // The value type that the line gave, such as a text instead of a date, may no longer fit.
    if (!isUri(changed) || changed.name == "TEL") changed.removeParameter("VALUE");
    card().replace(*line, {std::string(value)});
  }
}

// Removes a line without letting the lines after it move up.
void VCardContact::removeValue(const Place& place, CardText::Position line) {
  Place other = place;
  other.slot = place.slot == 1 ? 2 : 1;
  const auto otherLine = find(other);
  std::vector<CardText::Position> unmarked;
  firstMatching(place, [&](const Property& property, CardText::Position each) {
    if (slotOf(property).empty()) unmarked.push_back(each);
    return false;
  });
  for (const CardText::Position each : unmarked) {
    const bool isOther = each == otherLine;
    if (each == line || (isOther && other.slot == 1)) continue;
    markSlot(each, isOther ? kSecond : kMore);
  }
  removeLine(line);
}

void VCardContact::markSlot(CardText::Position line, std::string_view slot) {
  if (card().property(line).unreadable) return;  // its bytes stay, and cannot be taken for another
  card().change(line).parameters.push_back({std::string(kSlot), {std::string(slot)}});
}

// A structured line that ends up empty is not written, and the next one of its kind must not come
// back in its place.
void VCardContact::markLinesBehindEmptyOnes() {
  for (const std::string_view name : {"ORG", "ADR"}) {
    for (const CardText::Position line : card().named(name)) {
      const Property& emptied = card().property(line);
      if (!card().isChanged(line) || !emptied.hasNoValue()) continue;
      for (const CardText::Position other : card().named(name)) {
        const Property& property = card().property(other);
        const bool mayMoveUp = other != line && slotOf(property).empty();
        if (mayMoveUp && isSameKind(property, emptied)) markSlot(other, kMore);
      }
    }
  }
}

// --- text ---------------------------------------------------------------------------------------

std::string VCardContact::text(ContactProperty property) {
  const auto unreadable = findUnreadable(property);
  if (unreadable) fail(*unreadable);
  return readable(property);
}

// The line that makes a property unreadable.
std::optional<CardText::Position> VCardContact::findUnreadable(ContactProperty property) {
  std::vector<CardText::Position> lines;
  if (property == P::Categories) {
    lines = card().named("CATEGORIES");
  } else if (propertyInfo(property).kind == PropertyKind::Name) {
    if (!name().empty()) return std::nullopt;
    lines = card().named("N");
    for (const CardText::Position displayed : card().named("FN")) lines.push_back(displayed);
  } else if (const auto line = find(propertyInfo(property).vcard)) {
    lines.push_back(*line);
  }
  const auto found = std::find_if(lines.begin(), lines.end(), [&](CardText::Position line) {
    return card().property(line).unreadable;
  });
  return found == lines.end() ? std::nullopt : std::optional(*found);
}

void VCardContact::fail(CardText::Position line) {
  const std::string place = home_.placeOf(*position_);
  throw UnreadableProperty((place.empty() ? place : place + ": ") +
                           text::say("%1의 글자를 읽을 수 없습니다",
                                     "the characters of %1 cannot be read",
                                     {card().property(line).name}));
}

// The readable text of a property; empty if nothing can be read.
std::string VCardContact::readable(ContactProperty property) {
  switch (property) {
    case P::FullName:
      return fullName(name());
    case P::LastName:
      return name().last;
    case P::FirstName:
      return name().first;
    case P::LastNameAndFirstName:
      return lastNameAndFirstName(name());
    case P::Categories:
      return categories();
    default: {
      const Place& place = propertyInfo(property).vcard;
      const auto line = find(place);
      return line ? valueAt(place, *line) : std::string();
    }
  }
}

std::string VCardContact::valueAt(const Place& place, CardText::Position line) {
  const Property& property = card().property(line);
  if (place.component < 0) return wholeValue(property);
  return property.component(componentOf(place, card().original(line)));
}

void VCardContact::setText(ContactProperty property, std::string_view value) {
  switch (property) {
    case P::FullName: {
      if (readable(property) == value) return;
      PersonName changed = splitFullName(value);
      const PersonName current = name();
      // Whoever wrote the card knows better where the given names end, and its title and suffix.
      const bool samePerson =
          sameWords(changed.last, current.last) &&
          sameWords(changed.first + " " + changed.middle, current.first + " " + current.middle);
      if (!samePerson) setName(changed);
      break;
    }
    case P::LastName:
    case P::FirstName: {
      PersonName changed = name();
      std::string& part = property == P::LastName ? changed.last : changed.first;
      if (part == value) return;
      part = value;
      setName(changed);
      break;
    }
    case P::LastNameAndFirstName:
      throw ContactStoreError(text::say("LastNameAndFirstName: 쓸 수 없는 속성입니다",
                                        "LastNameAndFirstName cannot be written"));
    case P::Categories:
      setCategories(value);
      break;
    default:
      setValue(propertyInfo(property).vcard, value);
  }
}

PersonName VCardContact::name() {
  return nameOf(card());
}

void VCardContact::setName(const PersonName& name) {
  Property n{.name = "N", .values = {name.last, name.first, name.middle, name.title, name.suffix}};
  if (const auto line = card().firstNamed("N")) {
    card().replace(*line, n.values);
  } else {
    card().append(std::move(n));
  }
  setSingle("FN", fullName(name));
}

void VCardContact::setSingle(std::string_view propertyName, std::string_view value) {
  if (const auto line = card().firstNamed(propertyName)) {
    card().replace(*line, {std::string(value)});
  } else {
    card().append({.name = std::string(propertyName), .values = {std::string(value)}});
  }
}

std::string VCardContact::categories() {
  std::vector<std::string> names;
  for (const CardText::Position line : card().named("CATEGORIES")) {
    const auto& values = card().property(line).values;
    names.insert(names.end(), values.begin(), values.end());
  }
  return joinCategories(names);
}

void VCardContact::setCategories(std::string_view value) {
  const auto names = splitCategories(value);
  if (joinCategories(names) == categories()) return;
  auto lines = card().named("CATEGORIES");
  for (auto line = lines.rbegin(); line != lines.rend(); ++line) {
    const bool kept = names.empty() ? card().property(*line).unreadable : *line == lines.front();
    if (!kept) card().remove(*line);
  }
  if (names.empty()) return;
  if (lines.empty()) {
    card().append({.name = "CATEGORIES", .values = names});
  } else {
    card().replace(lines.front(), names);
  }
}

// --- dates and gender ---------------------------------------------------------------------------

text::DateTime VCardContact::date(ContactProperty property) {
  return readDate(text(property)).value_or(text::noDate());
}

void VCardContact::setDate(ContactProperty property, text::DateTime value) {
  const text::DateTime current = readDate(readable(property)).value_or(text::noDate());
  if (text::formatDay(current) == text::formatDay(value)) return;
  std::string day = value == text::noDate() ? "" : text::formatDay(value);
  if (card().version() == Version::V40) std::erase(day, '-');  // the only form that it has
  setValue(propertyInfo(property).vcard, day);
}

Gender VCardContact::gender() {
  const auto line = find(propertyInfo(P::Gender).vcard);
  if (line && card().property(*line).unreadable) fail(*line);
  return line ? genderOf(card().property(*line)) : Gender::Unspecified;
}

void VCardContact::setGender(Gender value) {
  const Place& place = propertyInfo(P::Gender).vcard;
  const auto line = find(place);
  if ((line ? genderOf(card().property(*line)) : Gender::Unspecified) == value) return;
  const std::string name = line ? card().property(*line).name : newName(place);
  setValue(place, value == Gender::Unspecified ? "" : genderText(name, value));
}

// --- user properties ----------------------------------------------------------------------------

// The key is known from when the folder was opened, so that asking for it does not read the file.
std::optional<std::string> VCardContact::vlid() {
  if (!card_ && position_) return home_.vlidAt(*position_);
  const auto line = card().firstNamed(kVlidName);
  if (!line) return std::nullopt;
  return std::string(text::trim(card().property(*line).whole()));
}

std::size_t VCardContact::userPropertyCount() {
  return vlid() ? 1 : 0;
}

std::string VCardContact::userPropertyName(std::size_t index) {
  if (index != 1 || !vlid())
    throw ContactStoreError(text::say("사용자 속성이 없습니다", "no such user property"));
  return std::string(kVLID);
}

std::string VCardContact::userPropertyText(std::string_view name) {
  const auto value = vlid();
  if (name != kVLID || !value) {
    throw ContactStoreError(
        text::say("사용자 속성이 없습니다: %1", "no such user property: %1", {name}));
  }
  return *value;
}

void VCardContact::setUserPropertyText(std::string_view name, std::string_view value) {
  if (name != kVLID)
    throw ContactStoreError(
        text::say("알 수 없는 사용자 속성입니다: %1", "unknown user property: %1", {name}));
  if (vlid() == value) return;
  setSingle(kVlidName, value);
}

// --- attachments --------------------------------------------------------------------------------

std::size_t VCardContact::attachmentCount() {
  return card().named(kAttachment).size();
}

CardText::Position VCardContact::attachment(std::size_t index) {
  const auto lines = card().named(kAttachment);
  if (index < 1 || index > lines.size()) {
    throw ContactStoreError(
        text::say("첨부 파일이 없습니다 #%1", "no attachment #%1", {std::to_string(index)}));
  }
  return lines[index - 1];
}

std::string VCardContact::attachmentName(std::size_t index) {
  const Parameter* const name = card().property(attachment(index)).parameter(kFileName);
  return name == nullptr || name->values.empty() ? "" : decodeFileName(name->values.front());
}

std::string VCardContact::attachmentContent(std::size_t index) {
  return decodeBase64(card().property(attachment(index)).component(0));
}

void VCardContact::removeAttachment(std::size_t index) {
  card().remove(attachment(index));
}

void VCardContact::addAttachment(const std::filesystem::path& file, std::string_view name) {
  std::ifstream stream(file, std::ios::binary);
  const std::string content{std::istreambuf_iterator<char>(stream), {}};
  if (!stream)
    throw ContactStoreError(text::say("%1: 첨부할 파일을 읽을 수 없습니다",
                                      "%1: the file to attach cannot be read", {file.string()}));
  card().append(
      {.name = std::string(kAttachment),
       .parameters = {{"ENCODING", {"b"}}, {std::string(kFileName), {encodeFileName(name)}}},
       .values = {encodeBase64(content)}});
}

// --- the picture that other programs show --------------------------------------------------------

// A picture that we set has a mark made of its content, so that one exchanged by others counts as
// theirs.
void VCardContact::showPicture(std::string_view jpeg) {
  const auto lines = card().named(kPhoto);
  for (const CardText::Position line : lines) {
    const Property& photo = card().property(line);
    const std::string shown = pictureOf(photo);
    if (photo.unreadable || markOn(photo) != markOf(shown) || shown == jpeg) return;
  }
  for (auto line = lines.rbegin(); line != lines.rend(); ++line) card().remove(*line);
  setSingle(kPhotoMark, jpeg.empty() || home_.keepsParameters() ? "" : markOf(jpeg));
  if (jpeg.empty()) return;
  Property photo{.name = std::string(kPhoto),
                 .parameters = {{std::string(kPhotoMark), {markOf(jpeg)}}},
                 .values = {encodeBase64(jpeg)}};
  if (card().version() == Version::V40) {
    // The address's semicolon separates two values here; otherwise it would be escaped like one in
    // a text.
    photo.values = {std::string(kJpegUri), "base64," + photo.values.front()};
  } else {
    photo.parameters.insert(photo.parameters.begin(), {{"ENCODING", {"b"}}, kJpegType});
  }
  card().append(std::move(photo));
}

// A home that would drop it there has it on a line of its own.
std::string VCardContact::markOn(const Property& photo) {
  const Parameter* const mark = photo.parameter(kPhotoMark);
  if (mark != nullptr && !mark->values.empty()) return mark->values.front();
  const auto line = card().firstNamed(kPhotoMark);
  return line ? card().property(*line).whole() : std::string();
}

std::string VCardContact::pictureOf(const Property& photo) {
  std::string picture = pictureIn(photo);
  return home_.pictureAt(picture).value_or(std::move(picture));
}

std::string VCardContact::shownPicture() {
  const auto line = card().firstNamed(kPhoto);
  return line ? pictureOf(card().property(*line)) : std::string();
}

// --- saving -------------------------------------------------------------------------------------

// Adds what every card must have, and when it was changed.
void VCardContact::completeForSaving() {
  if (!position_) {
    setSingle("UID", newUid());
    setSingle("PRODID", "-//Velmora//VLOUTSync//KO");
  }
  if (!card().firstNamed("N") && card().version() != Version::V40) {
    const PersonName shown = name();
    card().append({.name = "N",
                   .values = {shown.last, shown.first, shown.middle, shown.title, shown.suffix}});
  }
  const auto displayed = card().firstNamed("FN");
  // Anything put in place of an unreadable name would be taken for the name.
  const auto isUnreadable = [&](const std::optional<CardText::Position>& line) {
    return line && card().property(*line).unreadable;
  };
  const bool nameIsThere =
      isUnreadable(displayed) || (isUnreadable(card().firstNamed("N")) && name().empty());
  if (!nameIsThere && (!displayed || card().property(*displayed).hasNoValue())) {
    std::string shown = fullName(name());
    if (shown.empty()) shown = readable(P::CompanyName);
    setSingle("FN", shown.empty() ? readable(P::Email1Address) : shown);
  }
  if (!position_ || card().firstNamed("REV")) setSingle("REV", utcNow(card().version()));
  removeStaleLabels();
  markLinesBehindEmptyOnes();
}

void VCardContact::write(const std::string& row) {
  completeForSaving();
  if (position_) {
    home_.saveCard(*position_, card().write(), vlid(), row);
  } else {
    const std::string uid = card().property(*card().firstNamed("UID")).whole();
    position_ = home_.saveNewCard(uid, card().write(), vlid(), row);
  }
  forgetDerivedName();
}

text::DateTime VCardContact::lastModificationTime() {
  if (!position_) return text::localNow();
  return home_.timeAt(*position_);
}

}  // namespace vlout::outlook::vcard
