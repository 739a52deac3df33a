#include "entry/runtime.h"

#include <exception>

#include "entry/ini_file.h"
#include "entry/option_file.h"
#include "text/ascii.h"
#include "text/trim.h"

namespace vlout::entry {

Runtime::Runtime(std::filesystem::path componentFolder, Platform platform)
    : folder_(std::move(componentFolder)),
      platform_(std::move(platform)),
      exportList_(folder_),
      connection_(platform_.makeConnection()) {}

void Runtime::loadOptions() {
  options_ = entry::loadOptions(folder_);
}

void Runtime::previewOnly() {
  previewOnly_ = true;
  preview_ = platform_.makePreview();
}

void Runtime::connectDatabase() {
  if (!previewOnly_) connection_ = platform_.makeConnection();
  try {
    connection().open({.componentFolder = folder_});
  } catch (const store::DatabaseError& error) {
    std::string message = "데이터베이스 연결 오류!";
    // A host has one folder, and knows it.
    if (platform_.desk) message.append("\r\n").append(error.what());
    // Start-up goes on: the closed connection tells every later caller the reason.
    toolkit().messageBox(ui::MessageIcon::Critical, message);
  }
}

ui::frmOutlookSync& Runtime::mainWindow() {
  if (!mainWindow_) mainWindow_ = std::make_unique<ui::frmOutlookSync>(toolkit(), *this);
  return *mainWindow_;
}

store::Connection& Runtime::connection() {
  return preview_ ? preview_->connection() : *connection_;
}

outlook::ContactStore& Runtime::contacts() {
  if (preview_) return preview_->contacts();
  if (!contacts_) contacts_ = platform_.makeContacts();
  return *contacts_;
}

void Runtime::releaseMainWindow() {
  mainWindow_.reset();
  contacts_.reset();
}

void Runtime::beginPreview() {
  if (preview_) return;
  contacts_.reset();  // the view on the contacts has to have them to itself
  auto preview = platform_.makePreview();
  preview->connection().open({.componentFolder = folder_});
  preview_ = std::move(preview);
}

void Runtime::endPreview() {
  if (!previewOnly_) preview_.reset();
}

std::vector<ui::FieldChange> Runtime::takeChanges() {
  return preview_ ? preview_->takeChanges() : std::vector<ui::FieldChange>();
}

std::string Runtime::beginRunOrObject(const ui::RunDescription& run) {
  std::string objection =
      platform_.beginRunOrObject ? platform_.beginRunOrObject(run, contacts()) : std::string();
  if (!objection.empty() || !platform_.completeCutShort || !connection().isOpen()) return objection;
  try {
    platform_.completeCutShort(connection(), contacts());
  } catch (const std::exception& error) {
    endRun({ui::RunOutcome::Failed, error.what()});
    return error.what();
  }
  return {};
}

void Runtime::endRun(const ui::RunOutcome& outcome) {
  if (platform_.endRun) platform_.endRun(outcome);
}

std::filesystem::path Runtime::temporaryFolder() const {
  return preview_ ? preview_->temporaryFolder() : Component::temporaryFolder();
}

void Runtime::saveOptions() {
  if (previewOnly_) return;
  entry::saveOptions(folder_, options_);
  if (platform_.desk) platform_.desk->saveOptions();
}

std::optional<std::int16_t> Runtime::skinTheme() {
  const std::string value = IniFile(folder_ / "settings.ini").read("COMMON", "SKIN_THEME");
  const std::int64_t theme = text::parseInteger(text::trim(value)).value_or(0);
  if (!std::in_range<std::int16_t>(theme)) return std::nullopt;
  return static_cast<std::int16_t>(theme);
}

ui::ExportFolder Runtime::readExportFolder() {
  return exportList_.readFolder(connection());
}

std::vector<std::string> Runtime::readSelectedCards() {
  return exportList_.readSelectedCards();
}

}  // namespace vlout::entry
