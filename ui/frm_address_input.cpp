#include "ui/frm_address_input.h"

namespace vlout::ui {

frmAddressInput::frmAddressInput(Toolkit& toolkit, Component& component)
    : Form(toolkit), component_(component) {
  caption = "주소편집";
  width = 5200;
  height = 3200;
  Label1.setText("국가:");
  Label2.setText("시/도:");
  Label3.setText("시/군/구:");
  Label4.setText("주소:");
  Label5.setText("사서함:");
  Command1.setText("확인");
  Command2.setText("취소");
  // Hiding ends the modal call and leaves the fields readable.
  Command1.clicked = [this] {
    component_.results().chosen = true;
    hide();
  };
  Command2.clicked = [this] { unload(); };
}

void frmAddressInput::keyPress(int characterCode) {
  if (characterCode == kEscape) unload();
}

Layout frmAddressInput::layout() {
  using namespace layout;
  return column({grid(2, {label("Label1", Label1), control("Juso1", Juso1).stretched(1).wide(36),
                          label("Label2", Label2), control("Juso2", Juso2), label("Label3", Label3),
                          control("Juso3", Juso3), label("Label4", Label4), control("Juso4", Juso4),
                          label("Label5", Label5), control("Juso5", Juso5)}),
                 space(),
                 row({space(), defaultButton("Command1", Command1).wide(10).keyed('O'),
                      control("Command2", Command2).wide(10).keyed('C')})});
}

}  // namespace vlout::ui
