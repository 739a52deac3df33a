#include "transfer/row_update.h"

#include <algorithm>
#include <array>

#include "outlook/pairing.h"
#include "store/sql.h"
#include "text/language.h"
#include "text/trim.h"
#include "transfer/change_detection.h"
#include "transfer/row_stamps.h"

namespace vlout::transfer {
namespace {

using outlook::Contact;
using outlook::FieldRule;
using outlook::MappedField;

constexpr std::string_view kImportFailed = "저장오류!";
constexpr std::string_view kSyncFailed = "Update 저장실패!";
constexpr std::string_view kTypedFailed = "벨모라 저장실패!";
// Marks a row as created from or paired with a contact.
constexpr std::string_view kImportMark = "[OutlookSync]=1,";

std::vector<std::optional<std::string>> fieldTexts(Contact& contact) {
  std::vector<std::optional<std::string>> texts;
  for (const MappedField& field : outlook::mappedFields()) {
    texts.push_back(outlook::fieldTextFromContact(contact, field));
  }
  return texts;
}

std::string updateStatement(std::string_view rowId,
                            const std::vector<std::optional<std::string>>& texts,
                            std::string_view mark, text::DateTime contactTime) {
  std::string sql = "UPDATE tbl_namecard SET ";
  const auto fields = outlook::mappedFields();
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (!texts[i]) continue;
    sql.append("[").append(fields[i].column).append("]=");
    sql.append(outlook::fieldSqlValue(fields[i], *texts[i])).append(",");
  }
  sql.append(mark).append(stampClause(contactTime));
  return sql.append(" WHERE [i_idx]=").append(rowId);
}

// A deliberate oddity: the texts are used as they were typed, and quotes make the save fail. A
// quote must not do anything else either, such as end a text early and set another column or begin
// a second statement, so a statement with a quote is not even tried.
std::string typedStatement(std::string_view rowId, const std::vector<std::string>& texts) {
  std::string sql = "UPDATE tbl_namecard SET ";
  const auto fields = outlook::mappedFields();
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (texts[i].find('\'') != std::string::npos) {
      throw store::DatabaseError(text::say("작은따옴표가 들어 있습니다: %1",
                                           "has a single quote: %1", {fields[i].column}));
    }
    sql.append("[").append(fields[i].column).append("]=");
    if (fields[i].rule == FieldRule::Date && texts[i].empty()) {
      sql += "null,";
    } else {
      const bool company = fields[i].rule == FieldRule::Company;
      sql.append("'").append(company ? outlook::withCompanyMark(texts[i]) : texts[i]).append("' ,");
    }
  }
  // The blank before each comma is the statement's own and stays.
  sql += stampClause(text::localNow(), " ,");
  return sql.append(" WHERE [i_idx]=").append(rowId);
}

// The columns of a new row in the order of the statement. `Categories` is not among them.
constexpr auto kInsertColumns = std::to_array<std::string_view>(
    {"FullName",       "i_idx",          "f_idx",        "folder_name",    "p_idx",
     "CompanyName",    "Department",     "JobTitle",     "home_phone",     "cellphone",
     "company_phone1", "company_phone2", "company_fax1", "home_fax",       "etc_fax",
     "email",          "email2",         "Webpage",      "Webpage2",       "Memo_",
     "Birthday",       "Anniversary",    "Gender",       "company_addr",   "company_zipcode",
     "etc_addr",       "etc_zipcode",    "home_addr",    "home_zipcode",   "CreationTime",
     "LifePartner",    "OutlookSync",    "Last_moddate", "Outlook_modate", "VLLastsync_date"});

// The value of a column that the contact or its folder gives; empty for the number and the dates.
std::string insertValue(std::string_view column, Contact& contact, const TargetFolder& target) {
  if (column == "FullName") return store::sqlLiteral(outlook::rowNameFromContact(contact));
  if (column == "f_idx") return target.id;
  if (column == "folder_name") return store::sqlLiteral(target.name);
  if (column == "p_idx") return "0";
  if (column == "CreationTime") return store::sqlLiteral(text::formatDay(text::localNow()));
  if (column == "OutlookSync") return "1";
  for (const MappedField& field : outlook::mappedFields()) {
    if (field.column != column) continue;
    // A new row has no value that could be lost.
    return outlook::fieldSqlValue(field,
                                  outlook::fieldTextFromContact(contact, field).value_or(""));
  }
  return "";
}

