// Import: brings the contacts of the folder into the name-card table. A contact with a row updates
// it, is merged with it, or is reported as a conflict; contacts without a row are added at the end.
// The run button of the main window calls it with the work list of all cards loaded.
#pragma once

#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "outlook/field_map.h"
#include "transfer/row_update.h"
#include "transfer/transfer.h"

namespace vlout::transfer {

// The boxes of the main window that affect an import.
struct ImportOptions {
  bool addMissing = true;      // "벨모라에 없는 연락처 가져오기"
  bool updateExisting = true;  // "동일인은 최근 변경된 정보만 갱신"
  bool testConflicts = false;  // "충돌무시" is cleared
  outlook::MapOptions map;
};

class Import : private Transfer {
 public:
  // `pending` is the window's list of contacts without a row, by their positions in the folder.
  Import(store::Connection& connection, outlook::ContactStore& contacts, WorkList& list,
         std::vector<std::size_t>& pending, RunWindow& window, const ImportOptions& options,
         TargetFolder target)
      : Transfer(connection, contacts, list, window),
        pending_(pending),
        options_(options),
        target_(std::move(target)),
        rowUpdate_(connection, window) {}

  // Runs every phase to the end; import cannot be stopped. A contact that fails is reported and
  // passed over. Throws ContactStoreError or DatabaseError when the folder or the database is lost
  // as a whole.
  RunEnd runImport();

 private:
  enum class Compared { Nothing, Updated, Conflict };

  void compareContact(outlook::Contact& contact, std::size_t position);
  void collectContact(outlook::Contact& contact, std::size_t position);
  void mergeInto(const std::string& rowId, outlook::Contact& contact);
  // The row of the contact's person, in the list or anywhere among the cards. A row that already
  // has a contact is found too, so that this can be reported.
  struct FoundRow {
    std::string id;
    bool taken;
  };
  [[nodiscard]] std::optional<FoundRow> findRowOfPerson(outlook::Contact& contact);
  [[nodiscard]] Compared compareForImport(const std::string& rowId, outlook::Contact& contact);

  // The id of the same person's row anywhere among the cards, or nothing.
  [[nodiscard]] std::optional<std::string> findDuplicateByName(const Person& person);
  [[nodiscard]] std::optional<std::string> findDuplicate(outlook::Contact& contact);

  void addLater(outlook::Contact& contact, std::size_t position);
  void addPhase();
  void addContactAsRow(std::size_t position);
  void giveBackKey(outlook::Contact& contact, const std::string& key, const std::string& rowId);
  [[nodiscard]] std::string nextFreeId();
  [[nodiscard]] bool releaseNumber(const std::string& number);

  std::vector<std::size_t>& pending_;
  std::unordered_map<std::size_t, std::string> pendingNames_;
  ImportOptions options_;
  TargetFolder target_;
  RowUpdate rowUpdate_;
  // The numbers that contacts carry and will keep. No new row gets one of them.
  std::unordered_set<std::string> keptNumbers_;
  // The contacts still to be renumbered, by the number that they carry.
  std::unordered_multimap<std::string, std::size_t> waiting_;
  int added_ = 0;
  int updated_ = 0;
  int conflicts_ = 0;
};

}  // namespace vlout::transfer
