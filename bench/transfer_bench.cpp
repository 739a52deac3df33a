// Transfers at several sizes, each beside a floor: a loop that only writes the same number of files
// of the same size and runs the same number of updates. The plain floor writes each file under its
// own name; the safe one as the program must, under another name and renamed, with the folder on
// the disk at the end. What a transfer takes above its floor is what it costs to decide, to convert
// and to report.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <benchmark/benchmark.h>

#include "entry/cli/run_command.h"
#include "history/undo.h"
#include "outlook/vcard/vcard_store.h"
#include "sample/cards.h"
#include "store/sqlite/sqlite_connection.h"
#include "store/sqlite/statement.h"
#include "transfer/export.h"
#include "transfer/import.h"
#include "transfer/row_stamps.h"
#include "transfer/sync.h"
#include "transfer/work_list_loader.h"

namespace {

using namespace vlout;
using Clock = std::chrono::steady_clock;

// A window that keeps its lines and shows them to nobody.
class SilentWindow : public transfer::RunWindow {
 public:
  std::size_t addResult(std::string_view text) override {
    lines_.emplace_back(text);
    return lines_.size() - 1;
  }
  void setResultCell(std::size_t, std::size_t, std::string_view) override {}
  void selectResult(std::size_t) override {}
  void showProgress(bool) override {}
  void setProgress(int) override {}
  void enableRunButton(bool) override {}
  void message(transfer::MessageIcon, std::string_view text) override { lines_.emplace_back(text); }
  bool yield() override { return false; }

