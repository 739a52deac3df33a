#include "ui/frm_outlook_sync_modify.h"

#include <algorithm>
#include <exception>
#include <memory>

#include "outlook/pairing.h"
#include "store/sql.h"
#include "text/ascii.h"
#include "text/date_time.h"
#include "ui/frm_address_input.h"

namespace vlout::ui {
namespace {

using P = outlook::ContactProperty;
using outlook::MappedField;

constexpr std::string_view kDateForm = "\r\n형식: 2006/12/25 or 2006-09-25";

const MappedField& fieldOf(std::string_view column) {
  for (const MappedField& field : outlook::mappedFields()) {
    if (field.column == column) return field;
  }
  throw std::logic_error("no such field: " + std::string(column));
}

// True for fields that half the width of the window is often too narrow for.
bool isLong(std::string_view column) {
  return column.starts_with("email") || column.ends_with("_addr") || column == "Memo_";
}

std::string shownTime(const std::optional<text::DateTime>& time) {
  if (!time) return "수정일:";
  return "수정일:" + text::replaceAll(text::formatStamp(*time), "/", "-");
}

}  // namespace

struct frmOutlookSyncModify::FieldBoxes {
  std::string_view column;
  Box card;
  Box outlook;
};

struct frmOutlookSyncModify::AddressBlock {
  std::array<Box, 5> parts;
  Box line;
  std::string_view buttonName;
  Button frmOutlookSyncModify::*button;
  std::string_view columns;  // the prefix of the row's columns; empty on the Outlook side
  P street;                  // says which of the contact's addresses it is
};

struct frmOutlookSyncModify::NamedBox {
  std::string_view name;
  Box box;
};

const std::array<frmOutlookSyncModify::FieldBoxes, 27> frmOutlookSyncModify::kFields{{
    {"FullName", &frmOutlookSyncModify::Text1, &frmOutlookSyncModify::Text50},
    {"Gender", &frmOutlookSyncModify::Text52, &frmOutlookSyncModify::Text51},
    {"CompanyName", &frmOutlookSyncModify::Text2, &frmOutlookSyncModify::Text49},
    {"Department", &frmOutlookSyncModify::Text3, &frmOutlookSyncModify::Text48},
    {"JobTitle", &frmOutlookSyncModify::Text4, &frmOutlookSyncModify::Text47},
    {"cellphone", &frmOutlookSyncModify::Text5, &frmOutlookSyncModify::Text46},
    {"email", &frmOutlookSyncModify::Text6, &frmOutlookSyncModify::Text45},
    {"email2", &frmOutlookSyncModify::Text9, &frmOutlookSyncModify::Text44},
    {"company_phone1", &frmOutlookSyncModify::Text10, &frmOutlookSyncModify::Text43},
    {"company_phone2", &frmOutlookSyncModify::Text11, &frmOutlookSyncModify::Text42},
    {"home_phone", &frmOutlookSyncModify::Text12, &frmOutlookSyncModify::Text41},
    {"company_fax1", &frmOutlookSyncModify::Text7, &frmOutlookSyncModify::Text40},
    {"etc_fax", &frmOutlookSyncModify::Text8, &frmOutlookSyncModify::Text39},
    {"home_fax", &frmOutlookSyncModify::Text13, &frmOutlookSyncModify::Text38},
    {"company_addr", &frmOutlookSyncModify::Text14, &frmOutlookSyncModify::Text37},
    {"company_zipcode", &frmOutlookSyncModify::Text15, &frmOutlookSyncModify::Text36},
    {"etc_addr", &frmOutlookSyncModify::Text16, &frmOutlookSyncModify::Text35},
    {"etc_zipcode", &frmOutlookSyncModify::Text17, &frmOutlookSyncModify::Text34},
    {"home_addr", &frmOutlookSyncModify::Text18, &frmOutlookSyncModify::Text33},
    {"home_zipcode", &frmOutlookSyncModify::Text19, &frmOutlookSyncModify::Text32},
    {"Webpage", &frmOutlookSyncModify::Text20, &frmOutlookSyncModify::Text31},
    {"Webpage2", &frmOutlookSyncModify::Text21, &frmOutlookSyncModify::Text30},
    {"Birthday", &frmOutlookSyncModify::Text22, &frmOutlookSyncModify::Text29},
    {"LifePartner", &frmOutlookSyncModify::Text23, &frmOutlookSyncModify::Text28},
    {"Anniversary", &frmOutlookSyncModify::Text24, &frmOutlookSyncModify::Text27},
    {"Categories", &frmOutlookSyncModify::Text54, &frmOutlookSyncModify::Text53},
    {"Memo_", &frmOutlookSyncModify::Text25, &frmOutlookSyncModify::Text26},
}};

const std::array<frmOutlookSyncModify::AddressBlock, 6> frmOutlookSyncModify::kAddresses{{
    {{&frmOutlookSyncModify::VL_Company_Juso1, &frmOutlookSyncModify::VL_Company_Juso2,
      &frmOutlookSyncModify::VL_Company_Juso3, &frmOutlookSyncModify::VL_Company_Juso4,
      &frmOutlookSyncModify::VL_Company_Juso5},
     &frmOutlookSyncModify::Text14,
     "Command9",
     &frmOutlookSyncModify::Command9,
     "company",
     P::BusinessAddressStreet},
    {{&frmOutlookSyncModify::VL_Etc_Juso1, &frmOutlookSyncModify::VL_Etc_Juso2,
      &frmOutlookSyncModify::VL_Etc_Juso3, &frmOutlookSyncModify::VL_Etc_Juso4,
      &frmOutlookSyncModify::VL_Etc_Juso5},
     &frmOutlookSyncModify::Text16,
     "Command10",
     &frmOutlookSyncModify::Command10,
     "etc",
     P::OtherAddressStreet},
    {{&frmOutlookSyncModify::VL_Home_Juso1, &frmOutlookSyncModify::VL_Home_Juso2,
      &frmOutlookSyncModify::VL_Home_Juso3, &frmOutlookSyncModify::VL_Home_Juso4,
      &frmOutlookSyncModify::VL_Home_Juso5},
     &frmOutlookSyncModify::Text18,
     "Command11",
     &frmOutlookSyncModify::Command11,
     "home",
     P::HomeAddressStreet},
    {{&frmOutlookSyncModify::Ol_Company_Juso1, &frmOutlookSyncModify::Ol_Company_Juso2,
      &frmOutlookSyncModify::Ol_Company_Juso3, &frmOutlookSyncModify::Ol_Company_Juso4,
      &frmOutlookSyncModify::Ol_Company_Juso5},
     &frmOutlookSyncModify::Text37,
     "Command12",
     &frmOutlookSyncModify::Command12,
     "",
     P::BusinessAddressStreet},
    {{&frmOutlookSyncModify::OL_etc_Juso1, &frmOutlookSyncModify::OL_etc_Juso2,
      &frmOutlookSyncModify::OL_etc_Juso3, &frmOutlookSyncModify::OL_etc_Juso4,
      &frmOutlookSyncModify::OL_etc_Juso5},
     &frmOutlookSyncModify::Text35,
     "Command13",
     &frmOutlookSyncModify::Command13,
     "",
     P::OtherAddressStreet},
    {{&frmOutlookSyncModify::OL_Home_Juso1, &frmOutlookSyncModify::OL_Home_Juso2,
      &frmOutlookSyncModify::OL_Home_Juso3, &frmOutlookSyncModify::OL_Home_Juso4,
      &frmOutlookSyncModify::OL_Home_Juso5},
     &frmOutlookSyncModify::Text33,
     "Command14",
     &frmOutlookSyncModify::Command14,
     "",
     P::HomeAddressStreet},
}};

const std::array<frmOutlookSyncModify::NamedBox, 54> frmOutlookSyncModify::kBoxes{{
    {"Text1", &frmOutlookSyncModify::Text1},   {"Text2", &frmOutlookSyncModify::Text2},
    {"Text3", &frmOutlookSyncModify::Text3},   {"Text4", &frmOutlookSyncModify::Text4},
    {"Text5", &frmOutlookSyncModify::Text5},   {"Text6", &frmOutlookSyncModify::Text6},
    {"Text7", &frmOutlookSyncModify::Text7},   {"Text8", &frmOutlookSyncModify::Text8},
    {"Text9", &frmOutlookSyncModify::Text9},   {"Text10", &frmOutlookSyncModify::Text10},
    {"Text11", &frmOutlookSyncModify::Text11}, {"Text12", &frmOutlookSyncModify::Text12},
    {"Text13", &frmOutlookSyncModify::Text13}, {"Text14", &frmOutlookSyncModify::Text14},
    {"Text15", &frmOutlookSyncModify::Text15}, {"Text16", &frmOutlookSyncModify::Text16},
    {"Text17", &frmOutlookSyncModify::Text17}, {"Text18", &frmOutlookSyncModify::Text18},
    {"Text19", &frmOutlookSyncModify::Text19}, {"Text20", &frmOutlookSyncModify::Text20},
    {"Text21", &frmOutlookSyncModify::Text21}, {"Text22", &frmOutlookSyncModify::Text22},
    {"Text23", &frmOutlookSyncModify::Text23}, {"Text24", &frmOutlookSyncModify::Text24},
    {"Text25", &frmOutlookSyncModify::Text25}, {"Text26", &frmOutlookSyncModify::Text26},
    {"Text27", &frmOutlookSyncModify::Text27}, {"Text28", &frmOutlookSyncModify::Text28},
    {"Text29", &frmOutlookSyncModify::Text29}, {"Text30", &frmOutlookSyncModify::Text30},
    {"Text31", &frmOutlookSyncModify::Text31}, {"Text32", &frmOutlookSyncModify::Text32},
    {"Text33", &frmOutlookSyncModify::Text33}, {"Text34", &frmOutlookSyncModify::Text34},
    {"Text35", &frmOutlookSyncModify::Text35}, {"Text36", &frmOutlookSyncModify::Text36},
    {"Text37", &frmOutlookSyncModify::Text37}, {"Text38", &frmOutlookSyncModify::Text38},
    {"Text39", &frmOutlookSyncModify::Text39}, {"Text40", &frmOutlookSyncModify::Text40},
    {"Text41", &frmOutlookSyncModify::Text41}, {"Text42", &frmOutlookSyncModify::Text42},
    {"Text43", &frmOutlookSyncModify::Text43}, {"Text44", &frmOutlookSyncModify::Text44},
    {"Text45", &frmOutlookSyncModify::Text45}, {"Text46", &frmOutlookSyncModify::Text46},
    {"Text47", &frmOutlookSyncModify::Text47}, {"Text48", &frmOutlookSyncModify::Text48},
    {"Text49", &frmOutlookSyncModify::Text49}, {"Text50", &frmOutlookSyncModify::Text50},
    {"Text51", &frmOutlookSyncModify::Text51}, {"Text52", &frmOutlookSyncModify::Text52},
    {"Text53", &frmOutlookSyncModify::Text53}, {"Text54", &frmOutlookSyncModify::Text54},
}};

frmOutlookSyncModify::frmOutlookSyncModify(Toolkit& toolkit, Component& component,
                                           transfer::RunWindow& window,
                                           const outlook::MapOptions& options)
    : Form(toolkit),
      component_(component),
      options_(options),
      rowUpdate_(component.connection(), window) {
  caption = "충돌 비교/편집";
  width = 15000;
  height = 8000;
  Check1.setText("수정허용");
  Command1.setText("벨모라 정보로 갱신");
  Command2.setText("아웃룩 정보로 갱신");
  Command3.setText("최근 정보로 갱신");
  Command4.setText("제외");
  Command5.setText("범주");
  Command6.setText("중지");
  Command8.setText("충돌 데이터란?");
  for (const AddressBlock& block : kAddresses) (this->*block.button).setText("주소편집");
  connectEvents();
}

// --- arrangement --------------------------------------------------------------------------------

// A box, and the button beside it that edits its address or chooses its categories.
Layout frmOutlookSyncModify::boxLayout(Box box) {
  using namespace layout;
  const auto* const named = std::find_if(kBoxes.begin(), kBoxes.end(),
                                         [&](const NamedBox& each) { return each.box == box; });
  Layout part = control(named->name, this->*box).wide(18).stretched(1);
  for (const AddressBlock& block : kAddresses) {
    if (block.line != box) continue;
    return row({std::move(part), control(block.buttonName, this->*block.button)}).stretched(1);
  }
  if (box != &frmOutlookSyncModify::Text53) return part;
  return row({std::move(part), control("Command5", Command5).keyed('G')}).stretched(1);
}

Layout frmOutlookSyncModify::fieldsLayout(std::size_t first, std::size_t last,
                                          bool (*isShown)(std::string_view column)) {
  using namespace layout;
  constexpr int kMemoLines = 3;
  Parts parts{fixed(""), fixed("벨모라"), fixed("아웃룩")};
  for (std::size_t i = first; i < last; ++i) {
    const std::string_view column = kFields[i].column;
    if (!isShown(column)) continue;
    const int lines = column == "Memo_" && toolkit().hasParagraphs() ? kMemoLines : 0;
    parts.push_back(fixed(outlook::fieldCaption(column)));
    parts.push_back(boxLayout(kFields[i].card).high(lines));
    parts.push_back(boxLayout(kFields[i].outlook).high(lines));
  }
  return grid(3, std::move(parts));
}

Layout frmOutlookSyncModify::layout() {
  using namespace layout;
  constexpr std::size_t kFirstAddress = 14;
  Parts parts{row({fixed("벨모라"), label("Label29", Label29), label("Label32", Label32),
                   fixed("아웃룩"), label("Label30", Label30), space()})};
  const auto beside = [&](int left, int right, bool (*isShown)(std::string_view)) {
    const auto part = [&](std::size_t first, std::size_t last) {
      return column({fieldsLayout(first, last, isShown), space()});
    };
    return row({part(0, kFirstAddress).stretched(left), fixed("  "),
                part(kFirstAddress, kFields.size()).stretched(right)});
  };
  if (toolkit().hasParagraphs()) {
    parts.push_back(beside(1, 1, [](std::string_view column) { return !isLong(column); }));
    parts.push_back(fieldsLayout(0, kFields.size(), isLong).stretched(1));
  } else {
    parts.push_back(beside(2, 3, [](std::string_view) { return true; }).stretched(1));
  }
  parts.push_back(row(
      {control("Check1", Check1).keyed('E'), control("Label31", Label31),
       control("Command1", Command1).keyed('V'), control("Command2", Command2).keyed('O'), space(),
       control("Command8", Command8).keyed('F'), control("Command3", Command3).keyed('N'),
       control("Command4", Command4).wide(8).keyed('X'),
       control("Command6", Command6).wide(8).keyed('S')}));
  return column(std::move(parts));
}

void frmOutlookSyncModify::connectEvents() {
  Check1.clicked = [this] { permitEditing(); };
  Command1.clicked = [this] { keepCardSide(); };
  Command2.clicked = [this] { keepOutlookSide(); };
  Command3.clicked = [this] { leave(transfer::kTakeNewerSide); };
  Command4.clicked = [this] { leave(transfer::kSkipPair); };
  Command5.clicked = [this] { chooseCategories(); };
  Command6.clicked = [this] { leave(transfer::kStopRun); };
  Command8.clicked = [this] {
    toolkit().messageBox(
        MessageIcon::Information,
        "→충돌←\r\n상호갱신 이후에 양쪽(벨모라과 아웃룩) 모두에서 정보를 수정했을 경우 "
        "충돌자료로 구분합니다.기준자료가 부정확함으로 자료를 직접 비교 후 갱신하는 것을 "
        "권장합니다.");
  };
  for (const AddressBlock& block : kAddresses) {
    (this->*block.button).clicked = [this, &block] { editAddress(block); };
  }
}

// --- opening ------------------------------------------------------------------------------------

int frmOutlookSyncModify::open(const transfer::ConflictPair& pair) {
  component_.results().conflictOutcome = transfer::kSkipPair;
  const bool contactLater = std::optional(pair.contactTime) > pair.rowTime;
  Label32.setText(contactLater ? "▶▶▶▶▶" : "◀◀◀◀◀");
  Label29.setText(shownTime(pair.rowTime));
  Label30.setText(shownTime(pair.contactTime));
  for (const auto& [name, box] : kBoxes) {
    (this->*box).setText("");
    (this->*box).setForeColour(Colour::Black);
  }
  fillCardSide(pair.rowId);
  fillOutlookSide(pair.contact);
  markDifferences();
  Check1.setValue(CheckBox::kCleared);
  permitEditing();
  showModal();
  return component_.results().conflictOutcome;
}

void frmOutlookSyncModify::fillCardSide(const std::string& rowId) {
  const auto row = store::readCard(component_.connection(), rowId);
  for (const FieldBoxes& field : kFields) {
    (this->*field.card).setText(transfer::cardSideText(*row, field.column));
  }
  for (const AddressBlock& block : kAddresses) {
    if (!block.columns.empty()) fillParts(block, transfer::cardAddress(*row, block.columns));
  }
}

void frmOutlookSyncModify::fillOutlookSide(outlook::Contact& contact) {
  for (const FieldBoxes& field : kFields) {
    (this->*field.outlook).setText(transfer::outlookSideText(contact, field.column));
  }
  for (const AddressBlock& block : kAddresses) {
    if (block.columns.empty()) fillParts(block, transfer::outlookAddress(contact, block.street));
  }
}

void frmOutlookSyncModify::fillParts(const AddressBlock& block,
                                     const transfer::AddressTexts& parts) {
  for (std::size_t i = 0; i < parts.size(); ++i) (this->*block.parts[i]).setText(parts[i]);
}

std::string frmOutlookSyncModify::lineOf(const AddressBlock& block) {
  transfer::AddressTexts parts;
  for (std::size_t i = 0; i < parts.size(); ++i) parts[i] = (this->*block.parts[i]).text();
  return block.columns.empty() ? transfer::outlookAddressLine(parts)
                               : transfer::cardAddressLine(parts);
}

void frmOutlookSyncModify::composeAddress(const AddressBlock& block) {
  (this->*block.line).setText(lineOf(block));
}

void frmOutlookSyncModify::markDifferences() {
  for (const FieldBoxes& field : kFields) {
    TextBox& card = this->*field.card;
    TextBox& outlook = this->*field.outlook;
    const bool differ = transfer::sidesDiffer(field.column, card.text(), outlook.text());
    const Colour colour = differ ? Colour::LightRed : Colour::Black;
    card.setForeColour(colour);
    outlook.setForeColour(colour);
  }
}

void frmOutlookSyncModify::lock(bool locked) {
  for (const auto& [name, box] : kBoxes) {
    (this->*box).setLocked(locked);
    (this->*box).setBackColour(locked ? Colour::ButtonFace : Colour::White);
  }
}

void frmOutlookSyncModify::permitEditing() {
  const bool permitted = Check1.isChecked();
  Command1.setVisible(permitted);
  Command2.setVisible(permitted);
  lock(!permitted);
  Label31.setText(permitted ? "수정가능" : "수정불가");
  Label31.setForeColour(permitted ? Colour::Black : Colour::LightRed);
}

// --- deciding -----------------------------------------------------------------------------------

void frmOutlookSyncModify::leave(transfer::ConflictOutcome outcome) {
  component_.results().conflictOutcome = static_cast<std::int16_t>(outcome);
  const bool keep = outcome == transfer::kKeepCardSide || outcome == transfer::kKeepOutlookSide;
  if (keep) {
    hide();  // the save still needs the texts
  } else {
    unload();
  }
}

bool frmOutlookSyncModify::isDateBoxWrong(const TextBox& box, const TextBox& examined,
                                          std::string_view message) {
  if (box.text().empty() || text::parseDateTime(examined.text())) return false;
  toolkit().messageBox(MessageIcon::Exclamation, std::string(message).append(kDateForm));
  return true;
}

void frmOutlookSyncModify::keepCardSide() {
  if (Text1.text().empty()) {
    toolkit().messageBox(MessageIcon::Exclamation, "이름은 공백일수 없습니다!");
    return;
  }
  if (isDateBoxWrong(Text22, Text22, "생년월일 날짜형식이 부적당합니다.")) return;
  // The anniversary's test examines the birthday, on purpose: here an anniversary needs one.
  if (isDateBoxWrong(Text24, Text22, "기념일 날짜형식이 부적당합니다.")) return;
  leave(transfer::kKeepCardSide);
}

void frmOutlookSyncModify::keepOutlookSide() {
  if (Text50.text().empty()) {
    toolkit().messageBox(MessageIcon::Exclamation, "이름은 공백일수 없습니다!");
    return;
  }
  if (isDateBoxWrong(Text29, Text29, "생년월일 날짜형식이 부적당합니다.")) return;
  if (isDateBoxWrong(Text27, Text27, "기념일 날짜형식이 부적당합니다.")) return;
  leave(transfer::kKeepOutlookSide);
}

void frmOutlookSyncModify::keyPress(int characterCode) {
  if (characterCode == kEscape) requestClose();
}

void frmOutlookSyncModify::editAddress(const AddressBlock& block) {
  if (!Check1.isChecked()) return;
  component_.results().chosen = false;
  frmAddressInput dialog(toolkit(), component_);
  const std::array<TextBox*, 5> fields{&dialog.Juso1, &dialog.Juso2, &dialog.Juso3, &dialog.Juso4,
                                       &dialog.Juso5};
  for (std::size_t i = 0; i < fields.size(); ++i) {
    fields[i]->setText((this->*block.parts[i]).text());
  }
  dialog.showModal();
  if (component_.results().chosen) {
    for (std::size_t i = 0; i < fields.size(); ++i) {
      (this->*block.parts[i]).setText(fields[i]->text());
    }
    composeAddress(block);
  }
  dialog.unload();
}

void frmOutlookSyncModify::chooseCategories() {
  try {
    const std::string chosen = component_.contacts().chooseCategories();
    if (!chosen.empty()) Text53.setText(chosen);
  } catch (const std::exception&) {
    // Whatever failed, the message is that the store has no such dialog.
    toolkit().messageBox(MessageIcon::Exclamation, "현재 설치된 아웃룩버전은 지원하지 않습니다!");
  }
}

// --- saving -------------------------------------------------------------------------------------

bool frmOutlookSyncModify::saveCardSide(const transfer::ConflictPair& pair) {
  transfer::RowUpdate::FieldTexts texts;
  for (const MappedField& mapped : outlook::mappedFields()) {
    const auto* const boxes =
        std::find_if(kFields.begin(), kFields.end(),
                     [&](const FieldBoxes& b) { return b.column == mapped.column; });
    texts.push_back((this->*boxes->card).text());
  }
  return rowUpdate_.updateRowFromTexts(pair.rowId, pair.contact, texts, options_);
}

bool frmOutlookSyncModify::saveOutlookSide(const transfer::ConflictPair& pair) {
  outlook::Contact& contact = pair.contact;
  for (const FieldBoxes& field : kFields) {
    const std::string& value = (this->*field.outlook).text();
    if (field.column == "FullName") {
      // Written back unchanged, the name would be split again, and not always as its owner has
      // split it.
      if (value != outlook::shownText(contact, P::FullName)) contact.setText(P::FullName, value);
      continue;
    }
    MappedField target = fieldOf(field.column);
    target.writeTo = target.readFrom;  // each box goes back to the property that filled it
    if (target.rule != outlook::FieldRule::Address) {
      outlook::writeFieldToContact(contact, target, value);
    }
  }
  for (const AddressBlock& block : kAddresses) {
    if (block.columns.empty()) writeAddress(contact, block);
  }
  return rowUpdate_.updateRowForSync(pair.rowId, contact);
}

// The parts as they are or, if the user has edited the line itself, the line as the street.
void frmOutlookSyncModify::writeAddress(outlook::Contact& contact, const AddressBlock& block) {
  const std::string& line = (this->*block.line).text();
  const bool edited = line != lineOf(block);
  const auto properties = outlook::addressProperties(block.street).parts();
  for (std::size_t i = 0; i < block.parts.size(); ++i) {
    const std::string part = edited ? "" : (this->*block.parts[i]).text();
    contact.setText(properties[i], edited && properties[i] == block.street ? line : part);
  }
}

}  // namespace vlout::ui
