#include "ui/frm_outlook_sync.h"

#include <exception>
#include <initializer_list>
#include <utility>

#include "store/sql.h"
#include "text/ascii.h"
#include "text/file_path.h"
#include "text/language.h"
#include "text/trim.h"
#include "transfer/export.h"
#include "transfer/import.h"
#include "transfer/sync.h"
#include "transfer/work_list_loader.h"
#include "ui/frm_group_box.h"
#include "ui/frm_overview.h"
#include "ui/frm_pair.h"
#include "ui/skin.h"

namespace vlout::ui {
namespace {

constexpr std::string_view kNoGroup = "미정";
constexpr std::string_view kRootFolder = "전체";
constexpr std::string_view kDatabaseFailed = "데이터 연결이 실패되었습니다!";
constexpr std::string_view kStoreFailed =
    "아웃룩 연결에 실패하였습니다!\r\n(Outlook Express는 지원하지 않습니다)";

// The stored text of a box as a number, which is as wide as a check box's value.
int optionNumber(const std::string& text) {
  return text::narrowed<std::int16_t>(text::parseInteger(text).value_or(0));
}

std::string withCause(std::string_view message, std::string_view cause) {
  std::string text(message);
  if (!cause.empty()) text.append("\r\n").append(cause);
  return text;
}

}  // namespace

struct frmOutlookSync::ModeTexts {
  std::string_view entry;         // in Combo1
  std::string_view sentence;      // Label1
  std::string_view status;        // status bar, when chosen by Combo1
  std::string_view optionStatus;  // status bar, when chosen by its option button
};

const std::array<frmOutlookSync::ModeTexts, 3> frmOutlookSync::kModes{{
    {"1. 벨모라 ← 아웃룩", "으로 데이터를 가져옵니다.",
     "아웃룩 연락처를 벨모라로 가져옵니다.(Import)", "아웃룩 연락처를 VL로 가져옵니다"},
    {"2. 벨모라 → 아웃룩", "으로 데이터를 보냅니다.",
     "벨모라의 데이터를 아웃룩으로 보냅니다.(Export)", "VL의 고객자료를 아웃룩으로 보냅니다."},
    {"3. 벨모라 ↔ 아웃룩", "과 상호 갱신합니다.", "연결된 데이터를 대상으로 상호 갱신합니다.(Sync)",
     "연결된 자료를 대상으로 상호갱신합니다."},
}};

// In the order of OUT_CHECK1 to OUT_CHECK10. `Check1` is saved but always opens cleared; that
// asymmetry is intended.
const std::array<frmOutlookSync::OptionBox, 10> frmOutlookSync::kOptionBoxes{{
    {&frmOutlookSync::import_check1, true},
    {&frmOutlookSync::import_check2, true},
    {&frmOutlookSync::import_check3, true},
    {&frmOutlookSync::Export_Check1, true},
    {&frmOutlookSync::Export_Check2, true},
    {&frmOutlookSync::Check2, true},
    {&frmOutlookSync::Export_Check3, true},
    {&frmOutlookSync::Sync_Check2, true},
    {&frmOutlookSync::Check1, false},
    {&frmOutlookSync::ch_faxnosync, true},
}};

frmOutlookSync::frmOutlookSync(Toolkit& toolkit, Component& component)
    : Form(toolkit), component_(component) {
  caption = "벨모라 - 아웃룩 연락처 교환";
  width = 9000;
  height = 7800;
  setCaptions();
  connectEvents();
}

void frmOutlookSync::setCaptions() {
  Option1.setText("아웃룩 연락처 가져오기");
  Option2.setText("VL 고객 내보내기");
  Option3.setText("상호갱신");
  import_check1.setText("벨모라에 없는 연락처 가져오기");
  import_check2.setText("동일인은 최근 변경된 정보만 갱신");
  import_check3.setText("충돌무시");
  Export_Check1.setText("아웃룩에 없는 연락처 보내기");
  Export_Check2.setText("동일인은 최근 변경된 정보만 갱신");
  Export_Check3.setText("충돌무시");
  Check2.setText("성,이름 분리해서 보내기");
  Check3.setText("하위그룹 포함");
  Sync_Check2.setText("충돌 데이터가 있으면 직접 보여주고 갱신(권장)");
  ch_faxnosync.setText("팩스번호는 아웃룩 정보를 보호함");
  Check1.setText("그룹/범주는 상호 동일하게 유지함");
  chadd.setText("연락처");
  Check5.setText("일정(미지원)");
  Check6.setText("작업(미지원)");
  Check7.setText("노트(미지원)");
  Label1.setText("으로 싱크합니다.");
  Label2.setText("대상선택:");
  Label3.setText("싱크선택:");
  Label4.setText("옵션:");
  Label5.setText("작업상태:");
  Label6.setText("범위");
  Label7.setText("벨모라 명함과 아웃룩 연락처를 상호 교환합니다.");
  Label8.setText("그룹:");
  Command2.setText("싱크시작");
  Command3.setText("닫기");
  Command6.setText("싱크 규칙");
  Command7.setText("그룹선택");
  Command4.setText("충돌 데이터란?");
  Command5.setText("힌트");
  Command8.setText(text::say("미리보기", "Preview"));
  Command9.setText(text::say("현황과 기록", "Overview, history"));
  Check8.setText(text::say("명함 사진을 연락처에 보임", "Show the card's picture on the contact"));
  chadd.setValue(CheckBox::kChecked);
  Text1.setLocked(true);  // a name typed over the chosen group's would file cards under a wrong one
}

Layout frmOutlookSync::layout() {
  using namespace layout;
  const auto importPanel = column({control("import_check1", import_check1).keyed('1'),
                                   control("import_check2", import_check2).keyed('2'),
                                   control("import_check3", import_check3).keyed('3')});
  const auto exportPanel = column(
      {row({label("Label6", Label6).keyed('R'), control("Combo2", Combo2).wide(26).stretched(1),
            control("Check3", Check3).keyed('B')}),
       control("Export_Check1", Export_Check1).keyed('1'),
       control("Export_Check2", Export_Check2).keyed('2'),
       control("Export_Check3", Export_Check3).keyed('3'),
       row({control("Check2", Check2).keyed('N'), control("Command5", Command5).keyed('H'),
            space()})});
  const auto syncPanel = column({control("Sync_Check2", Sync_Check2).keyed('1'),
                                 row({control("Command4", Command4).keyed('F'), space()})});
  std::vector<Layout> buttons{control("Command6", Command6).wide(10).keyed('U'), space()};
  if (component_.canPreview()) {
    buttons.push_back(control("Command8", Command8).wide(12).keyed('V'));
  }
  Parts head{row({control("Image2", Image2), label("Label7", Label7).stretched(1)})};
  if (component_.desk() != nullptr) {
    head.push_back(row(
        {label("Label9", Label9).wide(30).stretched(1), control("Command9", Command9).keyed('O')}));
  }
  std::vector<Layout> common{control("ch_faxnosync", ch_faxnosync).keyed('P'),
                             control("Check1", Check1).keyed('K')};
  if (component_.desk() != nullptr) common.push_back(control("Check8", Check8).keyed('T'));
  common.push_back(space());
  buttons.push_back(control("Command2", Command2).wide(12).keyed('S'));
  buttons.push_back(control("Command3", Command3).wide(12).keyed('C'));
  return column(
      {column(std::move(head)),
       grid(2, {label("Label3", Label3).keyed('M'),
                row({control("Combo1", Combo1).wide(24), label("Label1", Label1).stretched(1)}),
                label("Label2", Label2),
                row({control("chadd", chadd).keyed('A'), control("Check5", Check5),
                     control("Check6", Check6), control("Check7", Check7), space()}),
                label("Label8", Label8),
                row({control("Text1", Text1).stretched(1),
                     control("Command7", Command7).wide(10).keyed('G')})
                    .stretched(1),
                label("Label4", Label4),
                stack({panel("P1", P1, importPanel), panel("P2", P2, exportPanel),
                       panel("P3", P3, syncPanel)}),
                fixed(""), row(std::move(common))}),
       label("Label5", Label5), control("ListView1", ListView1).high(8).stretched(1),
       control("ProgressBar1", ProgressBar1), row(std::move(buttons)),
       statusBar("StatusBar1", StatusBar1)});
}

void frmOutlookSync::connectEvents() {
  Combo1.clicked = [this] { changeMode(); };
  Combo2.clicked = [this] {
    Check3.setEnabled(Combo2.index() == kGroup);
    greyGroup();
  };
  Option1.clicked = [this] { chooseOption(kImport); };
  Option2.clicked = [this] { chooseOption(kExport); };
  Option3.clicked = [this] { chooseOption(kSync); };
  for (CheckBox* box : {&import_check1, &import_check2, &import_check3}) {
    box->clicked = [this] { optionChanged(kImport); };
  }
  for (CheckBox* box : {&Export_Check1, &Export_Check2, &Export_Check3}) {
    box->clicked = [this] { optionChanged(kExport); };
  }
  Sync_Check2.clicked = [this] { optionChanged(kSync); };
  ch_faxnosync.clicked = [this] { Command2.setEnabled(true); };
  Command2.clicked = [this] { run(Purpose::Transfer); };
  Command8.clicked = [this] { run(Purpose::Preview); };
  Command3.clicked = [this] { requestClose(); };
  Command9.clicked = [this] { showOverview(); };
  ListView1.activated = [this](std::size_t line) { showPair(line); };
  Command7.clicked = [this] { pickGroup(); };
  Command4.clicked = [this] {
    explain(
        "→충돌←\r\n\r\n상호갱신 이후에 양쪽 프로그램(벨모라과 아웃룩) 모두에서 데이터를 수정했을 "
        "경우 "
        "충돌자료로 구분합니다.\r\n기준자료가 부정확함으로 데이터를 직접 비교 후 갱신하는 것을 "
        "권장합니다.");
  };
  Command5.clicked = [this] {
    explain(
        "이름등록시 '성'과 '이름'사이에 공백 또는 ','로 구분해 주시면 정확하게 성과 이름이 "
        "분리되어 "
        "내보낼 수 있습니다.\r\n\r\n예)홍 길동\r\n예)홍,길동");
  };
  Command6.clicked = [this] {
    explain(
        "본 싱크작업은 MicroSoft ActiveSync 규약과 다르며 자동삭제 갱신은 제외되었습니다.\r\n순수 "
        "연락처 정보만 갱신하며 메일링리스트 그룹은 제외됩니다.");
  };
}

// --- opening and closing ------------------------------------------------------------------------

void frmOutlookSync::load() {
  applySkin(component_, toolkit());
  centreOnScreen();
  done_.fill(0);
  for (Panel* panel : {&P1, &P2, &P3}) panel->setVisible(false);
  Combo1.clear();
  for (const ModeTexts& mode : kModes) Combo1.addItem(mode.entry);
  Combo1.setIndex(kImport);
  fillRanges();
  if (ListView1.columns().empty()) {
    ListView1.addColumn("작업", 1700);
    ListView1.addColumn("진행율", 2340);
    ListView1.addColumn("결과", 600);
  }
  loadOptions();
  if (Desk* const desk = component_.desk()) {
    Label9.setText(text::say("명함: %1   연락처: %2", "Cards: %1   Contacts: %2",
                             {text::pathText(desk->folder()), desk->contacts().caption}));
    Check8.setValue(desk->showsPictures() ? CheckBox::kChecked : CheckBox::kCleared);
  }
}

void frmOutlookSync::fillRanges() {
  try {
    exportFolder_ = component_.readExportFolder();
  } catch (const std::exception& error) {
    refuse(error.what());  // as if the host had left no list, but not silently
  }
  showGroup();
}

void frmOutlookSync::useGroup(const ExportFolder& group) {
  exportFolder_ = group;
  showGroup();
}

void frmOutlookSync::showGroup() {
  Combo2.clear();
  Combo2.addItem("선택항목");
  Combo2.addItem("그룹(" + exportFolder_.name + ")");
  Combo2.addItem("전체자료");
  // Without a host that selects cards, all cards are meant.
  const bool hosted = component_.desk() == nullptr || component_.hasExportList();
  Combo2.setIndex(hosted ? kSelectedCards : kAllCards);
  if (exportFolder_.name.empty() || exportFolder_.name == kRootFolder) {
    Text1.setText(kNoGroup);
    Text1.setTag("2");
    component_.selectedGroupParent() = 1;
  } else {
    Text1.setText(exportFolder_.name);
    Text1.setTag(std::to_string(text::parseInteger(exportFolder_.id).value_or(0)));
    component_.selectedGroupParent() = exportFolder_.parent;
  }
}

void frmOutlookSync::loadOptions() {
  const OptionValues& options = component_.options();
  for (std::size_t i = 0; i < kOptionBoxes.size(); ++i) {
    const OptionBox& option = kOptionBoxes[i];
    (this->*option.box).setValue(option.loaded ? optionNumber(options[i]) : CheckBox::kCleared);
  }
}

void frmOutlookSync::unloading() {
  OptionValues& options = component_.options();
  for (std::size_t i = 0; i < kOptionBoxes.size(); ++i) {
    options[i] = std::to_string((this->*kOptionBoxes[i].box).value());
  }
  if (Desk* const desk = component_.desk()) desk->showsPictures() = Check8.isChecked();
  component_.saveOptions();
}

void frmOutlookSync::requestClose() {
  if (running_) {
    closeRequested_ = true;
    return;
  }
  unload();
}

void frmOutlookSync::keyPress(int characterCode) {
  if (characterCode == kEscape && mayLeave()) requestClose();
}

// A slip of the finger must not lose the lines that say what went wrong.
bool frmOutlookSync::mayLeave() {
  if (component_.desk() == nullptr || running_) return true;
  for (const ListView::Row& row : ListView1.rows()) {
    const std::string& state = row.cells.back();
    if (state == "제외" || state == "실패") {
      return toolkit().ask(
          text::say("처리하지 못한 자료가 목록에 있습니다. 창을 닫을까요?",
                    "The list has records that could not be handled. Close the window?"));
    }
  }
  return true;
}

void frmOutlookSync::showOverview() {
  if (running_) return;
  Desk& desk = *component_.desk();
  frmOverview(toolkit(), component_, desk).showModal();
  if (desk.isMoving()) unload();
}

// Boxes that do not affect the transfer are grey.
void frmOutlookSync::greyGroup() {
  if (component_.desk() == nullptr) return;
  const bool asked =
      Combo1.index() == kImport || (Combo1.index() == kExport && Combo2.index() == kGroup);
  for (Control* const control : std::initializer_list<Control*>{&Label8, &Text1, &Command7}) {
    control->setEnabled(asked);
  }
}

// --- mode, range and options --------------------------------------------------------------------

OptionButton& frmOutlookSync::optionButton(Mode mode) {
  return mode == kImport ? Option1 : mode == kExport ? Option2 : Option3;
}

void frmOutlookSync::showPanel(Mode mode) {
  P1.setVisible(mode == kImport);
  P2.setVisible(mode == kExport);
  P3.setVisible(mode == kSync);
  clearResults();
}

void frmOutlookSync::changeMode() {
  const auto mode = static_cast<Mode>(Combo1.index());
  const ModeTexts& texts = kModes.at(static_cast<std::size_t>(mode));
  Label1.setText(texts.sentence);
  showPanel(mode);
  Image2.setImage(mode + 1);
  StatusBar1.setText(texts.status);
  Command2.setEnabled(!isDone(mode));
  greyGroup();
}

void frmOutlookSync::chooseOption(Mode mode) {
  showPanel(mode);
  for (const Mode each : {kImport, kExport, kSync}) optionButton(each).setBold(each == mode);
  Command2.setEnabled(optionButton(mode).tag() != "OK");
  StatusBar1.setText(kModes[static_cast<std::size_t>(mode)].optionStatus);
}

void frmOutlookSync::optionChanged(Mode mode) {
  optionButton(mode).setTag("");
  Command2.setEnabled(true);
}

void frmOutlookSync::pickGroup() {
  WindowResults& results = component_.results();
  results.groupName.clear();
  results.chosen = false;
  frmGroupBox picker(toolkit(), component_);
  if (component_.desk() != nullptr) picker.openAt(text::parseInteger(Text1.tag()).value_or(0));
  picker.showModal();
  if (!results.chosen) return;
  Text1.setText(results.groupName);
  Text1.setTag(std::to_string(results.groupKey));
  component_.selectedGroupParent() = results.groupParent;
  if (component_.desk() == nullptr) return;
  // Without a host there is no other way to name the group of an export.
  const int range = Combo2.index();
  useGroup({.id = std::to_string(results.groupKey),
            .parent = results.groupParent,
            .name = results.groupName});
  Combo2.setIndex(range);
}

void frmOutlookSync::explain(std::string_view text) {
  toolkit().messageBox(MessageIcon::Information, text);
}

void frmOutlookSync::refuse(std::string_view text) {
  toolkit().messageBox(MessageIcon::Exclamation, text);
}

// --- running ------------------------------------------------------------------------------------

void frmOutlookSync::run(Purpose purpose) {
  if (running_) return;
  if (!chadd.isChecked()) {
    refuse("작업 대상을 선택해 주십시오!");
    return;
  }
  running_ = true;
  outcome_ = {};
  previewing_ = purpose == Purpose::Preview;
  conflictsPreviewed_ = 0;
  const bool canStart = Command2.enabled();
  enableModeChoice(false);
  try {
    if (previewing_) component_.beginPreview();
    if (connectContacts()) runRecorded();
  } catch (const std::exception& error) {
    refuse(withCause(kDatabaseFailed, error.what()));
  }
  if (previewing_) {
    component_.endPreview();
    Command2.setEnabled(canStart);
  }
  running_ = false;
  enableModeChoice(true);
  if (closeRequested_) unload();
}

void frmOutlookSync::runRecorded() {
  const std::string objection = component_.beginRunOrObject(description());
  if (!objection.empty()) {
    refuse(objection);
    return;
  }
  pictures_.emplace(component_.temporaryFolder(), Check8.isChecked()
                                                      ? CardPictureAttacher::Showing::Yes
                                                      : CardPictureAttacher::Showing::No);
  const auto failed = [this](const std::string& message, const char* cause) {
    outcome_ = {RunOutcome::Failed, cause};
    refuse(message);
  };
  try {
    runMode();
  } catch (const transfer::RunAborted& error) {
    failed(error.what(), error.what());
  } catch (const outlook::ContactStoreError& error) {
    failed(withCause(kStoreFailed, error.what()), error.what());
  } catch (const std::exception& error) {
    failed(withCause(kDatabaseFailed, error.what()), error.what());
  }
  outcome_.lines.reserve(ListView1.rows().size());
  for (const auto& row : ListView1.rows()) {
    outcome_.lines.push_back({row.cells[0], row.cells[1], row.cells[2]});
  }
  component_.endRun(outcome_);
}

RunDescription frmOutlookSync::description() {
  RunDescription run;
  run.preview = previewing_;
  run.mode = transfer::kModeWords.at(static_cast<std::size_t>(Combo1.index()));
  if (Combo1.index() == kExport) {
    run.range = transfer::kRangeWords.at(static_cast<std::size_t>(Combo2.index()));
    if (Combo2.index() == kGroup) {
      run.range += "(" + exportFolder_.name + (Check3.isChecked() ? "…" : "") + ")";
    }
    run.addsContacts = Export_Check1.isChecked();
  }
  return run;
}

// Another mode would clear the list that the run writes its lines into.
void frmOutlookSync::enableModeChoice(bool enabled) {
  Combo1.setEnabled(enabled);
  for (const Mode mode : {kImport, kExport, kSync}) optionButton(mode).setEnabled(enabled);
  Command8.setEnabled(enabled);
}

bool frmOutlookSync::connectContacts() {
  clearResults();
  const std::size_t row = addResult("아웃룩 연결");
  const bool connected = component_.contacts().connect();
  setResultCell(row, 1, connected ? "100%" : "0%");
  setResultCell(row, 2, connected ? "성공" : "실패");
  if (connected) return true;
  refuse(withCause(kStoreFailed, component_.contacts().connectFailure()));
  clearResults();
  return false;
}

void frmOutlookSync::runMode() {
  component_.contacts().expectOpening();
  switch (Combo1.index()) {
    case kImport:
      runImport();
      break;
    case kExport:
      runExport();
      break;
    default:
      runSync();
  }
}

void frmOutlookSync::runImport() {
  transfer::WorkListLoader(component_.connection(), ListView2, *this).loadAll();
  const transfer::ImportOptions options{
      .addMissing = import_check1.isChecked(),
      .updateExisting = import_check2.isChecked(),
      .testConflicts = import_check3.value() == CheckBox::kCleared,
      .map = mapOptions()};
  transfer::Import transfer(component_.connection(), component_.contacts(), ListView2, AppendList,
                            *this, options, {Text1.tag(), Text1.text()});
  finish(kImport, transfer.runImport());
}

void frmOutlookSync::runSync() {
  const std::string_view outcome =
      transfer::WorkListLoader(component_.connection(), ListView2, *this).loadAll();
  if (isRefused(outcome, "연결할 데이터가 없습니다!")) return;
  transfer::Sync transfer(component_.connection(), component_.contacts(), ListView2, *this, *this,
                          {.showConflicts = Sync_Check2.isChecked(), .map = mapOptions()});
  finish(kSync, transfer.runSync());
}

outlook::MapOptions frmOutlookSync::mapOptions() {
  return {.splitName = Check2.isChecked(),
          .protectFax = ch_faxnosync.isChecked(),
          .pictures = pictures_ ? &*pictures_ : nullptr,
          .pictureFailed = [this](std::string_view name, std::string_view cause) {
            const std::string line = text::say("사진 실패→(%1): ", "Picture failed→(%1): ", {name});
            transfer::addLine(*this, line + std::string(cause), "0%", "실패");
          }};
}

void frmOutlookSync::runExport() {
  const std::string_view outcome = loadForExport();
  if (isRefused(outcome, "내보내기할 데이터가 없습니다!")) return;
  const transfer::ExportOptions options{
      .addMissing = Export_Check1.isChecked(),
      .updateExisting = Export_Check2.isChecked(),
      .testConflicts = Export_Check3.value() == CheckBox::kCleared,
      .map = mapOptions()};
  transfer::Export transfer(component_.connection(), component_.contacts(), ListView2, *this,
                            options);
  finish(kExport, transfer.runExport());
}

std::string_view frmOutlookSync::loadForExport() {
  transfer::WorkListLoader loader(component_.connection(), ListView2, *this);
  const transfer::OpenFolder folder{exportFolder_.id, exportFolder_.name};
  switch (Combo2.index()) {
    case kSelectedCards:
      sList = component_.readSelectedCards();
      return loader.loadSelected(sList);
    case kGroup:
      // Without a folder no loader runs, and the run goes on with the list as it is.
      if (folder.id.empty()) return "";
      return Check3.isChecked() ? loader.loadGroupWithSubgroups(folder) : loader.loadGroup(folder);
    default:
      return loader.loadAll();
  }
}

bool frmOutlookSync::isRefused(std::string_view outcome, std::string_view noDataText) {
  if (outcome == transfer::kOutcomeNoGroup) {
    refuse("아웃룩연결 데이터가 설정되어 있지 않습니다!");
  } else if (outcome == transfer::kOutcomeNoData) {
    refuse(noDataText);
  } else if (outcome == transfer::kOutcomeFailed) {
    refuse(kDatabaseFailed);
  } else {
    return false;
  }
  outcome_.end = RunOutcome::NothingToDo;
  return true;
}

void frmOutlookSync::finish(Mode mode, transfer::RunEnd end) {
  const bool completed = end == transfer::RunEnd::Completed;
  outcome_ = {completed ? RunOutcome::Completed : RunOutcome::Stopped,
              ListView1.rows().back().cells[1]};
  if (!completed || previewing_) return;
  done_[static_cast<std::size_t>(mode)] = -1;
  optionButton(mode).setTag("OK");
  Command2.setEnabled(false);
}

// --- conflicts of a two-way sync ----------------------------------------------------------------

int frmOutlookSync::resolve(const transfer::ConflictPair& pair) {
  // A fresh window each time, so that no edit survives from one conflict to the next. If a user
  // would have to answer, a preview only lists what the run would ask about.
  if (previewing_ && toolkit().hasUser()) return transfer::kSkipPair;
  RunWindow& messages = *this;
  conflictWindow_ =
      std::make_unique<frmOutlookSyncModify>(toolkit(), component_, messages, mapOptions());
  const int outcome = conflictWindow_->open(pair);
  if (!conflictWindow_->isLoaded()) conflictWindow_.reset();
  return outcome;
}

bool frmOutlookSync::saveCardSide(const transfer::ConflictPair& pair) {
  const auto window = std::move(conflictWindow_);  // unloaded after the save, whatever comes of it
  return window->saveCardSide(pair);
}

bool frmOutlookSync::saveOutlookSide(const transfer::ConflictPair& pair) {
  const auto window = std::move(conflictWindow_);
  return window->saveOutlookSide(pair);
}

// --- what the engines see -----------------------------------------------------------------------

std::size_t frmOutlookSync::addResult(std::string_view text) {
  return ListView1.addRow(text);
}

void frmOutlookSync::setResultCell(std::size_t row, std::size_t column, std::string_view text) {
  ListView1.setCell(row, column, text);
  constexpr std::size_t kState = 2;  // with it the line is final, and what it stands for is done
  if (previewing_ && column == kState) addChanges();
}

void frmOutlookSync::failure(std::string_view text, std::string_view cause) {
  message(MessageIcon::Critical, component_.desk() != nullptr ? withCause(text, cause) : text);
}

// In a real run, the compare window shows the conflict.
void frmOutlookSync::conflictFound(std::string_view rowId, outlook::Contact& contact) {
  if (!previewing_) return;
  ++conflictsPreviewed_;
  conflict_ = transfer::differingFields(*store::readCard(component_.connection(), rowId), contact);
}

void frmOutlookSync::addChanges() {
  const auto add = [this](std::string_view caption, std::string_view values, std::string_view side,
                          std::string_view state) {
    const std::size_t row =
        ListView1.addRow("  " + std::string(caption) + ": " + std::string(values));
    ListView1.setCell(row, 1, side);
    ListView1.setCell(row, 2, state);
  };
  for (const transfer::ComparedField& field : std::exchange(conflict_, {})) {
    add(outlook::fieldCaption(field.column),
        transfer::shownValue(field.card) + " ↔ " + transfer::shownValue(field.contact),
        text::say("양쪽", "both"), text::say("충돌", "≠"));
  }
  for (const FieldChange& change : component_.takeChanges()) {
    add(change.caption,
        transfer::shownValue(change.before) + " → " + transfer::shownValue(change.after),
        change.onCard ? text::say("명함", "card") : text::say("연락처", "contact"),
        text::say("변경", "edit"));
  }
}

void frmOutlookSync::selectResult(std::size_t row) {
  ListView1.select(row);
}

void frmOutlookSync::clearResults() {
  ListView1.clear();
  resultCards_.clear();
}

void frmOutlookSync::resultIsOf(std::size_t row, std::string_view card) {
  if (component_.desk() != nullptr) resultCards_.emplace(row, card);
}

// The lines of the fields belong to the record before them.
void frmOutlookSync::showPair(std::size_t line) {
  auto record = resultCards_.upper_bound(line);
  const bool isField = ListView1.cell(line, 0).starts_with("  ");
  if (running_ || record == resultCards_.begin()) return;
  --record;
  if (!isField && record->first != line) return;
  try {
    frmPair(toolkit(), component_).open(record->second);
  } catch (const std::exception& error) {
    refuse(error.what());
  }
}

void frmOutlookSync::showProgress(bool visible) {
  ProgressBar1.setVisible(visible);
}

void frmOutlookSync::setProgress(int percent) {
  ProgressBar1.setValue(percent);
}

void frmOutlookSync::enableRunButton(bool enabled) {
  Command2.setEnabled(enabled);
}

void frmOutlookSync::message(MessageIcon icon, std::string_view text) {
  if (!previewing_ || icon != MessageIcon::Information) {
    toolkit().messageBox(icon, text);
    return;
  }
  std::string closing = text::say("\r\n미리보기입니다. 아무것도 바꾸지 않았습니다.",
                                  "\r\nThis was a preview. Nothing has been changed.");
  // Import and export count them in the text itself.
  if (Combo1.index() == kSync && conflictsPreviewed_ != 0) {
    closing += text::say(" 충돌 %1건.", " Conflicts: %1.", {std::to_string(conflictsPreviewed_)});
  }
  toolkit().messageBox(icon, withCause(text, closing));
}

bool frmOutlookSync::yield() {
  pumpWait(toolkit(), 1);
  return closeRequested_;
}

}  // namespace vlout::ui
