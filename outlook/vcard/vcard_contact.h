// A card as a contact: applies the table of properties to a `CardText`. The stores make these. A
// card's text is read and decoded only when a property is asked for.
#pragma once

#include <optional>
#include <string>

#include "outlook/contact_store.h"
#include "outlook/person_name.h"
#include "outlook/vcard/card_home.h"
#include "outlook/vcard/card_text.h"

namespace vlout::outlook::vcard {

// The parts of the name that a card gives in `N`, or else in `FN`.
[[nodiscard]] PersonName nameOf(const CardText& card);

class VCardContact : public Contact {
 public:
  // The item at a 1-based position of its home or, without a position, a new contact.
  VCardContact(CardHome& home, std::optional<std::size_t> position);

  [[nodiscard]] std::string typeName() override;
  [[nodiscard]] std::string text(ContactProperty property) override;
  void setText(ContactProperty property, std::string_view value) override;
  [[nodiscard]] text::DateTime date(ContactProperty property) override;
  void setDate(ContactProperty property, text::DateTime value) override;
  [[nodiscard]] Gender gender() override;
  void setGender(Gender value) override;
  [[nodiscard]] std::size_t userPropertyCount() override;
  [[nodiscard]] std::string userPropertyName(std::size_t index) override;
  [[nodiscard]] std::string userPropertyText(std::string_view name) override;
  void setUserPropertyText(std::string_view name, std::string_view value) override;
  [[nodiscard]] std::size_t attachmentCount() override;
  [[nodiscard]] std::string attachmentName(std::size_t index) override;
  // The bytes of an attachment.
  [[nodiscard]] std::string attachmentContent(std::size_t index);
  void removeAttachment(std::size_t index) override;
  void addAttachment(const std::filesystem::path& file, std::string_view name) override;
  void showPicture(std::string_view jpeg) override;
  // The content of the picture that other programs show, or its address; empty if there is none.
  [[nodiscard]] std::string shownPicture();
  void save() override { write(""); }
  void saveSent() override { write(vlid().value_or("")); }
  [[nodiscard]] text::DateTime lastModificationTime() override;

 protected:
  // Saves the card; `row` as for its home.
  virtual void write(const std::string& row);

 private:
  using Place = VCardPlace;

  CardText& card();
  void forgetDerivedName();
  [[nodiscard]] std::string readable(ContactProperty property);
  [[nodiscard]] std::optional<CardText::Position> findUnreadable(ContactProperty property);
  [[noreturn]] void fail(CardText::Position line);
  [[nodiscard]] std::optional<std::string> vlid();

  [[nodiscard]] std::optional<CardText::Position> find(const Place& place);
  template <typename Use>
  std::optional<CardText::Position> firstMatching(const Place& place, Use use);
  [[nodiscard]] std::optional<CardText::Position> findLabelled(const Place& place);
  void insertNew(const Place& place, std::string_view value);
  void removeLine(CardText::Position position);
  void markSlot(CardText::Position line, std::string_view slot);
  void markLinesBehindEmptyOnes();
  void removeStaleLabels();
  [[nodiscard]] std::string valueAt(const Place& place, CardText::Position line);
  void setValue(const Place& place, std::string_view value);
  void removeValue(const Place& place, CardText::Position line);
  [[nodiscard]] std::string newName(const Place& place);

  [[nodiscard]] std::string categories();
  void setCategories(std::string_view value);
  [[nodiscard]] PersonName name();
  void setName(const PersonName& name);
  [[nodiscard]] CardText::Position attachment(std::size_t index);
  [[nodiscard]] std::string markOn(const Property& photo);
  [[nodiscard]] std::string pictureOf(const Property& photo);
  void setSingle(std::string_view propertyName, std::string_view value);
  void completeForSaving();

  CardHome& home_;
  std::optional<std::size_t> position_;
  std::optional<CardText> card_;
};

}  // namespace vlout::outlook::vcard
