// Where a contact's card is kept: what VCardContact needs from the store that made it. One such
// place is a folder of vCards, another an address book of the desktop. Positions are 1-based.
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

  // How messages name the place of a card; empty if it has no name.
  [[nodiscard]] virtual std::string placeOf(std::size_t position) const {
    static_cast<void>(position);
    return {};
  }

  // All throw ContactStoreError. `row` is the number of the row that the card was written from,
  // which gets its dates next (Contact::saveSent), or empty.
  [[nodiscard]] virtual std::string readCard(std::size_t position) = 0;
  // The form of the file that the card was read from; from a UTF-16 file, the text itself is UTF-8.
  [[nodiscard]] virtual FileForm formAt(std::size_t position) {
    static_cast<void>(position);
    return FileForm::Bytes;
  }
  // The picture that the home keeps at that address; nothing for any other address.
  [[nodiscard]] virtual std::optional<std::string> pictureAt(const std::string& address) {
    static_cast<void>(address);
    return std::nullopt;
  }
  // False if it drops parameters that it does not know.
  [[nodiscard]] virtual bool keepsParameters() const { return true; }
  virtual void saveCard(std::size_t position, const std::string& cardText,
                        std::optional<std::string> vlid, const std::string& row) = 0;
  // The position of the new card.
  [[nodiscard]] virtual std::size_t saveNewCard(const std::string& uid, const std::string& cardText,
                                                std::optional<std::string> vlid,
                                                const std::string& row) = 0;
};

}  // namespace vlout::outlook::vcard
