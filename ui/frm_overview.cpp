#include "ui/frm_overview.h"

#include <exception>

#include "outlook/field_map.h"
#include "text/file_path.h"
#include "text/language.h"
#include "transfer/work_list_loader.h"
#include "ui/frm_pair.h"
#include "ui/look.h"

namespace vlout::ui {
namespace {

using transfer::Standing;

}  // namespace

frmOverview::frmOverview(Toolkit& toolkit, Component& component, Desk& desk)
    : Form(toolkit), component_(component), desk_(desk) {
  caption = text::say("현황과 기록", "Overview and history");
  width = 12000;
  height = 7800;
  Label2.setText(text::say("연락처:", "Contacts:"));
  Command1.setText(text::say("현황", "Overview"));
  Command2.setText(text::say("기록", "History"));
  Command3.setText(text::say("되돌리기", "Undo"));
  Command4.setText(text::say("닫기", "Close"));
  Command5.setText(text::say("다른 명함 폴더", "Other card folder"));
  Command6.setText(text::say("다른 연락처 폴더", "Other contact folder"));
  Command1.clicked = [this] { guarded([this] { showSurvey(); }); };
  Command2.clicked = [this] { guarded([this] { showRuns(); }); };
  Command3.clicked = [this] { guarded([this] { goBack(); }); };
  Command4.clicked = [this] { requestClose(); };
  Command5.clicked = [this] { guarded([this] { chooseCards(); }); };
  Command6.clicked = [this] { guarded([this] { chooseContactFolder(); }); };
  Combo1.clicked = [this] { guarded([this] { chooseContacts(); }); };
  ListView1.activated = [this](std::size_t line) {
    guarded([this, line] { line < runs_.size() ? showRun(runs_[line]) : showPair(line); });
  };
}

Layout frmOverview::layout() {
  using namespace layout;
  return column(
      {row({label("Label1", Label1).wide(30).stretched(1),
            control("Command5", Command5).keyed('O')}),
       row({label("Label2", Label2).keyed('A'), control("Combo1", Combo1).wide(40).stretched(1),
            control("Command6", Command6).keyed('F')}),
       label("Label3", Label3).wide(30), control("ListView1", ListView1).high(16).stretched(1),
       row({control("Command1", Command1).wide(10).keyed('S'),
            control("Command2", Command2).wide(10).keyed('H'),
            control("Command3", Command3).wide(10).keyed('U'), space(),
            control("Command4", Command4).wide(10).keyed('C')})});
}

void frmOverview::load() {
  centreOnScreen();
  if (ListView1.columns().empty()) {
    ListView1.addColumn(text::say("내용", "What"), 1700);
    ListView1.addColumn(text::say("상태", "State"), 2700);
    ListView1.addColumn(text::say("비고", "Remark"), 1800);
  }
  Label1.setText(text::say("명함: %1", "Cards: %1", {text::pathText(desk_.folder())}));
  fillPlaces();
  guarded([this] { showSurvey(); });
}

void frmOverview::fillPlaces() {
  places_ = desk_.places();
  Combo1.clear();
  for (const Desk::Place& place : places_) Combo1.addItem(place.caption);
  Combo1.setIndex(0);
}

void frmOverview::keyPress(int characterCode) {
  if (characterCode == kEscape) requestClose();
}

void frmOverview::requestClose() {
  if (busy_) {
    closeRequested_ = true;
  } else {
    unload();
  }
}

void frmOverview::guarded(const std::function<void()>& act) {
  if (busy_) return;
  busy_ = true;
  try {
    act();
  } catch (const std::exception& error) {
    toolkit().messageBox(MessageIcon::Exclamation, error.what());
  }
  busy_ = false;
  if (closeRequested_) unload();
}

// --- the list -----------------------------------------------------------------------------------

std::size_t frmOverview::addLine(std::string_view text, std::string_view value,
                                 std::string_view state) {
  const std::size_t line = ListView1.addRow(text);
  ListView1.setCell(line, 1, value);
  ListView1.setCell(line, 2, state);
  return line;
}

void frmOverview::clearList(std::string_view heading) {
  ListView1.clear();
  runs_.clear();
  surveyed_.clear();
  Label3.setText(heading);
}

void frmOverview::showSurvey() {
  clearList(text::say(
      "현황: 상호갱신이 무엇을 할지 보여 줍니다. 줄을 두 번 누르면 명함과 연락처를 나란히 봅니다.",
      "Overview: what a sync would do. Double-click a line to see card and contact side by side."));
  const Look look(component_);
  if (const auto objection = desk_.objection(); !objection.empty()) {
    throw outlook::ContactStoreError(objection);
  }
  if (!component_.contacts().connect()) {
    throw outlook::ContactStoreError(component_.contacts().connectFailure());
  }
  transfer::SurveyWindow window(
      [this](std::string_view line, std::string_view state) {
        addLine(line, "", state);
        surveyed_.resize(ListView1.rows().size());
      },
      [this] {
        toolkit().pumpAtOnce();
        return closeRequested_;
      });
  transfer::WorkList list;
  transfer::WorkListLoader(component_.connection(), list, window).loadAll();
  transfer::Survey survey(component_.connection(), component_.contacts(), list, window);
  if (survey.run() != transfer::RunEnd::Completed) return;
  for (std::size_t i = 0; i < transfer::kStandings; ++i) {
    const auto standing = static_cast<Standing>(i);
    const auto& found = survey.of(standing);
    addLine(text::say(wordsOf(standing).caption), std::to_string(found.size()), "");
    surveyed_.resize(ListView1.rows().size());
    if (standing == Standing::InStep) continue;
    for (const transfer::Surveyed& each : found) {
      addLine("  " + each.person,
              each.card.empty() ? "" : text::say("명함 %1", "card %1", {each.card}),
              each.contact == each.person ? "" : each.contact);
      surveyed_.push_back(each);
      for (const auto& field : each.differences) {
        addLine("    " + std::string(outlook::fieldCaption(field.column)) + ": " +
                    transfer::shownValue(field.card) + " ↔ " + transfer::shownValue(field.contact),
                "", "");
        surveyed_.push_back(each);
      }
    }
  }
}

void frmOverview::showPair(std::size_t line) {
  if (line >= surveyed_.size()) return;
  const transfer::Surveyed& pair = surveyed_[line];
  if (pair.card.empty() && pair.position == 0) return;
  frmPair(toolkit(), component_).open(pair.card, pair.position, pair.contact);
}

void frmOverview::showRuns() {
  clearList(text::say(
      "기록: 줄을 두 번 누르면 그 작업이 바꾼 값을 봅니다. 되돌리기는 고른 작업과 그 뒤의 작업을 "
      "되돌립니다.",
      "History: double-click a line to see what the run changed. Undo takes back the chosen run "
      "and all later ones."));
  for (const PastRun& run : desk_.runs()) {
    addLine(run.what, run.outcome, run.wayBack);
    runs_.push_back(run.number);
  }
}

void frmOverview::showRun(int run) {
  const auto details = desk_.detailsOf(run);
  clearList(text::say("작업 %1: 보여 준 줄, 그리고 바꾼 값입니다.",
                      "Run %1: the lines it showed, and the values it changed.",
                      {std::to_string(run)}));
  for (const Desk::RunDetail& detail : details) {
    addLine(detail.what, detail.who, detail.how);
    runs_.push_back(run);
  }
}

int frmOverview::chosenRun() const {
  const int line = ListView1.selected();
  const bool isRun = line >= 0 && static_cast<std::size_t>(line) < runs_.size();
  return isRun ? runs_[static_cast<std::size_t>(line)] : 0;
}

void frmOverview::goBack() {
  const int run = chosenRun();
  component_.releaseContacts();  // the way back has to have them to itself
  const auto plan = desk_.planUndo(run);
  clearList(plan->heading());
  for (const UndoPlan::Line& line : plan->lines()) addLine(line.what, line.how, "");
  const auto edits = plan->edits();
  for (const std::string& edit : edits)
    addLine(edit, text::say("사라짐", "will be lost"), text::say("그 뒤에 바뀜", "changed since"));
  std::string question = plan->heading();
  if (!edits.empty()) {
    question +=
        text::say("\r\n그 뒤에 바뀐 것 %1건이 사라집니다.",
                  "\r\n%1 changes made since will be lost.", {std::to_string(edits.size())});
  }
  if (!toolkit().ask(question + "\r\n" + text::say("되돌릴까요?", "Undo?"))) return;
  plan->perform();
  toolkit().messageBox(MessageIcon::Information, text::say("되돌렸습니다.", "Undone."));
}

// --- other cards and contacts -------------------------------------------------------------------

void frmOverview::leaveFor(const std::filesystem::path& folder,
                           const std::filesystem::path& contacts) {
  desk_.moveTo(folder, contacts);
  closeRequested_ = true;
}

void frmOverview::chooseCards() {
  const auto folder =
      toolkit().chooseFolder(text::say("명함 폴더", "Folder of cards"), desk_.folder());
  if (!folder.empty()) leaveFor(folder, {});
}

void frmOverview::chooseContactFolder() {
  const auto folder =
      toolkit().chooseFolder(text::say("연락처 폴더", "Folder of contacts"), desk_.folder());
  if (!folder.empty()) leaveFor(desk_.folder(), folder);
}

void frmOverview::chooseContacts() {
  const auto chosen = static_cast<std::size_t>(Combo1.index());
  if (chosen == 0 || chosen >= places_.size()) return;
  leaveFor(desk_.folder(), places_[chosen].place);
}

}  // namespace vlout::ui
