// Attaches a name card's stored picture to its contact, by way of a temporary JPEG file. Also holds
// the helper that writes a binary field to a file.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "outlook/picture_attacher.h"

namespace vlout::ui {

class CardPictureAttacher : public outlook::PictureAttacher {
 public:
  // Whether contacts without another picture also show the card's.
  enum class Showing { No, Yes };

  // `temporaryFolder` is made if it does not exist.
  explicit CardPictureAttacher(std::filesystem::path temporaryFolder, Showing showing = Showing::No)
      : folder_(std::move(temporaryFolder)), showing_(showing) {}

  // Replaces the attachment named like the row's `Fname`, compared without regard to case; a row
  // without a picture changes nothing. The new attachment is named `Fname` or, if that is empty,
  // like the temporary file, so that the next write finds it. A picture that cannot be written
  // fails alone. Only if the old one has already been taken off the contact is the failure thrown,
  // so that the contact is not saved without either.
  [[nodiscard]] std::string attach(outlook::Contact& contact, const store::Recordset& row) override;

 private:
  std::filesystem::path folder_;
  Showing showing_;
};

enum class FieldSaving { Stream, Chunks };

// Writes the field's value to `file`, replacing an existing one: all at once, or in pieces of at
// most `chunkSize` bytes. Throws std::system_error.
void saveFieldToFile(const std::filesystem::path& file, std::string_view value, FieldSaving how,
                     std::size_t chunkSize);

}  // namespace vlout::ui
