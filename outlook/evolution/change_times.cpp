#include "outlook/evolution/change_times.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <fcntl.h>
#include <fstream>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "outlook/evolution/fingerprint.h"
#include "outlook/evolution/uid_word.h"
#include "outlook/vcard/card_file.h"
#include "outlook/vcard/card_text.h"
#include "posix/file_descriptor.h"
#include "text/ascii.h"
#include "text/date_time.h"
#include "text/regular_file.h"

namespace vlout::outlook::evolution {
namespace {

namespace fs = std::filesystem;

// A line of the table, in words: kind, UID, the two fingerprints, the time, the card it was written
// for, and what its text is and which card is in it. A later line of a UID replaces an earlier one
// of the same kind; `=` stands for what is certain, `?` for a save that was about to be made.
constexpr char kCertain = '=';
constexpr char kPending = '?';
constexpr std::string_view kNone = "-";
constexpr std::string_view kContact = "contact";
constexpr std::string_view kGroup = "group";
constexpr std::string_view kIs = "=";  // before a card, which may be an empty word

// Takes the first word off a line; an empty one if there is none.
std::string_view takeWord(std::string_view& line) {
  const std::string_view word = line.substr(0, line.find(' '));
  line.remove_prefix(std::min(line.size(), word.size() + 1));
  return word;
}

template <typename Number>
bool takeNumber(std::string_view& line, Number& number) {
  const std::string_view word = takeWord(line);
  const char* const end = word.data() + word.size();
  return std::from_chars(word.data(), end, number) == std::from_chars_result{end, std::errc{}};
}

// REV in either of its forms, 2025-01-31T10:00:00Z and 20250131T100000Z, as Unix time.
std::optional<ChangeTime> revisionOf(const std::string& cardText) {
  vcard::LineReader reader(cardText);
  while (!reader.atEnd()) {
    const std::string_view line = reader.next();
    if (!text::equalsIgnoringAsciiCase(vcard::lineName(line), "REV")) continue;
    std::string digits;
    for (const char c : vcard::plainValue(line)) {
      if (text::isAsciiDigit(c)) digits += c;
    }
    constexpr std::size_t kToTheSecond = 14;
    if (digits.size() < kToTheSecond) return std::nullopt;  // a counter, or a day
    const auto part = [&](std::size_t from, std::size_t size) {
      return static_cast<int>(text::parseInteger(digits.substr(from, size)).value_or(0));
    };
    const auto time = text::makeDateTime(part(0, 4), part(4, 2), part(6, 2), part(8, 2),
                                         part(10, 2), part(12, 2));
    if (!time) return std::nullopt;
    return ChangeTime{time->seconds, 0};
  }
  return std::nullopt;
}

[[noreturn]] void fail(const fs::path& file) {
  throw std::system_error(errno, std::generic_category(), file.string());
}

}  // namespace

ChangeTime ChangeTime::now() {
  const auto since = std::chrono::system_clock::now().time_since_epoch();
  const auto seconds = std::chrono::floor<std::chrono::seconds>(since);
  return {seconds.count(),
          static_cast<std::int32_t>(std::chrono::nanoseconds(since - seconds).count())};
}

ChangeTimes::ChangeTimes(const fs::path& componentFolder, const std::string& bookUid, bool keeps)
    : file_(componentFolder / "books" / asWord(bookUid)), keeps_(keeps) {
  read();
}

void ChangeTimes::read() {
  if (!fs::exists(file_)) return;
  const std::string table = text::readRegularFile(file_, text::kLargestOwn);
  contacts_.reserve(static_cast<std::size_t>(std::count(table.begin(), table.end(), '\n')));
  for (std::string_view rest = table; !rest.empty();) {
    const std::size_t end = rest.find('\n');
    if (end == std::string_view::npos) return;  // a kill has cut it off
    readLine(rest.substr(0, end));
    rest.remove_prefix(end + 1);
  }
}

void ChangeTimes::readLine(std::string_view line) {
  const std::string_view kind = takeWord(line);
  const std::string_view uid = takeWord(line);
  Entry entry;
  const bool isWhole = takeNumber(line, entry.text) && takeNumber(line, entry.content) &&
                       takeNumber(line, entry.time.seconds) &&
                       takeNumber(line, entry.time.nanoseconds) && !line.empty();
  if (kind.size() != 1 || !isWhole) return;  // behind a line that a kill has cut off
  const std::string_view vlid = takeWord(line);
  if (vlid != kNone) entry.vlid = fromWord(vlid);
  const std::string_view what = takeWord(line);
  entry.isGroup = what == kGroup;
  if (line.starts_with(kIs)) entry.written = fromWord(line.substr(kIs.size()));
  if (what.empty() || line.empty()) entry.text = 0;  // an older table, which does not say
  Contact& contact = contacts_[fromWord(uid)];
  if (kind.front() == kPending) {
    contact.pending = std::move(entry);
  } else {
    contact.last = std::move(entry);
    contact.pending.reset();
  }
}

std::optional<ChangeTimes::Known> ChangeTimes::found(const std::string& uid,
                                                     const std::string& text) {
  const auto known = [](const Entry& last) {
    const auto writtenFor = last.vlid.empty() ? std::nullopt : std::optional(last.vlid);
    return Known{last.time, last.isGroup, last.written ? last.written : writtenFor};
  };
  Entry now{.text = textFingerprint(text)};
  const auto before = contacts_.find(uid);
  if (before != contacts_.end() && before->second.last && !before->second.pending &&
      before->second.last->text == now.text) {
    return known(*before->second.last);
  }
  if (!look(text, now)) return std::nullopt;
  Contact& contact = contacts_[uid];
  now.content = contentFingerprint(text);
  if (contact.pending && contact.pending->content == now.content) {
    now.time = contact.pending->time;
    now.vlid = contact.pending->vlid;
  } else if (contact.last && contact.last->content == now.content) {
    now.time = contact.last->time;
    now.vlid = contact.last->vlid;
  } else {
    const ChangeTime present = ChangeTime::now();
    const auto revision = revisionOf(text);
    const bool isLater = revision && (!contact.last || *revision > contact.last->time);
    // A server whose clock is ahead must not make changes in the future.
    now.time = isLater && *revision <= present ? *revision : present;
    if (contact.last) {
      // The rows' dates are whole seconds: a change in the same second as the last one would be
      // lost.
      if (now.time.seconds <= contact.last->time.seconds) {
        now.time = {contact.last->time.seconds + 1, 0};
      }
      now.vlid = contact.last->vlid;
    }
  }
  contact.last = std::move(now);
  contact.pending.reset();
  changed_ = true;
  return known(*contact.last);
}

// False if the text is no contact.
bool ChangeTimes::look(const std::string& text, Entry& entry) {
  const auto cards = vcard::findCards(text).cards;
  if (cards.empty()) return false;
  entry.text = textFingerprint(text);
  entry.isGroup = cards.front().isGroup;
  entry.written = cards.front().vlid;
  return true;
}

std::uint64_t ChangeTimes::saving(const std::string& uid, const std::string& text,
                                  const std::optional<std::string>& vlid, ChangeTime time) {
  const std::uint64_t content = contentFingerprint(text);
  append(kPending, uid, {.content = content, .time = time, .vlid = vlid.value_or("")});
  return content;
}

std::uint64_t ChangeTimes::saved(const std::string& uid, const std::string& stored,
                                 const std::optional<std::string>& vlid, ChangeTime time) {
  Contact& contact = contacts_[uid];
  contact.last =
      Entry{.content = contentFingerprint(stored), .time = time, .vlid = vlid.value_or("")};
  look(stored, *contact.last);
  contact.pending.reset();
  append(kCertain, uid, *contact.last);
  return contact.last->content;
}

std::string ChangeTimes::line(char kind, const std::string& uid, const Entry& entry) {
  const auto orNone = [](bool isOne, const std::string& word) {
    return isOne ? word : std::string(kNone);
  };
  std::string line{kind};
  for (const std::string& word :
       {asWord(uid), std::to_string(entry.text), std::to_string(entry.content),
        std::to_string(entry.time.seconds), std::to_string(entry.time.nanoseconds),
        orNone(!entry.vlid.empty(), asWord(entry.vlid)),
        std::string(entry.isGroup ? kGroup : kContact),
        orNone(entry.written.has_value(), std::string(kIs) + asWord(entry.written.value_or("")))}) {
    line.append(" ").append(word);
  }
  return line + '\n';
}

void ChangeTimes::append(char kind, const std::string& uid, const Entry& entry) {
  if (!keeps_) return;
  flush();
  fs::create_directories(file_.parent_path());
  const posix::FileDescriptor file(
      posix::openRegular(file_.c_str(), O_WRONLY | O_CREAT | O_APPEND));
  const std::string text = line(kind, uid, entry);
  if (file.get() < 0 ||
      ::write(file.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
    fail(file_);
  }
}

void ChangeTimes::flush() {
  if (!keeps_ || !changed_) return;
  fs::create_directories(file_.parent_path());
  fs::permissions(file_.parent_path(), fs::perms::owner_all);
  fs::path draft = file_;
  draft += ".new";
  fs::remove(draft);  // it may be a pipe
  std::ofstream file(draft, std::ios::binary | std::ios::trunc);
  for (const auto& [uid, contact] : contacts_) {
    if (contact.last) file << line(kCertain, uid, *contact.last);
    if (contact.pending) file << line(kPending, uid, *contact.pending);
  }
  file.close();
  if (!file) fail(draft);
  fs::rename(draft, file_);
  changed_ = false;
}

}  // namespace vlout::outlook::evolution
