#include "entry/cli/read_only.h"

#include <iostream>
#include <stdexcept>

#include "entry/cli/contacts_place.h"
#include "entry/cli/platform.h"
#include "entry/cli/terminal.h"
#include "text/ascii.h"
#include "text/language.h"
#include "transfer/work_list_loader.h"
#include "ui/terminal/terminal_toolkit.h"

namespace vlout::entry::cli {

ReadOnlyStores::ReadOnlyStores(const std::filesystem::path& folder,
                               const std::filesystem::path& contacts)
    : platform_(makePlatform(folder, contacts,
                             std::make_unique<ui::terminal::TerminalToolkit>(
                                 std::cout, std::cerr, 0, handleInterrupts(),
                                 ui::terminal::TerminalToolkit::OnConflict::Skip, nullptr),
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

FolderSurvey::FolderSurvey(ReadOnlyStores& stores)
    : window_([this](std::string_view line, std::string_view) { problems_.emplace_back(line); },
              [] { return handleInterrupts() != 0; }),
      survey_(stores.connection(), stores.contacts(), list_, window_) {
  stores.connectContacts();
  transfer::WorkListLoader(stores.connection(), list_, window_).loadAll();
  cards_ = list_.size();
  if (survey_.run() != transfer::RunEnd::Completed) {
    throw std::runtime_error(text::say("중지되었습니다", "Stopped"));
  }
}

}  // namespace vlout::entry::cli
