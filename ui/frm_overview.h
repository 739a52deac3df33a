// The overview: what is linked with what, the runs so far, the way back, and which cards and
// contacts the component works on. The main window opens it if the component has a desk
// (ui/desk.h). Only an undo that the user has confirmed writes anything.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "transfer/survey.h"
#include "ui/component.h"
#include "ui/controls.h"
#include "ui/desk.h"
#include "ui/form.h"

namespace vlout::ui {

class frmOverview : public Form {
 public:
  frmOverview(Toolkit& toolkit, Component& component, Desk& desk);

  void keyPress(int characterCode) override;
  void requestClose() override;
  [[nodiscard]] Layout layout() override;

  Label Label1, Label2, Label3;  // the component folder; "연락처:"; what the list shows
  ComboBox Combo1;               // the places of contacts
  ListView ListView1;
  Button Command1, Command2, Command3, Command4, Command5, Command6;

 protected:
  void load() override;

 private:
  // Runs what the user asked for, and shows its failure.
  void guarded(const std::function<void()>& act);
  void showSurvey();
  void showRuns();
  void showRun(int run);
  void goBack();
  void showPair(std::size_t line);
  void chooseCards();
  void chooseContacts();
  void chooseContactFolder();
  void fillPlaces();
  void leaveFor(const std::filesystem::path& folder, const std::filesystem::path& contacts);
  std::size_t addLine(std::string_view text, std::string_view value, std::string_view state);
  [[nodiscard]] int chosenRun() const;
  void clearList(std::string_view heading);

  Component& component_;
  Desk& desk_;
  std::vector<Desk::Place> places_;
  std::vector<int> runs_;                     // the run of each line, while runs are listed
  std::vector<transfer::Surveyed> surveyed_;  // what each line is about, while the survey is listed
  bool busy_ = false;
  bool closeRequested_ = false;
};

}  // namespace vlout::ui
