// Puts a name card's stored picture onto its contact as a file attachment, by way of a temporary
// JPEG file, and the helper that writes a binary field to a file.
#pragma once

#include <filesystem>
#include <string_view>

#include "outlook/card_pictures.h"

namespace vlout::ui {

class CardPictureFiles : public outlook::CardPictures {
 public:
  // `temporaryFolder` is made when there is none.
  explicit CardPictureFiles(std::filesystem::path temporaryFolder)
      : folder_(std::move(temporaryFolder)) {}

  // Replaces the attachment of the row's `Fname`, compared without regard to case; a row without a
  // picture changes nothing. The attachment carries `Fname` as its name, or the temporary file's
  // name when that is empty, so that the next write finds it. Throws ContactStoreError, and
  // std::system_error when the temporary file cannot be written.
  void attach(outlook::Contact& contact, const store::Recordset& row) override;

 private:
  std::filesystem::path folder_;
};

enum class FieldSaving { Stream, Chunks };

// Writes the field's value to `file`, replacing one that exists: at once, or in pieces of at most
// `chunkSize` bytes. Throws std::system_error.
void saveFieldToFile(const std::filesystem::path& file, std::string_view value, FieldSaving how,
                     std::size_t chunkSize);

}  // namespace vlout::ui
