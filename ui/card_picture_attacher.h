// Puts a name card's stored picture onto its contact as a file attachment, by way of a temporary
// JPEG file, and the helper that writes a binary field to a file.
#pragma once

#include <filesystem>
#include <functional>
#include <string_view>

#include "outlook/picture_attacher.h"

namespace vlout::ui {

class CardPictureAttacher : public outlook::PictureAttacher {
 public:
  // Told of a picture that stays behind: the row's name and the cause.
  using Failed = std::function<void(std::string_view name, std::string_view cause)>;

  // Whether contacts show the picture too, where they have no other.
  enum class Showing { No, Yes };

  // `temporaryFolder` is made when there is none.
  CardPictureAttacher(std::filesystem::path temporaryFolder, Failed failed,
                      Showing showing = Showing::No)
      : folder_(std::move(temporaryFolder)), failed_(std::move(failed)), showing_(showing) {}

  // Replaces the attachment of the row's `Fname`, compared without regard to case; a row without a
  // picture changes nothing. The attachment carries `Fname` as its name, or the temporary file's
  // name when that is empty, so that the next write finds it. A picture that cannot be written
  // fails alone; only when the one before it has been taken off the contact already, that which
  // failed is thrown, so that the contact is not saved without either.
  void attach(outlook::Contact& contact, const store::Recordset& row) override;

 private:
  std::filesystem::path folder_;
  Failed failed_;
  Showing showing_;
};

enum class FieldSaving { Stream, Chunks };

// Writes the field's value to `file`, replacing one that exists: at once, or in pieces of at most
// `chunkSize` bytes. Throws std::system_error.
void saveFieldToFile(const std::filesystem::path& file, std::string_view value, FieldSaving how,
                     std::size_t chunkSize);

}  // namespace vlout::ui
