#include "entry/cli/read_only.h"

#include <iostream>
#include <stdexcept>

#include "entry/cli/contacts_place.h"
#include "entry/cli/platform.h"
#include "entry/cli/terminal.h"
#include "text/ascii.h"
#include "transfer/work_list_loader.h"
#include "ui/terminal/terminal_toolkit.h"

namespace vlout::entry::cli {

ReadOnlyStores::ReadOnlyStores(const std::filesystem::path& folder,
                               const std::filesystem::path& contacts)
    : platform_(makePlatform(
          folder, contacts,
          std::make_unique<ui::TerminalToolkit>(std::cout, std::cerr, 0, handleInterrupts(),
                                                ui::TerminalToolkit::OnConflict::Skip, nullptr),
          {}, &handleInterrupts())),
      place_(contacts),
      view_(platform_.makePreview()) {
  connection().open({.componentFolder = folder});
}

void ReadOnlyStores::connectContacts() {
  if (const auto objection = objectionToFolderOfFolders(place_); !objection.empty()) {
    throw outlook::ContactStoreError(text::replaceAll(objection, "\r\n", "\n"));
  }
  if (!contacts().connect()) throw outlook::ContactStoreError(contacts().connectFailure());
  platform_.completeCutShort(connection(), contacts());
}

std::size_t ProblemLines::addResult(std::string_view text) {
  last_ = text;
  return 0;
}

// Headings of phases end with another state.
void ProblemLines::setResultCell(std::size_t row, std::size_t column, std::string_view text) {
  static_cast<void>(row);
  if (column == 2 && (text == "실패" || text == "제외")) lines_.push_back(last_);
}

void ProblemLines::message(transfer::MessageIcon icon, std::string_view text) {
  static_cast<void>(icon);
  lines_.emplace_back(text);
}

FolderSurvey::FolderSurvey(ReadOnlyStores& stores)
    : window_(handleInterrupts()), survey_(stores.connection(), stores.contacts(), list_, window_) {
  stores.connectContacts();
  transfer::WorkListLoader(stores.connection(), list_, window_).loadAll();
  cards_ = list_.size();
  if (survey_.run() != transfer::RunEnd::Completed) throw std::runtime_error("중지되었습니다");
}

}  // namespace vlout::entry::cli
