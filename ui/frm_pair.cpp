#include "ui/frm_pair.h"

#include "outlook/field_map.h"
#include "outlook/pairing.h"
#include "store/sql.h"
#include "text/ascii.h"
#include "text/language.h"
#include "transfer/pair_sides.h"
#include "ui/look.h"

namespace vlout::ui {

frmPair::frmPair(Toolkit& toolkit, Component& component) : Form(toolkit), component_(component) {
  caption = text::say("명함과 연락처", "Card and contact");
  width = 12000;
  height = 7800;
  Command1.setText(text::say("닫기", "Close"));
  Command1.clicked = [this] { unload(); };
  ListView1.addColumn(text::say("항목", "Field"), 1300);
  ListView1.addColumn(text::say("명함", "Card"), 4600);
  ListView1.addColumn(text::say("연락처", "Contact"), 4600);
  ListView1.addColumn(text::say("비고", "Remark"), 800);
}

Layout frmPair::layout() {
  using namespace layout;
  return column({label("Label1", Label1).keyed('L'),
                 control("ListView1", ListView1).high(16).stretched(1),
                 row({space(), control("Command1", Command1).wide(10).keyed('C')})});
}

void frmPair::load() {
  centreOnScreen();
}

void frmPair::keyPress(int characterCode) {
  if (characterCode == kEscape) unload();
}

void frmPair::open(const std::string& card, std::size_t position, const std::string& name) {
  fill(card, position, name);
  showModal();
}

void frmPair::fill(const std::string& card, std::size_t position, const std::string& name) {
  const Look look(component_);
  const bool hasCard = text::parseInteger(card) && store::cardExists(component_.connection(), card);
  const auto row = hasCard ? store::readCard(component_.connection(), card) : nullptr;
  const auto contact = contactOf(card, position, name);
  Label1.setText(
      (row ? text::say("명함 %1", "Card %1", {card}) : text::say("명함 없음", "No card")) + " · " +
      (contact ? outlook::joinedName(*contact) : text::say("연락처 없음", "no contact")));
  for (const auto& field : transfer::compareSides(row.get(), contact.get())) {
    const std::size_t line = ListView1.addRow(outlook::fieldCaption(field.column));
    ListView1.setCell(line, 1, transfer::shownValue(field.card));
    ListView1.setCell(line, 2, transfer::shownValue(field.contact));
    ListView1.setCell(line, 3,
                      row && contact && field.differs() ? text::say("다름", "differs") : "");
  }
}

// Null if there is none. The folder is read again, and may have changed since it was listed.
std::unique_ptr<outlook::Contact> frmPair::contactOf(const std::string& card, std::size_t position,
                                                     const std::string& name) {
  outlook::ContactStore& contacts = component_.contacts();
  if (!contacts.connect()) throw outlook::ContactStoreError(contacts.connectFailure());
  contacts.openContactsFolder();
  if (position == 0) {
    for (std::size_t i = 1; i <= contacts.count(); ++i) {
      if (!card.empty() && contacts.keyWhenOpened(i) == card) return contacts.item(i);
    }
    return nullptr;
  }
  auto contact = position <= contacts.count() ? contacts.item(position) : nullptr;
  if (contact && outlook::joinedName(*contact) == name) return contact;
  throw outlook::ContactStoreError(
      text::say("그 사이에 연락처가 바뀌었습니다. 현황을 다시 보십시오.",
                "The contact has changed in the meantime. Look at the overview again."));
}

}  // namespace vlout::ui
