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
#include "history/written_log.h"
#include "outlook/pairing.h"
#include "store/sql.h"
#include "store/sqlite/backup.h"
#include "text/ascii.h"
#include "text/file_path.h"
#include "transfer/change_detection.h"

namespace vlout::history {
namespace {

// The runs that may have left something, the newest first. One that came to its end began by
// completing those before it, and an undo has put back what they wrote.
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

// The rows as they were when a run wrote their contacts.
class RowsThen {
 public:
  explicit RowsThen(const RestorePoint& point) : database_(point.database()) {}
  [[nodiscard]] std::optional<std::uint64_t> of(const RowKey& row, const Written::Sent& sent) {
    return sent.row ? sent.row : rows_.of(row);
  }

 private:
  store::StoredDatabase database_;
  RowHashes rows_{database_.get()};
};

// Adds the cards that lack nothing but their dates. A row that has got them, before the run ended
// or since, is not what it was.
void addCards(const RestorePoint& point, const std::filesystem::path& folder, RowHashes& now,
              std::set<std::int64_t>& cards) {
  const Written written = Written::read(point.writtenLog());
  if (written.sent.empty()) return;
  RowsThen then(point);
  for (const auto& [card, sent] : written.sent) {
    const RowKey row{std::string(store::kCardTable), card};
    const auto hash = now.of(row);
    if (!hash || hash != then.of(row, sent)) continue;
    const auto contact = fileStateAt(folder / text::pathOf(sent.file));
    if (isSame(contact, written.files.at(sent.file).back())) cards.insert(card);
  }
}

std::set<std::int64_t> cardsToStamp(const Runs& runs, const std::filesystem::path& folder,
                                    int current, store::SqliteConnection& connection) {
  std::set<std::int64_t> cards;
  RowHashes now(connection.database());
  for (const RunRecord& run : runsCutShort(runs, runs.nameOf(folder), current)) {
    try {
      addCards(RestorePoint(runs.folderOf(run.number)), folder, now, cards);
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

// A statement of the run's connection that is not the run's. The dates that are taken back belong
// to the run that was cut short: an undo of the one that begins now must not bring them back.
class Unrecorded : public store::Connection {
 public:
  explicit Unrecorded(store::SqliteConnection& connection) : connection_(connection) {}
  void open(const store::ConnectionSettings& settings) override { connection_.open(settings); }
  [[nodiscard]] bool isOpen() const override { return connection_.isOpen(); }
  std::int64_t execute(std::string_view sql) override {
    return connection_.SqliteConnection::execute(sql);
  }
  std::unique_ptr<store::Recordset> query(std::string_view sql) override {
    return connection_.query(sql);
  }

 private:
  store::SqliteConnection& connection_;
};

class CutShort {
 public:
  explicit CutShort(const RestorePoint& point)
      : written_(Written::read(point.writtenLog())),
        database_(point.database()),
        log_(point.writtenLog()) {}
  // Adds a change to what the run wrote, unless the row has been edited since.
  void addRow(const RowKey& row, std::optional<std::uint64_t> before, std::uint64_t now) {
    if (written_.left(row, before) || before == rows_.of(row)) log_.row(row, now);
  }

 private:
  Written written_;
  store::StoredDatabase database_;
  RowHashes rows_{database_.get()};
  WrittenLog log_;
};

void forgetTransfer(const outlook::LostSave& lost, store::SqliteConnection& connection,
                    CutShort* run) {
  const RowKey row{std::string(store::kCardTable), text::parseInteger(lost.row).value()};
  Unrecorded unrecorded(connection);
  RowHashes rows(connection.database());
  store::execute(connection.database(), "BEGIN IMMEDIATE");
  try {
    const auto before = rows.of(row);
    transfer::forgetTransfer(unrecorded, lost.row, lost.contactTime);
    const auto now = rows.of(row);
    if (run != nullptr && now) run->addRow(row, before, *now);
    store::execute(connection.database(), "COMMIT");
  } catch (...) {
    store::rollBack(connection.database());
    throw;
  }
}

// Without a whole point nothing can be undone either.
void openNewest(const std::vector<RunRecord>& cutShort, const Runs& runs,
                std::optional<CutShort>& run) {
  if (cutShort.empty()) return;
  const RestorePoint point(runs.folderOf(cutShort.front().number));
  try {
    if (point.exists()) run.emplace(point);
  } catch (const std::exception&) {
    run.reset();
  }
}

}  // namespace

void completeSaves(const Runs& runs, const std::filesystem::path& folder, int current,
                   store::SqliteConnection& connection, outlook::ContactStore& contacts) {
  std::optional<CutShort> run;
  contacts.completeSaves([&](const outlook::LostSave& lost) {
    if (lost.row.empty()) return;
    if (!run && current != 0)
      openNewest(runsCutShort(runs, runs.nameOf(folder), current), runs, run);
    forgetTransfer(lost, connection, run ? &*run : nullptr);
  });
}

void completeDates(const Runs& runs, const std::filesystem::path& folder, int current,
                   store::SqliteConnection& connection, outlook::ContactStore& contacts) {
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
    transfer::writeSyncDates(connection, time, std::to_string(card));
  }
}

}  // namespace vlout::history
