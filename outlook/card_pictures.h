// The hook through which a card's picture goes onto its contact while the contact is written.
#pragma once

#include "outlook/contact_store.h"
#include "store/connection.h"

namespace vlout::outlook {

class CardPictures {
 public:
  CardPictures() = default;
  CardPictures(const CardPictures&) = delete;
  CardPictures& operator=(const CardPictures&) = delete;
  virtual ~CardPictures() = default;

  // Attaches the picture of the row's current record, in place of the one attached before. One
  // that cannot be written is reported and left out.
  virtual void attach(Contact& contact, const store::Recordset& row) = 0;
};

}  // namespace vlout::outlook
