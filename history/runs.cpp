#include "history/runs.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <limits>
#include <sstream>
#include <system_error>

#include "history/restore_point.h"
#include "text/ascii.h"
#include "text/date_time.h"
#include "text/file_path.h"
#include "text/regular_file.h"
#include "text/shown_text.h"

namespace vlout::history {
namespace {

constexpr std::size_t kMostPoints = 20;
constexpr std::size_t kMostRecords = 1000;
constexpr std::int64_t kLongestRun = std::int64_t{24} * 60 * 60;  // seconds
constexpr std::int64_t kOldest = 30 * kLongestRun;
constexpr std::int64_t kLastNumber = 1'000'000'000;

constexpr const char* kLines = "lines";

constexpr std::array<std::string_view, 5> kStates{"unfinished", "completed", "stopped", "nothing",
                                                  "failed"};

RunState stateOf(std::string_view word) {
  const auto* const found = std::find(kStates.begin(), kStates.end(), word);
  return found == kStates.end() ? RunState::Unfinished
                                : static_cast<RunState>(found - kStates.begin());
}

// A path on one line, whatever characters it has.
std::string escaped(std::string_view path) {
  return text::replaceAll(text::replaceAll(path, "%", "%25"), "\n", "%0A");
}

std::string unescaped(std::string_view value) {
  return text::replaceAll(text::replaceAll(value, "%0A", "\n"), "%25", "%");
}

// The age of each run in seconds, if it is known. No single clock is believed: the present is the
// earliest of the last starts of runs that wrote, and a run is as young as the latest start up to
// its own. So the last runs have no age, no run is older than one before it, and a clock that was
// ahead or behind for fewer runs than that makes nothing old. Times from before this program
// existed do not count.
std::vector<std::optional<std::int64_t>> agesOf(const std::vector<RunRecord>& runs) {
  constexpr std::size_t kWitnesses = 5;
  const auto startOf = [](const RunRecord& run) {
    static const std::int64_t first = text::parseDateTime("2020/01/01 00:00:00")->seconds;
    const auto time = text::parseDateTime(run.started);
    return time && time->seconds >= first ? std::optional(time->seconds) : std::nullopt;
  };
  std::optional<std::int64_t> present;
  std::size_t seen = 0;
  for (auto run = runs.rbegin(); run != runs.rend() && seen < kWitnesses; ++run) {
    const auto start = startOf(*run);
    if (!start || !run->wrote) continue;
    present = std::min(present.value_or(*start), *start);
    ++seen;
  }
  std::vector<std::optional<std::int64_t>> ages;
  std::optional<std::int64_t> latest;
  for (const RunRecord& run : runs) {
    const auto start = startOf(run);
    if (start) latest = std::max(latest.value_or(*start), *start);
    ages.push_back(start && present ? std::optional(*present - *latest) : std::nullopt);
  }
  return ages;
}

void readLine(const std::string& line, RunRecord& record) {
  const std::size_t equals = line.find('=');
  if (equals == std::string::npos) return;
  const std::string key = line.substr(0, equals);
  const std::string value = line.substr(equals + 1);
  const auto number = text::parseInteger(value);
  if (key == "started") record.started = value;
  if (key == "mode") record.mode = value;
  if (key == "range") record.range = value;
  if (key == "contacts") record.contacts = unescaped(value);
  if (key == "state") record.state = stateOf(value);
  if (key == "text") record.text = value;
  if (key == "wrote") record.wrote = value == "1";
  if (key == "contactFiles" && number) record.contactFiles = static_cast<std::size_t>(*number);
  if (key == "undoneBy" && number) record.undoneBy = static_cast<int>(*number);
}

// One that cannot be read says nothing.
void readRecord(const std::filesystem::path& path, RunRecord& record) {
  try {
    std::istringstream file(text::readRegularFile(path));
    for (std::string line; std::getline(file, line);) readLine(line, record);
  } catch (const std::system_error&) {
    return;
  }
}

}  // namespace

std::filesystem::path Runs::folderOf(int number) const {
  return folder_ / std::to_string(number);
}

std::filesystem::path Runs::contactsOf(const RunRecord& record) const {
  return component_ / text::pathOf(record.contacts);
}

// A component folder may be moved with its contacts.
std::string Runs::nameOf(const std::filesystem::path& contacts) const {
  const auto whole = std::filesystem::weakly_canonical(contacts);
  const auto within = whole.lexically_relative(component_);
  return text::pathText(within.empty() || *within.begin() == ".." ? whole : within);
}

std::vector<int> Runs::numbers() const {
  std::vector<int> result;
  std::error_code failure;
  const std::filesystem::directory_iterator entries(folder_, failure);
  if (failure && failure != std::errc::no_such_file_or_directory) {
    throw std::system_error(failure, text::pathText(folder_));
  }
  for (const auto& entry : entries) {
    const auto number = text::parseInteger(entry.path().filename().string());
    if (number && *number > 0 && *number < kLastNumber && entry.is_directory()) {
      result.push_back(static_cast<int>(*number));
    }
  }
  std::sort(result.begin(), result.end());
  return result;
}

std::vector<RunRecord> Runs::list() const {
  std::vector<RunRecord> result;
  for (const int number : numbers()) {
    RunRecord record;
    record.number = number;
    readRecord(folderOf(number) / "run", record);
    if (record.started.empty()) record.wrote = RestorePoint(folderOf(number)).exists();
    result.push_back(std::move(record));
  }
  return result;
}

void Runs::begin(RunRecord& record) const {
  std::filesystem::create_directories(folder_);
  std::filesystem::permissions(folder_, std::filesystem::perms::owner_all);
  const auto known = numbers();
  record.number = known.empty() ? 1 : known.back() + 1;
  // Another run may begin at the same moment, on another contact folder.
  while (!std::filesystem::create_directory(folderOf(record.number))) ++record.number;
  std::filesystem::permissions(folderOf(record.number), std::filesystem::perms::owner_all);
  save(record);
}

void Runs::save(const RunRecord& record) const {
  const auto file = folderOf(record.number) / "run";
  auto draft = file;
  draft += ".new";
  std::filesystem::remove(draft);  // it may be a pipe
  std::ofstream stream(draft, std::ios::binary | std::ios::trunc);
  stream << "started=" << record.started << "\nmode=" << record.mode
         << "\nrange=" << text::onOneLine(record.range) << "\ncontacts=" << escaped(record.contacts)
         << "\nstate=" << kStates.at(static_cast<std::size_t>(record.state))
         << "\ntext=" << text::onOneLine(record.text) << "\nwrote=" << (record.wrote ? 1 : 0)
         << '\n';
  if (record.contactFiles) stream << "contactFiles=" << *record.contactFiles << '\n';
  if (record.undoneBy != 0) stream << "undoneBy=" << record.undoneBy << '\n';
  stream.close();
  if (!stream) throw std::system_error(errno, std::generic_category(), draft.string());
  std::filesystem::rename(draft, file);
}

void Runs::saveLines(int number, const std::vector<transfer::ResultLine>& lines) const {
  const auto file = folderOf(number) / kLines;
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  for (const auto& line : lines) {
    std::string text;
    for (const std::string& cell : line) text += text::onOneLine(cell) + '\t';
    text.back() = '\n';
    stream << text;
  }
  stream.close();
  if (!stream) throw std::system_error(errno, std::generic_category(), file.string());
}

std::vector<transfer::ResultLine> Runs::linesOf(int number) const {
  std::vector<transfer::ResultLine> lines;
  std::string text;
  try {
    text = text::readRegularFile(folderOf(number) / kLines, text::kLargestOwn);
  } catch (const std::system_error&) {
    return lines;
  }
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    std::istringstream cells(line);
    transfer::ResultLine& result = lines.emplace_back();
    for (std::string& cell : result) std::getline(cells, cell, '\t');
  }
  return lines;
}

