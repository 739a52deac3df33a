#include "entry/cli/run_command.h"

#include <array>
#include <memory>
#include <string_view>
#include <system_error>

#include "entry/cli/platform.h"
#include "entry/orun.h"
#include "text/regular_file.h"
#include "text/shown_text.h"

namespace vlout::entry::cli {
namespace {

using ui::CheckBox;
using ui::frmOutlookSync;

struct NamedBox {
  std::string_view name;
  CheckBox frmOutlookSync::*box;
};

constexpr std::array<NamedBox, 11> kBoxes{{
    {"OUT_CHECK1", &frmOutlookSync::import_check1},
    {"OUT_CHECK2", &frmOutlookSync::import_check2},
    {"OUT_CHECK3", &frmOutlookSync::import_check3},
    {"OUT_CHECK4", &frmOutlookSync::Export_Check1},
    {"OUT_CHECK5", &frmOutlookSync::Export_Check2},
    {"OUT_CHECK6", &frmOutlookSync::Check2},
    {"OUT_CHECK7", &frmOutlookSync::Export_Check3},
    {"OUT_CHECK8", &frmOutlookSync::Sync_Check2},
    {"OUT_CHECK9", &frmOutlookSync::Check1},
    {"OUT_CHECK10", &frmOutlookSync::ch_faxnosync},
    {"chadd", &frmOutlookSync::chadd},
}};

const NamedBox* findBox(std::string_view name) {
  for (const NamedBox& box : kBoxes) {
    if (box.name == name) return &box;
  }
  return nullptr;
}

// What the user would do in the window.
void press(frmOutlookSync& window, const RunRequest& request) {
  window.Combo1.setIndex(request.mode);
  if (request.range) window.Combo2.setIndex(*request.range);
  if (request.subgroups) window.Check3.setValue(CheckBox::kChecked);
  for (const BoxSetting& setting : request.boxes) {
    (window.*findBox(setting.name)->box).setValue(setting.value);
  }
  (request.preview ? window.Command8 : window.Command2).press();
}

// A file of options that cannot be read counts as none, which its owner may not expect.
void explainSettings(const std::filesystem::path& folder, std::ostream& errors) {
  for (const char* const name : {"VelmoraOlSync.ini", "settings.ini"}) {
    try {
      static_cast<void>(text::readRegularFile(folder / name));
    } catch (const std::system_error& error) {
      if (error.code() == std::errc::no_such_file_or_directory) continue;
      errors << text::onItsLines(error.what()) << '\n';
    }
  }
}

// The window says that the host's list gives it nothing; the terminal can say why.
void explainExportList(const RunRequest& request, Runtime& runtime, std::ostream& errors) {
  const auto range = request.range.value_or(frmOutlookSync::kSelectedCards);
  if (request.mode != frmOutlookSync::kExport || range == frmOutlookSync::kAllCards) return;
  const std::string reason = range == frmOutlookSync::kGroup
                                 ? runtime.exportList().explainFolder(runtime.connection())
                                 : runtime.exportList().explainCards();
  if (reason.empty()) return;
  errors << text::onItsLines(reason) << ". 전체를 내보내려면 --range all 을 사용하십시오.\n";
}

}  // namespace

std::optional<BoxSetting> parseBoxSetting(const std::string& text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos) return std::nullopt;
  const std::string name = text.substr(0, equals);
  const std::string value = text.substr(equals + 1);
  if (findBox(name) == nullptr || (value != "0" && value != "1")) return std::nullopt;
  return BoxSetting{name, value == "1" ? CheckBox::kChecked : CheckBox::kCleared};
}

bool runTransfer(const RunRequest& request, std::ostream& results, std::ostream& errors,
                 int progressWidth, const volatile std::sig_atomic_t& interrupted) {
  bool completed = false;
  Runtime* component = nullptr;
  const auto script = [&](frmOutlookSync& window) {
    // The component's own message does not say which file it was.
    if (!component->connection().isOpen())
      errors << text::onItsLines(component->databaseFailure()) << '\n';
    press(window, request);
    completed = window.hasCompleted();
    if (window.chadd.isChecked() && interrupted == 0) {
      explainExportList(request, *component, errors);
    }
  };
  auto toolkit = std::make_unique<ui::TerminalToolkit>(results, errors, progressWidth, interrupted,
                                                       request.onConflict, script);
  const history::EmptiedFolder emptied{.goOn = request.goOn,
                                       .howToGoOn = "그래도 내보내려면 --yes 를 붙이십시오."};
  Runtime runtime(request.folder, makePlatform(request.folder, request.contacts, std::move(toolkit),
                                               emptied, &interrupted));
  if (request.preview) runtime.previewOnly();
  component = &runtime;
  explainSettings(request.folder, errors);
  ORUN(runtime).OUTSYNCRUN();
  return completed;
}

}  // namespace vlout::entry::cli
