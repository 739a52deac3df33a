// The hook that puts a card's picture onto its contact while the contact is written.
#pragma once

#include <string>

#include "outlook/contact_store.h"
#include "store/connection.h"

namespace vlout::outlook {

class PictureAttacher {
 public:
  PictureAttacher() = default;
  PictureAttacher(const PictureAttacher&) = delete;
  PictureAttacher& operator=(const PictureAttacher&) = delete;
  virtual ~PictureAttacher() = default;

  // Attaches the picture of the row's current record, in place of the one attached before. A
  // picture that cannot be written is left out. Returns the reason, or an empty text.
  [[nodiscard]] virtual std::string attach(Contact& contact, const store::Recordset& row) = 0;
};

}  // namespace vlout::outlook
