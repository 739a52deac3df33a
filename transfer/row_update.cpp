#include "transfer/row_update.h"

#include <string>
#include <vector>

#include "outlook/pairing.h"
#include "store/sql.h"
#include "text/trim.h"
#include "transfer/change_detection.h"

namespace vlout::transfer {
namespace {

using outlook::FieldRule;
using outlook::MappedField;

std::string updateStatement(std::string_view rowId, const std::vector<std::string>& texts,
                            text::DateTime contactTime) {
  std::string sql = "UPDATE tbl_namecard SET ";
  const auto fields = outlook::mappedFields();
  for (std::size_t i = 0; i < fields.size(); ++i) {
    sql.append("[").append(fields[i].column).append("]=");
    sql.append(outlook::fieldSqlValue(fields[i], texts[i])).append(",");
  }
  const std::string stamp = store::sqlLiteral(text::formatStamp(contactTime));
  sql.append("[OutlookSync]=").append("1,");
  sql.append("[Last_moddate]=").append(stamp).append(",[Outlook_modate]=").append(stamp);
  sql.append(",[VLLastsync_date]=").append(stamp);
  return sql.append(" WHERE [i_idx]=").append(rowId);
}

}  // namespace

bool RowUpdate::updateRowFromContact(std::string_view rowId, outlook::Contact& contact) {
  FieldTexts texts;
  for (const MappedField& field : outlook::mappedFields()) {
    texts.push_back(outlook::fieldTextFromContact(contact, field));
  }
  return saveBoth(rowId, contact, texts);
}

bool RowUpdate::mergeForImport(std::string_view rowId, outlook::Contact& contact,
                               const outlook::MapOptions& options) {
  const auto row = store::readCard(connection_, rowId);
  const std::string name(text::trim(store::nullSafe(row->field("FullName"))));
  const PairState state =
      classifyPair(readStamps(*row), contact.lastModificationTime(), ConflictTest::Off);
  const bool contactWins = state.newer == Side::Contact;

  FieldTexts merged;
  for (const MappedField& field : outlook::mappedFields()) {
    const std::string ofRow = outlook::fieldTextFromRow(*row, field);
    const std::string ofContact = outlook::fieldTextFromContact(contact, field);
    const bool takeContact = ofRow.empty() || (!ofContact.empty() && contactWins);
    merged.push_back(takeContact ? ofContact : ofRow);
    const bool faxStays = field.rule == FieldRule::Fax && options.protectFax;
    if (merged.back() == ofContact || faxStays) continue;
    // The result goes back to where the contact's value came from; export's detour for the home
    // postal code would overwrite the other address's here.
    MappedField target = field;
    target.writeTo = field.readFrom;
    outlook::writeFieldToContact(contact, target, merged.back());
  }
  const bool saved = saveBoth(rowId, contact, merged);
  window_.selectResult(addLine(window_, "↔갱신(" + name + ")", "100%", "완료"));
  return saved;
}

bool RowUpdate::saveBoth(std::string_view rowId, outlook::Contact& contact,
                         const FieldTexts& texts) {
  outlook::addVLID(contact, rowId);
  contact.save();
  try {
    connection_.execute(updateStatement(rowId, texts, contact.lastModificationTime()));
  } catch (const store::DatabaseError& error) {
    window_.message(MessageIcon::None, std::string("저장오류!\r\n") + error.what());
    return false;
  }
  return true;
}

}  // namespace vlout::transfer