// The first run whose point an undo may still need, since an undo that did not reach its end is
// repeated.
int Runs::neededFrom(const std::vector<RunRecord>& runs) {
  const auto ages = agesOf(runs);
  int from = std::numeric_limits<int>::max();
  for (std::size_t i = 0; i < runs.size(); ++i) {
    const RunRecord& run = runs[i];
    if (run.mode != kUndoMode || ages[i] > kOldest) continue;
    const int target = static_cast<int>(text::parseInteger(run.range).value_or(0));
    if (run.state != RunState::Completed) {
      from = std::min(from, target);
    } else if (target <= from) {
      from = std::numeric_limits<int>::max();
    }
  }
  return from;
}

// Going back before a run takes the points and the logs of all that came later.
int Runs::keptFrom(const std::vector<RunRecord>& runs) {
  const auto ages = agesOf(runs);
  int from = std::numeric_limits<int>::max();
  std::size_t points = 0;
  for (std::size_t i = runs.size(); i-- > 0;) {
    if (!runs[i].wrote) continue;
    ++points;
    if (points > 1 && (points > kMostPoints || ages[i] > kOldest)) break;
    from = runs[i].number;
  }
  return std::min(from, neededFrom(runs));
}

void Runs::prune() const {
  const auto runs = list();
  const auto ages = agesOf(runs);
  const int from = keptFrom(runs);
  for (std::size_t i = 0; i + 1 < runs.size(); ++i) {
    const RunRecord& run = runs[i];
    // Another run may be under way, on another contact folder.
    const bool underWay = run.state == RunState::Unfinished && !(ages[i] >= kLongestRun);
    const bool isKept = run.number >= from || underWay;
    if (isKept && run.wrote) continue;
    if (!isKept) RestorePoint(folderOf(run.number)).drop();
    const bool tooMany = runs.size() - i > kMostRecords;
    std::error_code next;
    if (tooMany || (!isKept && ages[i] > kOldest)) {
      std::filesystem::remove_all(folderOf(run.number), next);
    }
  }
}

}  // namespace vlout::history
