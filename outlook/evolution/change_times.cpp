#include "outlook/evolution/change_times.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "outlook/evolution/fingerprint.h"
#include "outlook/evolution/uid_word.h"
#include "outlook/vcard/card_text.h"
#include "posix/file_descriptor.h"
#include "text/ascii.h"
#include "text/date_time.h"
#include "text/regular_file.h"

namespace vlout::outlook::evolution {
namespace {

namespace fs = std::filesystem;

// A line of the table: kind, UID, the two fingerprints, the time and the card, separated by blanks.
// A later line of a UID replaces an earlier one of the same kind; `=` stands for what is certain,
// `?` for a save that was about to be made.
constexpr char kCertain = '=';
constexpr char kPending = '?';
constexpr std::string_view kNone = "-";

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
  std::istringstream file(text::readRegularFile(file_, text::kLargestOwn));
  for (std::string text; std::getline(file, text) && !file.eof();) {
    std::istringstream words(text);
    char kind = 0;
    std::string uid;
    Entry entry;
    words >> kind >> uid >> entry.text >> entry.content >> entry.time.seconds >>
        entry.time.nanoseconds >> entry.vlid;
    if (!words) continue;  // a line that a kill has cut off, and the next one behind it
    entry.vlid = entry.vlid == kNone ? "" : fromWord(entry.vlid);
    Contact& contact = contacts_[fromWord(uid)];
    if (kind == kPending) {
      contact.pending = std::move(entry);
    } else {
      contact.last = std::move(entry);
      contact.pending.reset();
    }
  }
}

ChangeTimes::Known ChangeTimes::found(const std::string& uid, const std::string& text) {
  Contact& contact = contacts_[uid];
  Entry now{.text = textFingerprint(text)};
  const auto known = [&] {
    const Entry& last = *contact.last;
    return Known{last.time, last.vlid.empty() ? std::nullopt : std::optional(last.vlid)};
  };
  if (contact.last && !contact.pending && contact.last->text == now.text) return known();
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
  return known();
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
  contact.last = Entry{.text = textFingerprint(stored),
                       .content = contentFingerprint(stored),
                       .time = time,
                       .vlid = vlid.value_or("")};
  contact.pending.reset();
  append(kCertain, uid, *contact.last);
  return contact.last->content;
}

std::string ChangeTimes::line(char kind, const std::string& uid, const Entry& entry) {
  return std::string(1, kind) + ' ' + asWord(uid) + ' ' + std::to_string(entry.text) + ' ' +
         std::to_string(entry.content) + ' ' + std::to_string(entry.time.seconds) + ' ' +
         std::to_string(entry.time.nanoseconds) + ' ' +
         (entry.vlid.empty() ? std::string(kNone) : asWord(entry.vlid)) + '\n';
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
