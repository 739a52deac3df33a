// Export: sends the cards of the work list to the contacts folder. Contacts that have a card are
// compared and updated, cards without a contact are added, and conflicts are only reported. The run
// button of the main window calls it with the work list loaded.
#pragma once

#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "outlook/contact_store.h"
#include "outlook/field_map.h"
#include "store/connection.h"
#include "transfer/row_update.h"
#include "transfer/run_window.h"
#include "transfer/transfer.h"

namespace vlout::transfer {

// The boxes of the main window that affect an export.
struct ExportOptions {
  bool addMissing = true;      // "아웃룩에 없는 연락처 보내기"
  bool updateExisting = true;  // "동일인은 최근 변경된 정보만 갱신"
  bool testConflicts = false;  // "충돌무시" is cleared
  outlook::MapOptions map;
};

class Export : private Transfer {
 public:
  Export(store::Connection& connection, outlook::ContactStore& contacts, WorkList& list,
         RunWindow& window, const ExportOptions& options)
      : Transfer(connection, contacts, list, window),
        options_(options),
        rowUpdate_(connection, window) {}

  // Runs both phases; each record is written and stamped before the next one is looked at, except
  // for new contacts that the folder saves together: their rows follow them in the same order. A
  // record that fails is reported and passed over. Throws ContactStoreError or DatabaseError when
  // the folder or the database is lost as a whole.
  RunEnd runExport();

 private:
  // The row of the work list that a contact belongs to, and how they were paired.
  struct Pair {
    WorkList::Position position;
    bool byKey;  // compared by its dates; a pair by person alone is merged
  };

  RunEnd comparePhase();
  RunEnd addPhase();

  [[nodiscard]] std::optional<Pair> findRow(outlook::Contact& contact, std::size_t position);
  [[nodiscard]] std::optional<Pair> findRowByPerson(outlook::Contact& contact, bool keyed);
  void reserveRowsOf(std::size_t position);
  void compareOrMerge(outlook::Contact& contact, std::size_t position);
  void compare(const std::string& rowId, outlook::Contact& contact);
  // A row that is being added as a new contact.
  struct Addition {
    const WorkListRow& row;
    std::string name{};
    std::unique_ptr<outlook::Contact> contact{};
    std::string pictureFailure{};
    std::exception_ptr failure{};
  };
  [[nodiscard]] Addition beginAdding(const WorkListRow& row);
  void writeNew(Addition& addition);
  void finishAdding(std::vector<Addition>& additions);
  void finishAdding(const Addition& addition);

  ExportOptions options_;
  RowUpdate rowUpdate_;
  bool hidesContacts_ = false;  // a contact that may be any card's could not be read
  int added_ = 0;
  int updated_ = 0;
  int conflicts_ = 0;
};

}  // namespace vlout::transfer
