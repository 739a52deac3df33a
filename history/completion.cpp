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

}  // namespace

void completeCutShort(const Runs& runs, const std::filesystem::path& folder, int current,
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
