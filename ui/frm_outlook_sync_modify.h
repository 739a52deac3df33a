// The compare window. If a row and its contact have both changed, it shows them side by side, lets
// the user edit either, and ends with an outcome that tells two-way sync what to do. It writes
// nothing on its own; sync calls one of the two saves while the hidden window still holds the
// texts.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "outlook/field_map.h"
#include "transfer/conflict_dialog.h"
#include "transfer/pair_sides.h"
#include "transfer/row_update.h"
#include "ui/component.h"
#include "ui/controls.h"
#include "ui/form.h"

namespace vlout::ui {

class frmOutlookSyncModify : public Form {
 public:
  frmOutlookSyncModify(Toolkit& toolkit, Component& component, transfer::RunWindow& window,
                       const outlook::MapOptions& options);

  // Fills both sides, marks what differs, and shows the window until the user has decided. Returns
  // the outcome. After "keep" outcomes the window is hidden but still loaded.
  int open(const transfer::ConflictPair& pair);

  // Writes the card side's texts to the row, then the row to the contact. False if that fails; the
  // user is told.
  bool saveCardSide(const transfer::ConflictPair& pair);
  // Writes the Outlook side's texts to the contact, then the contact to the row.
  bool saveOutlookSide(const transfer::ConflictPair& pair);

  void keyPress(int characterCode) override;
  [[nodiscard]] Layout layout() override;

  // The two columns of fields. Their numbers are irregular; a table in the implementation says
  // which belong together.
  TextBox Text1, Text2, Text3, Text4, Text5, Text6, Text7, Text8, Text9, Text10, Text11, Text12,
      Text13, Text14, Text15, Text16, Text17, Text18, Text19, Text20, Text21, Text22, Text23,
      Text24, Text25, Text26, Text27, Text28, Text29, Text30, Text31, Text32, Text33, Text34,
      Text35, Text36, Text37, Text38, Text39, Text40, Text41, Text42, Text43, Text44, Text45,
      Text46, Text47, Text48, Text49, Text50, Text51, Text52, Text53, Text54;

  // The parts of the six addresses.
  TextBox VL_Company_Juso1, VL_Company_Juso2, VL_Company_Juso3, VL_Company_Juso4, VL_Company_Juso5;
  TextBox VL_Etc_Juso1, VL_Etc_Juso2, VL_Etc_Juso3, VL_Etc_Juso4, VL_Etc_Juso5;
  TextBox VL_Home_Juso1, VL_Home_Juso2, VL_Home_Juso3, VL_Home_Juso4, VL_Home_Juso5;
  TextBox Ol_Company_Juso1, Ol_Company_Juso2, Ol_Company_Juso3, Ol_Company_Juso4, Ol_Company_Juso5;
  TextBox OL_etc_Juso1, OL_etc_Juso2, OL_etc_Juso3, OL_etc_Juso4, OL_etc_Juso5;
  TextBox OL_Home_Juso1, OL_Home_Juso2, OL_Home_Juso3, OL_Home_Juso4, OL_Home_Juso5;

  CheckBox Check1;
  ColouredLabel Label31;
  Label Label29, Label30, Label32;
  Button Command1, Command2, Command3, Command4, Command5, Command6, Command7, Command8;
  Button Command9, Command10, Command11, Command12, Command13, Command14;

 protected:
  void load() override { centreOnScreen(); }

 private:
  using Box = TextBox frmOutlookSyncModify::*;
  struct FieldBoxes;
  struct AddressBlock;
  struct NamedBox;
  static const std::array<FieldBoxes, 27> kFields;
  static const std::array<AddressBlock, 6> kAddresses;
  static const std::array<NamedBox, 54> kBoxes;

  void connectEvents();
  [[nodiscard]] Layout fieldsLayout(std::size_t first, std::size_t last,
                                    bool (*isShown)(std::string_view column));
  [[nodiscard]] Layout boxLayout(Box box);
  void fillCardSide(const std::string& rowId);
  void fillOutlookSide(outlook::Contact& contact);
  void fillParts(const AddressBlock& block, const transfer::AddressTexts& parts);
  void markDifferences();
  void lock(bool locked);
  void permitEditing();
  void keepCardSide();
  void keepOutlookSide();
  [[nodiscard]] bool isDateBoxWrong(const TextBox& box, const TextBox& examined,
                                    std::string_view message);
  void leave(transfer::ConflictOutcome outcome);
  void editAddress(const AddressBlock& block);
  void composeAddress(const AddressBlock& block);
  void chooseCategories();
  [[nodiscard]] std::string lineOf(const AddressBlock& block);
  void writeAddress(outlook::Contact& contact, const AddressBlock& block);

  Component& component_;
  outlook::MapOptions options_;
  transfer::RowUpdate rowUpdate_;
};

}  // namespace vlout::ui
