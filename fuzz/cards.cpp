// A file of vCards: unchanged cards come out as they went in, and an edit of one property leaves
// the others and the other cards as they were.
#include "fuzz/fuzz.h"
#include "outlook/vcard/card_file.h"
#include "outlook/vcard/card_home.h"
#include "outlook/vcard/card_text.h"
#include "outlook/vcard/vcard_contact.h"
#include "text/utf8.h"

namespace vlout::fuzz {
namespace {

using outlook::ContactProperty;
using outlook::PropertyInfo;
using outlook::PropertyKind;
using namespace outlook::vcard;

// A file in memory.
class File : public CardHome {
 public:
  File(std::string text, FileForm form)
      : text_(std::move(text)), cards_(findCards(text_).cards), form_(form) {}

  [[nodiscard]] std::size_t count() const { return cards_.size(); }
  [[nodiscard]] bool isGroupAt(std::size_t position) const override {
    return cards_.at(position - 1).isGroup;
  }
  [[nodiscard]] const std::optional<std::string>& vlidAt(std::size_t position) const override {
    return cards_.at(position - 1).vlid;
  }
  [[nodiscard]] text::DateTime timeAt(std::size_t position) const override {
    static_cast<void>(position);
    return {};
  }
  [[nodiscard]] std::string readCard(std::size_t position) override {
    return text_.substr(cards_.at(position - 1).start, cards_.at(position - 1).size);
  }
  [[nodiscard]] FileForm formAt(std::size_t position) override {
    static_cast<void>(position);
    return form_;
  }
  void saveCard(std::size_t position, const std::string& cardText, std::optional<std::string> vlid,
                const std::string& row) override {
    static_cast<void>(vlid);
    static_cast<void>(row);
    const CardSpan& span = cards_.at(position - 1);
    text_.replace(span.start, span.size, cardText);
    cards_ = findCards(text_).cards;
  }
  [[nodiscard]] std::size_t saveNewCard(const std::string& uid, const std::string& cardText,
                                        std::optional<std::string> vlid,
                                        const std::string& row) override {
    static_cast<void>(uid);
    saveCard(1, cardText, std::move(vlid), row);
    return 1;
  }

 private:
  std::string text_;
  std::vector<CardSpan> cards_;
  FileForm form_;
};

std::string valueOf(outlook::Contact& contact, const PropertyInfo& info) {
  try {
    if (info.kind == PropertyKind::Date) return text::formatDay(contact.date(info.property));
    if (info.kind == PropertyKind::Gender) {
      return std::to_string(static_cast<int>(contact.gender()));
    }
    return contact.text(info.property);
  } catch (const outlook::UnreadableProperty&) {
    return "(unreadable)";
  }
}

std::vector<std::string> valuesOf(File& file, std::size_t position) {
  VCardContact contact(file, position);
  std::vector<std::string> values;
  for (const PropertyInfo& info : outlook::contactProperties()) {
    values.push_back(valueOf(contact, info));
  }
  return values;
}

// The title, which nothing else follows from, is edited; the value depends on the input.
void editTitle(File& file, std::size_t position, std::size_t turn) {
  const bool isWholeUtf8 = CardText(file.readCard(position)).doubts().empty() &&
                           text::isValidUtf8(file.readCard(position));
  constexpr const char* kTitles[] = {"부장; \"a,b\\c\"\n둘째", "plain", "새 값 😀"};
  const std::string title = kTitles[turn % std::size(kTitles)];
  const auto index = static_cast<std::size_t>(ContactProperty::JobTitle);
  auto before = valuesOf(file, position);
  std::vector<std::string> others;
  for (std::size_t i = 1; i <= file.count(); ++i) others.push_back(file.readCard(i));
  VCardContact contact(file, position);
  contact.setText(ContactProperty::JobTitle, title);
  contact.save();
  require(file.count() == others.size(), "an edit leaves as many cards as there were");
  for (std::size_t i = 1; i <= file.count(); ++i) {
    require(i == position || file.readCard(i) == others[i - 1], "an edit leaves the other cards");
  }
  const auto after = valuesOf(file, position);
  before[index] = title;
  require(after[index] == title, "an edit gives its property the value");
  // In which set damaged text is taken to be may change with any edit.
  for (std::size_t i = 0; i < after.size() && isWholeUtf8; ++i) {
    const auto name = std::string(outlook::contactProperties()[i].objectModelName);
    require(after[i] == before[i], name + ": " + before[i] + " became " + after[i]);
  }
}

}  // namespace

void tryInput(std::string_view input) {
  std::string text(input);
  const auto form = convertFile(text);
  if (!form) return;
  require(fileBytes(text, *form) == input, "a file comes out as it went in");
  File file(text, *form);
  constexpr std::size_t kMostCards = 3;
  for (std::size_t i = 1; i <= std::min(file.count(), kMostCards); ++i) {
    const std::string card = file.readCard(i);
    const CardText unchanged(card, *form);
    static_cast<void>(unchanged.doubts());
    require(unchanged.write() == card, "an unchanged card is written as it was");
    editTitle(file, i, input.size());
  }
}

}  // namespace vlout::fuzz
