#include "ui/card_picture_attacher.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>

#include "store/sql.h"
#include "text/file_path.h"
#include "text/letter_case.h"

namespace vlout::ui {
namespace {

constexpr std::size_t kChunk = 8192;

// Deletes a temporary file after use; one that remains is overwritten the next time.
class TemporaryFile {
 public:
  explicit TemporaryFile(std::filesystem::path path) : path_(std::move(path)) {}
  ~TemporaryFile() {
    std::error_code ignored;
    // A copy that something has write-protected would stay.
    using std::filesystem::perms;
    std::filesystem::permissions(path_, perms::owner_write, std::filesystem::perm_options::add,
                                 ignored);
    std::filesystem::remove(path_, ignored);
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

// Removes the attachments that are the card's picture. Some stores forget the name that one was
// given and fall back on that of its file. Sets `removed` once one has been removed.
void removeAttachments(outlook::Contact& contact, std::string_view name, std::string_view file,
                       bool& removed) {
  for (std::size_t i = contact.attachmentCount(); i >= 1; --i) {
    const std::string each = contact.attachmentName(i);
    if (!text::equalsIgnoringCase(each, name) && !text::equalsIgnoringCase(each, file)) continue;
    contact.removeAttachment(i);
    removed = true;
  }
}

}  // namespace

std::string CardPictureAttacher::attach(outlook::Contact& contact, const store::Recordset& row) {
  const store::Field picture = row.field("Thumbnail");
  if (showing_ == Showing::Yes) {
    constexpr std::string_view kJpegBegins = "\xFF\xD8";
    contact.showPicture(picture && picture->starts_with(kJpegBegins) ? *picture : "");
  }
  if (!picture) return {};
  std::error_code ignored;  // a folder that cannot be made shows when the file is written
  if (std::filesystem::create_directories(folder_, ignored)) {
    std::filesystem::permissions(folder_, std::filesystem::perms::owner_all, ignored);
  }
  bool removed = false;
  try {
    const std::string id(store::nullSafe(row.field("i_idx")));
    const TemporaryFile file(folder_ / text::pathOf("명함이미지" + id + ".jpg"));
    saveFieldToFile(file.path(), *picture, FieldSaving::Chunks, kChunk);
    const std::string fileName = text::pathText(file.path().filename());
    std::string name(store::nullSafe(row.field("Fname")));
    if (name.empty()) name = fileName;
    removeAttachments(contact, name, fileName, removed);
    if (std::filesystem::exists(file.path())) contact.addAttachment(file.path(), name);
  } catch (const std::runtime_error& error) {
    // Saved now, the contact would have lost the picture that it had.
    if (removed) throw;
    return error.what();
  }
  return {};
}

void saveFieldToFile(const std::filesystem::path& file, std::string_view value, FieldSaving how,
                     std::size_t chunkSize) {
  std::error_code ignored;
  std::filesystem::remove(file, ignored);
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  const std::size_t piece = how == FieldSaving::Stream ? value.size() : chunkSize;
  while (stream && !value.empty()) {
    const std::string_view part = value.substr(0, piece);
    stream.write(part.data(), static_cast<std::streamsize>(part.size()));
    value.remove_prefix(part.size());
  }
  stream.close();
  if (!stream) {
    throw std::system_error(errno != 0 ? errno : EIO, std::generic_category(),
                            text::pathText(file));
  }
}

}  // namespace vlout::ui