std::string insertStatement(std::string_view rowId, const RowUpdate::NewRow& row,
                            text::DateTime contactTime) {
  const std::string stamp = store::sqlLiteral(text::formatStamp(contactTime));
  std::string columns;
  std::string values;
  for (std::size_t i = 0; i < row.size(); ++i) {
    if (i > 0) {
      columns += ",";
      values += ",";
    }
    columns += kInsertColumns[i];
    const bool isStamp = std::find(kStampColumns.begin(), kStampColumns.end(), kInsertColumns[i]) !=
                         kStampColumns.end();
    values += isStamp ? std::string_view(stamp) : kInsertColumns[i] == "i_idx" ? rowId : row[i];
  }
  return "INSERT INTO tbl_namecard(" + columns + ") VALUES(" + values + ")";
}

}  // namespace

bool RowUpdate::updateRowFromContact(std::string_view rowId, Contact& contact) {
  return saveRow(rowId, contact, fieldTexts(contact), kImportMark, kImportFailed);
}

bool RowUpdate::updateRowForSync(std::string_view rowId, Contact& contact) {
  return saveRow(rowId, contact, fieldTexts(contact), "", kSyncFailed);
}

bool RowUpdate::updateContactFromRow(std::string_view rowId, Contact& contact,
                                     const outlook::MapOptions& options) {
  const auto row = store::readCard(connection_, rowId);
  if (row->rowCount() == 0) return false;
  outlook::writeContactFromRow(contact, *row, outlook::ContactWrite::UpdateKeepingName, options);
  return stampRow(connection_, contact.lastModificationTime(), rowId);
}

bool RowUpdate::updateRowFromTexts(std::string_view rowId, Contact& contact,
                                   const FieldTexts& texts, const outlook::MapOptions& options) {
  std::string oldDates;
  try {
    oldDates = restoreStatement(*store::readCard(connection_, rowId), rowId);
    connection_.execute(typedStatement(rowId, texts));
  } catch (const store::DatabaseError& error) {
    window_.failure(kTypedFailed, error.what());
    return false;
  }
  try {
    return updateContactFromRow(rowId, contact, options);
  } catch (...) {
    // With the present dates, the next sync would take the row for the newer side and overwrite the
    // contact without asking.
    connection_.execute(oldDates);
    throw;
  }
}

bool RowUpdate::mergeForImport(std::string_view rowId, Contact& contact,
                               const outlook::MapOptions& options) {
  const auto row = store::readCard(connection_, rowId);
  const std::string name(text::trim(store::nullSafe(row->field("FullName"))));
  const PairState state =
      classifyPair(readStamps(*row), contact.lastModificationTime(), ConflictTest::Off);
  const bool contactWins = state.newer == Side::Contact;

  KnownTexts merged;
  for (const MappedField& field : outlook::mappedFields()) {
    const std::string ofRow = outlook::fieldTextFromRow(*row, field);
    const auto ofContact = outlook::fieldTextFromContact(contact, field);
    if (!ofContact) {
      merged.emplace_back();  // either side keeps its own
      continue;
    }
    const bool takeContact = ofRow.empty() || (!ofContact->empty() && contactWins);
    merged.emplace_back(takeContact ? *ofContact : ofRow);
    const bool faxStays = field.rule == FieldRule::Fax && options.protectFax;
    // A company's mark is one sign in both texts, but may not be on the contact.
    const bool isThere = merged.back() == ofContact && field.rule != FieldRule::Company;
    if (isThere || faxStays) continue;
    // The result goes back to where the contact's value came from; export's detour for the home
    // postal code would overwrite the other address's here.
    MappedField target = field;
    target.writeTo = field.readFrom;
    outlook::writeFieldToContact(contact, target, *merged.back());
  }
  const bool saved = saveRow(rowId, contact, merged, kImportMark, kImportFailed);
  window_.selectResult(addLine(window_, "↔갱신(" + name + ")", "100%", "완료", rowId));
  return saved;
}

RowUpdate::NewRow RowUpdate::readNewRow(Contact& contact, const TargetFolder& target) {
  NewRow row;
  for (const std::string_view column : kInsertColumns) {
    row.push_back(insertValue(column, contact, target));
  }
  connection_.requireShortEnough(insertStatement("32767", row, {}));
  return row;
}

void RowUpdate::insertRow(std::string_view rowId, const NewRow& row, text::DateTime contactTime) {
  connection_.execute(insertStatement(rowId, row, contactTime));
}

bool RowUpdate::saveRow(std::string_view rowId, Contact& contact, const KnownTexts& texts,
                        std::string_view mark, std::string_view failure) {
  try {
    connection_.requireShortEnough(updateStatement(rowId, texts, mark, {}));
    outlook::addVLID(contact, rowId);
    contact.save();
    connection_.execute(updateStatement(rowId, texts, mark, contact.lastModificationTime()));
  } catch (const store::DatabaseError& error) {
    window_.message(MessageIcon::None, std::string(failure).append("\r\n").append(error.what()));
    return false;
  }
  return true;
}

}  // namespace vlout::transfer
