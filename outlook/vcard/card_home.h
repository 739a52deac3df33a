// Where a contact's card lies: what VCardContact needs of the store that made it. A folder of
// vCards is one such place, an address book of the desktop another. Positions are 1-based.
#pragma once

#include <optional>
#include <string>

#include "outlook/vcard/content_line.h"
#include "text/date_time.h"

namespace vlout::outlook::vcard {

class CardHome {
 public:
  CardHome() = default;
  CardHome(const CardHome&) = delete;
  CardHome& operator=(const CardHome&) = delete;
  virtual ~CardHome() = default;

  // What is known of a card without reading it.
  [[nodiscard]] virtual bool isGroupAt(std::size_t position) const = 0;
  [[nodiscard]] virtual const std::optional<std::string>& vlidAt(std::size_t position) const = 0;
  [[nodiscard]] virtual text::DateTime timeAt(std::size_t position) const = 0;

  // What a message calls the place of a card; empty where there is nothing to call it.
  [[nodiscard]] virtual std::string placeOf(std::size_t position) const {
    static_cast<void>(position);
    return {};
  }

  // All throw ContactStoreError. `row` is the number of the row that the card was written from and
  // that gets its dates next (Contact::saveSent), or empty.
  [[nodiscard]] virtual std::string readCard(std::size_t position) = 0;
  // What the card was read from; its text is UTF-8 where that is UTF-16.
  [[nodiscard]] virtual FileForm formAt(std::size_t position) {
    static_cast<void>(position);
    return FileForm::Bytes;
  }
  virtual void saveCard(std::size_t position, const std::string& cardText,
                        std::optional<std::string> vlid, const std::string& row) = 0;
  // The position of the new card.
  [[nodiscard]] virtual std::size_t saveNewCard(const std::string& uid, const std::string& cardText,
                                                std::optional<std::string> vlid,
                                                const std::string& row) = 0;
};

}  // namespace vlout::outlook::vcard
