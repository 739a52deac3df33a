// "주소편집": one postal address in five fields. The compare window fills the fields, shows the
// dialog, and takes the fields back if the chosen flag says that the user confirmed.
#pragma once

#include "ui/component.h"
#include "ui/controls.h"
#include "ui/form.h"

namespace vlout::ui {

class frmAddressInput : public Form {
 public:
  frmAddressInput(Toolkit& toolkit, Component& component);

  void keyPress(int characterCode) override;
  [[nodiscard]] Layout layout() override;

  TextBox Juso1, Juso2, Juso3, Juso4, Juso5;
  Label Label1, Label2, Label3, Label4, Label5;
  Button Command1, Command2;

 protected:
  void load() override { centreOnScreen(); }

 private:
  Component& component_;
};

}  // namespace vlout::ui
