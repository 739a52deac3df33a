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

}  // namespace vlout::ui
