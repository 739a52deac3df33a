// Two-way sync: brings each paired row and contact into step in whichever direction has changed,
// and asks the user about every pair that changed on both sides. It creates neither rows nor
// contacts. The run button of the main window calls it with the work list of all cards loaded.
#pragma once

#include "outlook/field_map.h"
#include "transfer/change_detection.h"
#include "transfer/conflict_dialog.h"
#include "transfer/row_update.h"
#include "transfer/transfer.h"

namespace vlout::transfer {

// The boxes of the main window that affect a sync.
struct SyncOptions {
  bool showConflicts = true;  // "충돌 데이터가 있으면 직접 보여주고 갱신(권장)"
  outlook::MapOptions map;
};

class Sync : private Transfer {
 public:
  Sync(store::Connection& connection, outlook::ContactStore& contacts, WorkList& list,
       RunWindow& window, ConflictDialog& conflicts, const SyncOptions& options)
      : Transfer(connection, contacts, list, window),
        conflicts_(conflicts),
        options_(options),
        rowUpdate_(connection, window) {}

  // Each pair is written and stamped before the next one is looked at, so that a stop leaves whole
  // pairs. A pair that fails is reported and passed over. Throws ContactStoreError or DatabaseError
  // when the folder or the database is lost as a whole.
  RunEnd runSync();

 private:
  void syncContact(outlook::Contact& contact, std::size_t position);
  void transfer(Side newer, const std::string& rowId, outlook::Contact& contact,
                const std::string& name);
  void settle(const ConflictPair& pair, Side newer, const std::string& name);
  void toOutlook(bool done, const std::string& rowId, const std::string& name);
  void toCards(bool done, const std::string& rowId, const std::string& name);
  void close(RunEnd end);

  ConflictDialog& conflicts_;
  SyncOptions options_;
  RowUpdate rowUpdate_;
  int cardsUpdated_ = 0;
  int contactsUpdated_ = 0;
};

}  // namespace vlout::transfer
