#include "history/completion.h"

#include <exception>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "history/restore_point.h"
#include "history/rows.h"
#include "history/trail.h"
#include "history/written_log.h"
#include "outlook/pairing.h"
#include "store/sql.h"
#include "text/ascii.h"
#include "text/file_path.h"
#include "transfer/row_stamps.h"

namespace vlout::history {
namespace {

// The runs that may have left something unfinished, the newest first. A run that reached its end
// began by completing those before it, and an undo has put back what they wrote.
std::vector<RunRecord> runsCutShort(const Runs& runs, const std::string& contacts, int current) {
  std::vector<RunRecord> result;
  const auto all = runs.list();
  for (auto run = all.rbegin(); run != all.rend(); ++run) {
    if (run->number == current || run->contacts != contacts) continue;
    const bool cutShort = run->state == RunState::Unfinished || run->state == RunState::Failed;
    if (!cutShort || run->mode == kUndoMode) break;
    if (run->wrote) result.push_back(*run);
  }
  return result;
}

// Adds the cards that lack only their dates. A row that got its dates, before the run ended or
// since, no longer has the same content.
void addCards(const Written& written, const std::filesystem::path& folder, StoredRows& now,
              std::set<std::int64_t>& cards) {
  std::map<std::string_view, std::optional<FileState>> left;
  std::map<std::int64_t, const FileWrite*> sent;
  for (const FileWrite& file : written.files) {
    left.insert_or_assign(file.name, file.after);
    if (file.card) sent.insert_or_assign(*file.card, &file);
  }
  for (const auto& [card, file] : sent) {
    const RowKey row{std::string(store::kCardTable), card};
    if (file->row == 0 || now.hashOf(row) != file->row) continue;
    const auto contact = fileStateAt(folder / text::pathOf(file->name));
    if (isSame(contact, left.at(file->name))) cards.insert(card);
  }
}

std::set<std::int64_t> cardsToStamp(const Runs& runs, const std::filesystem::path& folder,
                                    int current, store::sqlite::SqliteConnection& connection) {
  std::set<std::int64_t> cards;
  StoredRows now(connection.database());
  for (const RunRecord& run : runsCutShort(runs, runs.nameOf(folder), current)) {
    try {
      addCards(RestorePoint(runs.folderOf(run.number)).written(run.state), folder, now, cards);
    } catch (const std::exception&) {
      break;  // a point that is gone or damaged proves nothing, and older ones no more
    }
  }
  return cards;
}

// The times of the contacts that carry the numbers of those cards.
std::multimap<std::int64_t, text::DateTime> timesOf(const std::set<std::int64_t>& cards,
                                                    outlook::ContactStore& contacts) {
  std::multimap<std::int64_t, text::DateTime> times;
  contacts.openContactsFolder();
  for (std::size_t i = 1; i <= contacts.count(); ++i) {
    const auto contact = contacts.item(i);
    if (contact->typeName() != outlook::kContactItem || !outlook::hasVLID(*contact)) continue;
    const auto key = text::parseInteger(outlook::readVLID(*contact));
    if (key && cards.contains(*key)) times.emplace(*key, contact->lastModificationTime());
  }
  return times;
}

// Runs statements on the run's connection without recording them for it. The dates that are taken
// back belong to the run that was cut short: an undo of the run that begins now must not bring them
// back.
class Unrecorded : public store::Connection {
 public:
  explicit Unrecorded(store::sqlite::SqliteConnection& connection) : connection_(connection) {}
  void open(const store::ConnectionSettings& settings) override { connection_.open(settings); }
  [[nodiscard]] bool isOpen() const override { return connection_.isOpen(); }
  std::int64_t execute(std::string_view sql) override {
    return connection_.SqliteConnection::execute(sql);
  }
  std::unique_ptr<store::Recordset> query(std::string_view sql) override {
    return connection_.query(sql);
  }

 private:
  store::sqlite::SqliteConnection& connection_;
};

class CutShort {
 public:
  CutShort(const RestorePoint& point, RunState state)
      : written_(point.written(state)), log_(point.log(), written_.size) {}
  // Adds a change to what the run wrote, unless the row has been edited since.
  void addRow(const RowKey& row, const Cells& before, const Cells& now) {
    RowTrail trail;
    for (const RowWrite& write : written_.rows) {
      if (write.key == row) addTo(trail, 1, write);
    }
    RowWrite write{row, Change::Changed, {}, {}};
    for (const Cells* const cells : {&before, &now}) {
      for (const auto& [column, cell] : *cells) {
        const Cell was = cellIn(before, column);
        if (was == cellIn(now, column)) continue;
        const auto known = trail.find(column);
        if (known != trail.end() && !known->second.isLeft(was)) return;
        write.before.emplace(column, was);
        write.after.emplace(column, cellIn(now, column));
      }
    }
    log_.row(write);
  }

 private:
  static Cell cellIn(const Cells& cells, const std::string& column) {
    const auto found = cells.find(column);
    return found == cells.end() ? Cell() : found->second;
  }

  Written written_;
  WrittenLog log_;
};

void forgetTransfer(const outlook::LostSave& lost, store::sqlite::SqliteConnection& connection,
                    CutShort* run) {
  const RowKey row{std::string(store::kCardTable), text::parseInteger(lost.row).value()};
  Unrecorded unrecorded(connection);
  StoredRows rows(connection.database());
  store::sqlite::Transaction transaction(connection.database());
  const auto before = rows.at(row);
  transfer::forgetTransfer(unrecorded, lost.row, lost.contactTime);
  const auto now = rows.at(row);
  if (run != nullptr && before && now) run->addRow(row, *before, *now);
  transaction.commit();
}

// Without a whole point nothing can be undone either.
void openNewest(const std::vector<RunRecord>& cutShort, const Runs& runs,
                std::optional<CutShort>& run) {
  if (cutShort.empty()) return;
  const RestorePoint point(runs.folderOf(cutShort.front().number));
  try {
    if (point.exists()) run.emplace(point, cutShort.front().state);
  } catch (const std::exception&) {
    run.reset();
  }
}

}  // namespace

void completeSaves(const Runs& runs, const std::filesystem::path& folder, int current,
                   store::sqlite::SqliteConnection& connection, outlook::ContactStore& contacts) {
  std::optional<CutShort> run;
  contacts.completeSaves([&](const outlook::LostSave& lost) {
    if (lost.row.empty()) return;
    if (!run && current != 0)
      openNewest(runsCutShort(runs, runs.nameOf(folder), current), runs, run);
    forgetTransfer(lost, connection, run ? &*run : nullptr);
  });
}

void completeDates(const Runs& runs, const std::filesystem::path& folder, int current,
                   store::sqlite::SqliteConnection& connection, outlook::ContactStore& contacts) {
  const auto cards = cardsToStamp(runs, folder, current, connection);
  if (cards.empty()) return;
  std::multimap<std::int64_t, text::DateTime> times;
  try {
    times = timesOf(cards, contacts);
  } catch (const outlook::ContactStoreError&) {
    return;  // the run meets it too, and says it
  }
  for (const auto& [card, time] : times) {
    if (times.count(card) > 1) continue;  // a copy carries the number as well
    transfer::stampRow(connection, time, std::to_string(card));
  }
}

}  // namespace vlout::history
