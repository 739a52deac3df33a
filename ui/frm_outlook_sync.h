// The main transfer window. Here the user picks a transfer and its options and runs it; for the
// engines the form is the RunWindow in which they show their progress. Controls keep the names that
// the whole system uses.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "transfer/conflict_dialog.h"
#include "transfer/run_window.h"
#include "transfer/work_list.h"
#include "ui/card_picture_attacher.h"
#include "ui/component.h"
#include "ui/controls.h"
#include "ui/form.h"
#include "ui/frm_outlook_sync_modify.h"

namespace vlout::ui {

class frmOutlookSync : public Form, private transfer::RunWindow, private transfer::ConflictDialog {
 public:
  using Mode = transfer::Mode;
  using Range = transfer::Range;
  using enum transfer::Mode;
  using enum transfer::Range;

  frmOutlookSync(Toolkit& toolkit, Component& component);

  // During a run the request is held; it stops the run at the next record if the transfer can be
  // stopped.
  void requestClose() override;
  void keyPress(int characterCode) override;
  // The option buttons, a second way to choose the mode, are hidden.
  [[nodiscard]] Layout layout() override;

  // True if that mode has reached its closing message since the window was opened.
  [[nodiscard]] bool isDone(Mode mode) const { return done_[static_cast<std::size_t>(mode)] != 0; }
  // True if the last run or preview has.
  [[nodiscard]] bool hasCompleted() const { return outcome_.end == RunOutcome::Completed; }
  [[nodiscard]] bool isRunning() const { return running_; }

  // Uses that group instead of the one that was open in the host, for both export and import.
  void useGroup(const ExportFolder& group);

  ComboBox Combo1;
  OptionButton Option1, Option2, Option3;
  Panel P1, P2, P3;
  CheckBox import_check1, import_check2, import_check3;
  TextBox Text1;
  Label Label8;
  CheckBox Export_Check1, Export_Check2, Export_Check3, Check2;
  ComboBox Combo2;
  CheckBox Check3;
  CheckBox Sync_Check2;
  CheckBox ch_faxnosync, Check1;
  CheckBox chadd, Check5, Check6, Check7;
  Label Label1, Label2, Label3, Label4, Label5, Label6, Label7;
  Image Image2;
  ListView ListView1;
  ProgressBar ProgressBar1;
  StatusBar StatusBar1;
  Button Command1, Command2, Command3, Command4, Command5, Command6, Command7;
  Button Command8;  // shown if the component can preview runs
  Button Command9;  // the overview; shown if the component has a desk
  Label Label9;     // where its cards and contacts are
  CheckBox Check8;  // whether contacts show the cards' pictures

  // Hidden lists: the cards that take part, the positions of the contacts that an import will add,
  // and the ids that were selected in the host.
  transfer::WorkList ListView2;
  std::vector<std::size_t> AppendList;
  std::vector<std::string> sList;

 protected:
  void load() override;
  void unloading() override;

 private:
  struct ModeTexts;
  struct OptionBox {
    CheckBox frmOutlookSync::*box;
    bool loaded;  // whether the box takes its stored value when the window opens
  };
  static const std::array<ModeTexts, 3> kModes;
  static const std::array<OptionBox, 10> kOptionBoxes;

  void setCaptions();
  void connectEvents();
  void fillRanges();
  void showGroup();
  void loadOptions();

  void changeMode();
  void chooseOption(Mode mode);
  void showPanel(Mode mode);
  [[nodiscard]] OptionButton& optionButton(Mode mode);
  void optionChanged(Mode mode);
  void explain(std::string_view text);
  void refuse(std::string_view text);

  enum class Purpose { Transfer, Preview };
  void run(Purpose purpose);
  void enableModeChoice(bool enabled);
  bool connectContacts();
  void runRecorded();
  void runMode();
  [[nodiscard]] RunDescription description();
  void runImport();
  void runExport();
  void runSync();
  std::string_view loadForExport();
  [[nodiscard]] bool isRefused(std::string_view outcome, std::string_view noDataText);
  void finish(Mode mode, transfer::RunEnd end);
  void addChanges();
  [[nodiscard]] outlook::MapOptions mapOptions();
  void pickGroup();
  void showOverview();
  void greyGroup();
  [[nodiscard]] bool mayLeave();
  void showPair(std::size_t line);
  void clearResults();

  // RunWindow
  std::size_t addResult(std::string_view text) override;
  void setResultCell(std::size_t row, std::size_t column, std::string_view text) override;
  void selectResult(std::size_t row) override;
  void resultIsOf(std::size_t row, std::string_view card) override;
  void showProgress(bool visible) override;
  void setProgress(int percent) override;
  void enableRunButton(bool enabled) override;
  void message(MessageIcon icon, std::string_view text) override;
  void failure(std::string_view text, std::string_view cause) override;
  void conflictFound(std::string_view rowId, outlook::Contact& contact) override;
  [[nodiscard]] bool yield() override;
  void keepAlive() override { toolkit().pumpAtOnce(); }

  // ConflictDialog
  int resolve(const transfer::ConflictPair& pair) override;
  bool saveCardSide(const transfer::ConflictPair& pair) override;
  bool saveOutlookSide(const transfer::ConflictPair& pair) override;

  Component& component_;
  std::optional<CardPictureAttacher> pictures_;           // of a run
  std::unique_ptr<frmOutlookSyncModify> conflictWindow_;  // while a conflict is being settled
  ExportFolder exportFolder_;
  std::array<std::int16_t, 3> done_{};
  RunOutcome outcome_;
  std::map<std::size_t, std::string> resultCards_;  // for each line, the card that it is about
  bool running_ = false;
  bool previewing_ = false;
  int conflictsPreviewed_ = 0;
  std::vector<transfer::ComparedField>
      conflict_;  // the differing fields of a conflict in a preview
  bool closeRequested_ = false;
};

}  // namespace vlout::ui
