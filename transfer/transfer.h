// What the three transfers share: the walk over the contacts folder, in which the failure of one
// record never ends the run, and the lines that report what is wrong with a record.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "outlook/contact_store.h"
#include "store/connection.h"
#include "transfer/change_detection.h"
#include "transfer/run_window.h"
#include "transfer/work_list.h"

namespace vlout::transfer {

class Transfer {
 protected:
  Transfer(store::Connection& connection, outlook::ContactStore& contacts, WorkList& list,
           RunWindow& window)
      : connection_(connection), contacts_(contacts), list_(list), window_(window) {}

  // The counts of an import or export, as its last line and message show them.
  struct Counts {
    int added;
    int updated;
    int conflicts;

    [[nodiscard]] std::string text() const;
  };
  struct ClosingTexts {
    std::string_view line;
    std::string_view message;
    std::string_view conflictsFound;
  };

  // The last line of a completed run and its message.
  void finishRun(const ClosingTexts& texts, const Counts& counts);
  void hideProgress();
  // What the closing message says about records that failed.
  [[nodiscard]] std::string failuresText() const;

  // Makes what was saved permanent, and reports saves that were lost after all.
  void flushContacts();

  enum class Stopping { Possible, Impossible };

  // Takes a row out of the work list at the end of its scope: whatever happened to the pair, the
  // row has its contact and must not get a second one.
  class PairedRow {
   public:
    PairedRow(WorkList& list, WorkList::Position position) : list_(list), position_(position) {}
    ~PairedRow() {
      if (!kept_) list_.remove(position_);
    }
    void keep() { kept_ = true; }
    PairedRow(const PairedRow&) = delete;
    PairedRow& operator=(const PairedRow&) = delete;

   private:
    WorkList& list_;
    WorkList::Position position_;
    bool kept_ = false;
  };

  // Opens the folder and reserves each listed row for the contact that carries its key; if several
  // do, for one of them. The work list must be loaded.
  void openFolder();
  // Reports what in the folder could not be read as a contact.
  void reportFolderNotices();

  // Calls `step(contact, position)` for every contact of the folder, passing over other items.
  // Shows progress in `heading`, or only in the progress bar if there is none. Ends early if the
  // user asks for it and the transfer can be stopped, or if a step has set `stopped_`. The row of a
  // contact that fails leaves the work list.
  template <typename Step>
  RunEnd forEachContact(PhaseLine* heading, Stopping stopping, Step step);

  // Runs one record's step. A failure is reported under `record_` (or, if the step has not set it,
  // under what `name` gives) and passed over, unless the database is gone: that ends the run. False
  // if it failed.
  template <typename Name, typename Step>
  bool guarded(Name name, Step step);

  [[nodiscard]] static Person personOf(outlook::Contact& contact);
  // True if both have the same name, in either order of its parts.
  [[nodiscard]] static bool hasNameOf(const WorkListRow& row, outlook::Contact& contact);
  [[nodiscard]] static RowStamps stampsOf(const WorkListRow& row);
  // The row of that person, by the normalised name, family name first or given name first.
  [[nodiscard]] std::optional<PersonMatch::Choice> findByPerson(outlook::Contact& contact) const;

  // Compares a card's row with its contact. If `writing` is the newer side, the row is read by
  // itself and whole; if not, it may hold the dates alone.
  struct ComparedPair {
    std::unique_ptr<store::Recordset> row;
    PairState state;
  };
  [[nodiscard]] ComparedPair comparePair(const std::string& rowId, outlook::Contact& contact,
                                         ConflictTest test, Side writing);

  // The name under which a contact's failure is reported.
  [[nodiscard]] std::string nameOfRecord(std::size_t position);

  // True for a copy of a contact: another contact of the folder has a better claim to its key. It
  // takes no part in the run.
  [[nodiscard]] bool isDouble(std::size_t position) const { return doubles_.contains(position); }
  // True for the only readable contact with the row's key if an item that could not be opened may
  // have a better claim, because this one has neither the row's name nor the time of its last
  // transfer.
  [[nodiscard]] bool mayBeCopy(const WorkListRow& row, outlook::Contact& contact,
                               std::size_t position);
  void reportDouble(outlook::Contact& contact);
  // Reports a contact without a key whose card already has a contact.
  void reportSecondContact(outlook::Contact& contact, std::string_view rowId);
  // Reports a `VLID` that is not a number.
  void reportUnusableKey(outlook::Contact& contact, std::string_view key);
  void reportFailure(std::string_view name, std::string_view cause);

  store::Connection& connection_;
  outlook::ContactStore& contacts_;
  WorkList& list_;
  RunWindow& window_;
  bool stopped_ = false;
  int failures_ = 0;
  std::string record_;  // the name of the record that a step is at, for its failure

 private:
  // A contact that carries the key of a listed row.
  struct Carrier {
    WorkList::Position row;
    std::size_t contact;
  };

  void leaveOutDoubles(std::span<const Carrier> carriers);
  [[nodiscard]] std::optional<std::size_t> ownerOf(const WorkListRow& row,
                                                   std::span<const Carrier> carriers);
  void removeRowOf(std::size_t position);

  // Positions of contacts that share a key with others, and of the one that has it.
  std::unordered_set<std::size_t> doubles_;
  std::unordered_set<std::size_t> owners_;
};

template <typename Name, typename Step>
bool Transfer::guarded(Name name, Step step) {
  record_.clear();
  try {
    step();
    return true;
  } catch (const RunAborted&) {
    throw;
  } catch (const std::exception& error) {
    if (!connection_.isOpen()) throw;
    reportFailure(record_.empty() ? name() : record_, error.what());
    return false;
  }
}

template <typename Step>
RunEnd Transfer::forEachContact(PhaseLine* heading, Stopping stopping, Step step) {
  struct ReadsAlone {
    store::Connection& connection;
    ~ReadsAlone() {
      try {
        connection.readTogether(false);
      } catch (const store::DatabaseError&) {
        return;  // whoever asks next is told
      }
    }
  } const afterwards{connection_};
  const std::size_t count = contacts_.count();
  for (std::size_t i = 1; i <= count && !stopped_; ++i) {
    if (heading != nullptr) {
      heading->advance(i);
    } else {
      window_.setProgress(static_cast<int>(i * 100 / count));
    }
    stopped_ = window_.yield() && stopping == Stopping::Possible;
    if (stopped_) break;
    const bool done = guarded([&] { return nameOfRecord(i); },
                              [&] {
                                const auto contact = contacts_.item(i);
                                if (contact->typeName() == outlook::kContactItem) step(*contact, i);
                              });
    if (!done) removeRowOf(i);
  }
  return stopped_ ? RunEnd::Stopped : RunEnd::Completed;
}

}  // namespace vlout::transfer