 private:
  std::vector<std::string> lines_;
};

class NoConflicts : public transfer::ConflictDialog {
 public:
  int resolve(const transfer::ConflictPair&) override { return transfer::kSkipPair; }
  bool saveCardSide(const transfer::ConflictPair&) override { return false; }
  bool saveOutlookSide(const transfer::ConflictPair&) override { return false; }
};

std::string readFile(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

// Folders that stay until the end. A file system that has just given up thousands of files makes
// new ones several times more slowly (ext4 avoids their inodes for minutes), so nothing may be
// removed before files are made against the clock.
class LeftFolders {
 public:
  LeftFolders() = default;
  ~LeftFolders() {
    for (const auto& folder : folders_) std::filesystem::remove_all(folder);
  }
  LeftFolders(const LeftFolders&) = delete;
  LeftFolders& operator=(const LeftFolders&) = delete;
  void add(std::filesystem::path folder) { folders_.push_back(std::move(folder)); }

 private:
  std::vector<std::filesystem::path> folders_;
};

enum class Removed { AtOnce, AtTheEnd };

// A sample component folder of its own for each measurement.
class Scene {
 public:
  explicit Scene(std::int64_t cards, Removed removed = Removed::AtOnce) : removed_(removed) {
    std::string pattern = (std::filesystem::temp_directory_path() / "vlout-bench-XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
    const store::ConnectionSettings settings{.componentFolder = folder_};
    store::sqlite::createDatabase(settings.databaseFile());
    std::filesystem::create_directory(contactFolder());
    connection_.open(settings);
    sample::fillWithSampleCards(connection_, {.cards = static_cast<int>(cards), .seed = 1});
  }
  ~Scene() {
    static LeftFolders left;
    if (removed_ == Removed::AtTheEnd) {
      left.add(folder_);
    } else {
      std::filesystem::remove_all(folder_);
    }
  }
  Scene(const Scene&) = delete;
  Scene& operator=(const Scene&) = delete;

  void load() { transfer::WorkListLoader(connection_, list_, window_).loadAll(); }

  void exportAll() {
    load();
    const auto contacts = openContacts();
    transfer::Export(connection_, *contacts, list_, window_, {}).runExport();
  }

  // Every pair in step, and known to the index: what was written in the tick of its listing is not.
  void settle() {
    exportAll();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    exportAll();
  }

  void importAll() {
    load();
    const auto contacts = openContacts();
    std::vector<std::size_t> pending;
    transfer::Import(connection_, *contacts, list_, pending, window_, {}, {"2", "미정"})
        .runImport();
  }

  void syncAll() {
    load();
    const auto contacts = openContacts();
    NoConflicts conflicts;
    transfer::Sync(connection_, *contacts, list_, window_, conflicts, {}).runSync();
  }

  // Contacts as another program made them: no keys, and no rows in the database.
  void forgetCards() {
    connection_.execute("DELETE FROM tbl_namecard");
    for (const auto& entry : std::filesystem::directory_iterator(contactFolder())) {
      std::string text = readFile(entry.path());
      const std::size_t key = text.find("X-VLID:");
      text.erase(key, text.find('\n', key) + 1 - key);
      std::ofstream(entry.path(), std::ios::binary) << text;
    }
  }

  // As if one contact in ten had been edited after the last transfer.
  void editOneContactInTen() {
    std::size_t index = 0;
    for (const auto& entry : std::filesystem::directory_iterator(contactFolder())) {
      if (index++ % 10 != 0) continue;
      const auto later = std::filesystem::file_time_type::clock::now() + std::chrono::hours(1);
      std::filesystem::last_write_time(entry.path(), later);
    }
  }

  // As if one card in ten had been edited after the last transfer.
  void editOneInTen() {
    connection_.execute(
        "UPDATE tbl_namecard SET [JobTitle]='이사',[Last_moddate]='2099/01/01 00:00:00' where "
        "i_idx % 10 = 0");
  }

  [[nodiscard]] std::filesystem::path folder() const { return folder_; }
  [[nodiscard]] std::filesystem::path contactFolder() const { return folder_ / "contacts"; }
  [[nodiscard]] store::Connection& connection() { return connection_; }

 private:
  // With what earlier runs have seen of the folder, as in the component.
  [[nodiscard]] std::unique_ptr<outlook::vcard::VCardStore> openContacts() const {
    using namespace outlook::vcard;
    std::filesystem::create_directory(folder_ / "history");
    auto contacts = std::make_unique<VCardStore>(
        contactFolder().string(),
        [](const std::string& path) { return std::make_unique<Folder>(path); },
        IndexPlace{folder_ / "history" / "contacts.index"});
    if (!contacts->connect()) throw std::runtime_error(contacts->connectFailure());
    return contacts;
  }

  Removed removed_;
  std::filesystem::path folder_;
  store::sqlite::SqliteConnection connection_;
  transfer::WorkList list_;
  SilentWindow window_;
};

template <typename Work>
void measure(benchmark::State& state, Work work) {
  sync();  // what was written before is not to be paid for now
  const auto start = Clock::now();
  work();
  state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
}

void loadWorkList(benchmark::State& state) {
  Scene scene(state.range(0));
  for (auto _ : state) measure(state, [&] { scene.load(); });
}

void exportNew(benchmark::State& state) {
  for (auto _ : state) {
    Scene scene(state.range(0), Removed::AtTheEnd);
    measure(state, [&] { scene.exportAll(); });
  }
}

void exportNothingToDo(benchmark::State& state) {
  Scene scene(state.range(0));
  scene.settle();
  for (auto _ : state) measure(state, [&] { scene.exportAll(); });
}

void exportOneInTen(benchmark::State& state) {
  Scene scene(state.range(0), Removed::AtTheEnd);
  scene.exportAll();
  for (auto _ : state) {
    scene.editOneInTen();
    measure(state, [&] { scene.exportAll(); });
  }
}

void importNew(benchmark::State& state) {
  for (auto _ : state) {
    Scene scene(state.range(0), Removed::AtTheEnd);
    scene.exportAll();
    scene.forgetCards();
    measure(state, [&] { scene.importAll(); });
  }
}

void importNothingToDo(benchmark::State& state) {
  Scene scene(state.range(0));
  scene.settle();
  for (auto _ : state) measure(state, [&] { scene.importAll(); });
}

void syncNothingToDo(benchmark::State& state) {
  Scene scene(state.range(0));
  scene.settle();
  for (auto _ : state) measure(state, [&] { scene.syncAll(); });
}

void syncOneCardInTen(benchmark::State& state) {
  Scene scene(state.range(0), Removed::AtTheEnd);
  scene.exportAll();
  for (auto _ : state) {
    scene.editOneInTen();
    measure(state, [&] { scene.syncAll(); });
  }
}

void syncOneContactInTen(benchmark::State& state) {
  Scene scene(state.range(0), Removed::AtTheEnd);
  scene.exportAll();
  for (auto _ : state) {
    scene.editOneContactInTen();
    measure(state, [&] { scene.syncAll(); });
  }
}

// --- previews and undo: whole runs of the component, history and all -----------------------------

void runComponent(Scene& scene, ui::frmOutlookSync::Mode mode, bool preview) {
  std::ostringstream lines;
  const volatile std::sig_atomic_t interrupted = 0;
  entry::cli::RunRequest request;
  request.mode = mode;
  request.folder = scene.folder();
  request.contacts = scene.contactFolder();
  request.range = ui::frmOutlookSync::kAllCards;
  request.preview = preview;
  if (!entry::cli::runTransfer(request, lines, lines, 0, interrupted)) {
    throw std::runtime_error(lines.str());
  }
}

void componentNothingToDo(benchmark::State& state, ui::frmOutlookSync::Mode mode, bool preview) {
  Scene scene(state.range(0));
  scene.settle();
  for (auto _ : state) measure(state, [&] { runComponent(scene, mode, preview); });
}

void undoOneInTen(benchmark::State& state) {
  Scene scene(state.range(0), Removed::AtTheEnd);
  scene.exportAll();
  for (auto _ : state) {
    scene.editOneInTen();
    runComponent(scene, ui::frmOutlookSync::kExport, false);
    measure(state, [&] { history::Undo(scene.folder(), 0).perform(); });
  }
}

// --- floors -------------------------------------------------------------------------------------

enum class Writing { Plain, Safe };

void writeFloorFile(int folder, const std::string& name, const std::string& text, Writing writing) {
  const char* const first = writing == Writing::Safe ? ".floor.tmp" : name.c_str();
  const int file = openat(folder, first, O_CREAT | O_TRUNC | O_WRONLY | O_CLOEXEC, 0600);
  if (write(file, text.data(), text.size()) < 0) throw std::runtime_error("floor: write");
  close(file);
  if (writing == Writing::Safe) renameat(folder, first, folder, name.c_str());
}

struct FloorFile {
  std::string name;
  std::string text;
};

// What an export of the scene writes, taken from an export of it.
std::vector<FloorFile> exportedFiles(Scene& scene) {
  scene.exportAll();
  std::vector<FloorFile> files;
  for (const auto& entry : std::filesystem::directory_iterator(scene.contactFolder())) {
    files.push_back({entry.path().filename().string(), readFile(entry.path())});
  }
  return files;
}

void writeFloor(benchmark::State& state, Writing writing, std::size_t oneIn, bool fresh) {
  Scene scene(state.range(0), Removed::AtTheEnd);
  const auto files = exportedFiles(scene);
  const auto stamp = text::localNow();
  int round = 0;
  for (auto _ : state) {
    const auto target =
        fresh ? scene.folder() / ("floor" + std::to_string(++round)) : scene.contactFolder();
    std::filesystem::create_directory(target);
    const int folder = open(target.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    measure(state, [&] {
      for (std::size_t i = 0; i < files.size(); i += oneIn) {
        writeFloorFile(folder, files[i].name, files[i].text, writing);
        transfer::stampRow(scene.connection(), stamp, std::to_string(i + 1));
      }
      if (writing == Writing::Safe) syncfs(folder);
    });
    close(folder);
  }
}

// As many files rewritten as an import stamps, and as many rows inserted, of two columns only.
void floorImport(benchmark::State& state) {
  Scene scene(state.range(0), Removed::AtTheEnd);
  const auto files = exportedFiles(scene);
  for (auto _ : state) {
    scene.connection().execute("DELETE FROM tbl_namecard");
    const int folder = open(scene.contactFolder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    measure(state, [&] {
      for (std::size_t i = 0; i < files.size(); ++i) {
        writeFloorFile(folder, files[i].name, files[i].text, Writing::Safe);
        scene.connection().execute("INSERT INTO tbl_namecard(i_idx,FullName) VALUES(" +
                                   std::to_string(i + 1) + ",'홍길동')");
      }
      syncfs(folder);
    });
    close(folder);
  }
}

void floorNewPlain(benchmark::State& state) {
  writeFloor(state, Writing::Plain, 1, true);
}
void floorNewSafe(benchmark::State& state) {
  writeFloor(state, Writing::Safe, 1, true);
}
void floorOneInTenSafe(benchmark::State& state) {
  writeFloor(state, Writing::Safe, 10, false);
}

// What a run with nothing to do cannot go without: the state of each file and the list of the rows,
// and but for a sync each row by itself, in one transaction.
void floorLook(benchmark::State& state, bool readsRows) {
  Scene scene(state.range(0));
  scene.settle();
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(scene.contactFolder())) {
    names.push_back(entry.path().filename().string());
  }
  const auto read = [](store::sqlite::Statement& rows) {
    std::size_t bytes = 0;
    while (rows.next()) {
      for (int i = 0; i < rows.columnCount(); ++i) {
        if (rows.type(i) != store::sqlite::Statement::Type::Null) bytes += rows.bytes(i).size();
      }
    }
    benchmark::DoNotOptimize(bytes);
  };
  for (auto _ : state) {
    measure(state, [&] {
      const int folder = open(scene.contactFolder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
      struct stat status {};
      for (const std::string& name : names) fstatat(folder, name.c_str(), &status, 0);
      close(folder);
      const store::ConnectionSettings settings{.componentFolder = scene.folder()};
      const auto database =
          store::sqlite::openDatabase(settings.databaseFile(), store::sqlite::Access::ReadOnly);
      store::sqlite::execute(database.get(), "BEGIN");
      store::sqlite::Statement list(
          database.get(),
          "SELECT i_idx,FullName,cellphone,email,Outlook_modate,Last_moddate,VLLastsync_date,"
          "folder_name from [tbl_namecard] Where [P_IDX]=0 order by [FullName] ASC");
      read(list);
      store::sqlite::Statement row(database.get(), "SELECT * FROM tbl_namecard where [i_idx] = ?");
      for (std::size_t i = 1; readsRows && i <= names.size(); ++i) {
        row.bind(1, static_cast<std::int64_t>(i));
        read(row);
      }
      store::sqlite::execute(database.get(), "COMMIT");
    });
  }
}
void floorNothingToDo(benchmark::State& state) {
  floorLook(state, true);
}
void floorNothingToSync(benchmark::State& state) {
  floorLook(state, false);
}

bool isLong() {
  return std::getenv("VLOUT_BENCH_LONG") != nullptr;
}

void configureAt(benchmark::internal::Benchmark* benchmark, std::initializer_list<int> sizes) {
  for (const int cards : sizes) benchmark->Arg(cards);
  benchmark->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
  benchmark->Repetitions(3);
  benchmark->ReportAggregatesOnly()->ComputeStatistics("min", [](const std::vector<double>& times) {
    return *std::min_element(times.begin(), times.end());
  });
}
void configure(benchmark::internal::Benchmark* benchmark) {
  if (isLong()) {
    configureAt(benchmark, {10000, 1000, 30000});
  } else {
    configureAt(benchmark, {10000});
  }
}
void configureOneInTen(benchmark::internal::Benchmark* benchmark) {
  configureAt(benchmark, {10000});
}

// First those that make files.
BENCHMARK(exportNew)->Apply(configure);
BENCHMARK(floorNewSafe)->Apply(configure);
BENCHMARK(floorNewPlain)->Apply(configure);
BENCHMARK(importNew)->Apply(configure);
BENCHMARK(floorImport)->Apply(configure);
BENCHMARK(exportOneInTen)->Apply(configureOneInTen);
BENCHMARK(floorOneInTenSafe)->Apply(configureOneInTen);
BENCHMARK(syncOneCardInTen)->Apply(configureOneInTen);
BENCHMARK(syncOneContactInTen)->Apply(configureOneInTen);
BENCHMARK(undoOneInTen)->Apply(configureOneInTen);
BENCHMARK(loadWorkList)->Apply(configure);
BENCHMARK(exportNothingToDo)->Apply(configure);
BENCHMARK(importNothingToDo)->Apply(configure);
BENCHMARK(syncNothingToDo)->Apply(configure);
BENCHMARK(floorNothingToDo)->Apply(configure);
BENCHMARK(floorNothingToSync)->Apply(configure);
// Whole runs that find nothing to do, and their previews.
void configureComponent(const char* name, ui::frmOutlookSync::Mode mode, bool preview) {
  configure(benchmark::RegisterBenchmark(name, componentNothingToDo, mode, preview));
}
const bool kComponentRuns = [] {
  configureComponent("exportComponent", ui::frmOutlookSync::kExport, false);
  configureComponent("exportPreview", ui::frmOutlookSync::kExport, true);
  configureComponent("importComponent", ui::frmOutlookSync::kImport, false);
  configureComponent("importPreview", ui::frmOutlookSync::kImport, true);
  configureComponent("syncComponent", ui::frmOutlookSync::kSync, false);
  configureComponent("syncPreview", ui::frmOutlookSync::kSync, true);
  return true;
}();

}  // namespace
