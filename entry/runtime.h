// The process-wide state of the loaded component: the option values, the one database connection,
// the contact store and the main window. The program or the COM class that hosts the component
// makes one and hands it to ORUN.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>

#include "entry/export_list.h"
#include "ui/component.h"
#include "ui/frm_outlook_sync.h"
#include "ui/toolkit.h"

namespace vlout::entry {

// Views of both stores that keep a run's writes to themselves.
class Preview {
 public:
  Preview() = default;
  Preview(const Preview&) = delete;
  Preview& operator=(const Preview&) = delete;
  virtual ~Preview() = default;

  [[nodiscard]] virtual store::Connection& connection() = 0;
  [[nodiscard]] virtual outlook::ContactStore& contacts() = 0;
  [[nodiscard]] virtual const std::filesystem::path& temporaryFolder() const = 0;
  [[nodiscard]] virtual std::vector<ui::FieldChange> takeChanges() = 0;
};

// The adapters of a platform.
struct Platform {
  std::function<std::unique_ptr<store::Connection>()> makeConnection;
  std::function<std::unique_ptr<outlook::ContactStore>()> makeContacts;
  std::unique_ptr<ui::Toolkit> toolkit;
  // Set if runs can be previewed; the others if runs are recorded.
  std::function<std::unique_ptr<Preview>()> makePreview = {};
  std::function<std::string(const ui::RunDescription&, outlook::ContactStore&)> beginRunOrObject =
      {};
  // Called once a run or its preview has begun, with the stores that it works on.
  std::function<void(store::Connection&, outlook::ContactStore&)> completeCutShort = {};
  std::function<void(const ui::RunOutcome&)> endRun = {};
  std::shared_ptr<ui::Desk> desk = {};
};

class Runtime : public ui::Component {
 public:
  Runtime(std::filesystem::path componentFolder, Platform platform);

  // From now on there are only previews: the real stores and the option file are never opened for
  // writing. Call this first.
  void previewOnly();

  void loadOptions();

  // Makes a new connection, which replaces the old one, and opens it. A failure is shown in one
  // message and leaves the connection closed.
  void connectDatabase();

  [[nodiscard]] ui::Toolkit& toolkit() { return *platform_.toolkit; }
  [[nodiscard]] const ExportList& exportList() const { return exportList_; }

  // The main window, made if there is none. It holds the contact store as long as it is open;
  // `releaseMainWindow` releases both, and the next ones are new.
  [[nodiscard]] ui::frmOutlookSync& mainWindow();
  void releaseMainWindow();

  [[nodiscard]] store::Connection& connection() override;
  [[nodiscard]] outlook::ContactStore& contacts() override;
  [[nodiscard]] ui::OptionValues& options() override { return options_; }
  void saveOptions() override;
  [[nodiscard]] bool hasExportList() const override { return exportList_.isThere(); }
  [[nodiscard]] ui::ExportFolder readExportFolder() override;
  [[nodiscard]] std::vector<std::string> readSelectedCards() override;
  [[nodiscard]] ui::WindowResults& results() override { return results_; }
  [[nodiscard]] std::optional<std::int16_t> skinTheme() override;
  [[nodiscard]] const std::filesystem::path& folder() const override { return folder_; }
  [[nodiscard]] std::filesystem::path temporaryFolder() const override;
  [[nodiscard]] bool canPreview() const override { return platform_.makePreview != nullptr; }
  void beginPreview() override;
  void endPreview() override;
  [[nodiscard]] std::vector<ui::FieldChange> takeChanges() override;
  [[nodiscard]] std::string beginRunOrObject(const ui::RunDescription& run) override;
  void endRun(const ui::RunOutcome& outcome) override;
  void releaseContacts() override { contacts_.reset(); }
  [[nodiscard]] ui::Desk* desk() override { return platform_.desk.get(); }
  [[nodiscard]] std::int32_t& selectedGroupParent() override { return selectedGroupParent_; }

 private:
  std::filesystem::path folder_;
  Platform platform_;
  ExportList exportList_;
  std::unique_ptr<store::Connection> connection_;
  ui::OptionValues options_;
  ui::WindowResults results_;
  std::int32_t selectedGroupParent_ = 1;
  std::unique_ptr<outlook::ContactStore> contacts_;
  std::unique_ptr<Preview> preview_;  // while one is shown
  bool previewOnly_ = false;
  std::unique_ptr<ui::frmOutlookSync> mainWindow_;
};

}  // namespace vlout::entry
