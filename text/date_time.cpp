#include "text/date_time.h"

#include <chrono>
#include <ctime>

#include "text/ascii.h"

namespace vlout::text {
namespace {

using std::chrono::floor;
using std::chrono::hh_mm_ss;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::sys_seconds;
using std::chrono::year_month_day;

// Walks over a date text from left to right.
class Reader {
 public:
  explicit Reader(std::string_view text) : rest_(text) {}

  void skipBlanks() {
    while (!rest_.empty() && (rest_.front() == ' ' || rest_.front() == '\t'))
      rest_.remove_prefix(1);
  }

  bool take(std::string_view word) {
    if (!equalsIgnoringAsciiCase(rest_.substr(0, word.size()), word)) return false;
    rest_.remove_prefix(word.size());
    return true;
  }

  std::optional<int> number(std::size_t fewest, std::size_t most) {
    std::size_t count = 0;
    int value = 0;
    while (count < rest_.size() && count < most && isAsciiDigit(rest_[count])) {
      value = value * 10 + (rest_[count] - '0');
      ++count;
    }
    if (count < fewest) return std::nullopt;
    rest_.remove_prefix(count);
    return value;
  }

  char takeDateSeparator() {
    skipBlanks();
    if (rest_.empty()) return '\0';
    const char c = rest_.front();
    if (c != '-' && c != '/' && c != '.') return '\0';
    rest_.remove_prefix(1);
    skipBlanks();
    return c;
  }

  [[nodiscard]] bool atEnd() const { return rest_.empty(); }

 private:
  std::string_view rest_;
};

enum class HalfDay { None, Morning, Afternoon };

HalfDay takeHalfDay(Reader& reader) {
  reader.skipBlanks();
  if (reader.take("오전") || reader.take("AM")) return HalfDay::Morning;
  if (reader.take("오후") || reader.take("PM")) return HalfDay::Afternoon;
  return HalfDay::None;
}

struct TimeOfDay {
  int hour = 0;
  int minute = 0;
  int second = 0;
};

std::optional<TimeOfDay> readTime(Reader& reader) {
  HalfDay half = takeHalfDay(reader);
  reader.skipBlanks();
  TimeOfDay time;
  const auto hour = reader.number(1, 2);
  if (!hour || !reader.take(":")) return std::nullopt;
  const auto minute = reader.number(1, 2);
  if (!minute) return std::nullopt;
  time.hour = *hour;
  time.minute = *minute;
  if (reader.take(":")) {
    const auto second = reader.number(1, 2);
    if (!second) return std::nullopt;
    time.second = *second;
  }
  if (half == HalfDay::None) half = takeHalfDay(reader);
  if (half != HalfDay::None) {
    if (time.hour < 1 || time.hour > 12) return std::nullopt;
    time.hour = time.hour % 12 + (half == HalfDay::Afternoon ? 12 : 0);
  }
  return time;
}

// Writes a number right-aligned into its place in a text of fixed shape.
void putDigits(std::string& text, std::size_t start, std::size_t count, std::int64_t number) {
  for (std::size_t i = start + count; i > start; --i) {
    text[i - 1] = static_cast<char>('0' + number % 10);
    number /= 10;
  }
}

void putDate(std::string& text, year_month_day date) {
  putDigits(text, 0, 4, int{date.year()});
  putDigits(text, 5, 2, unsigned{date.month()});
  putDigits(text, 8, 2, unsigned{date.day()});
}

}  // namespace

std::optional<DateTime> makeDateTime(int year, int month, int day, int hour, int minute,
                                     int second) {
  const year_month_day date{std::chrono::year(year),
                            std::chrono::month(static_cast<unsigned>(month)),
                            std::chrono::day(static_cast<unsigned>(day))};
  const bool timeFits =
      hour >= 0 && hour < 24 && minute >= 0 && minute < 60 && second >= 0 && second < 60;
  if (!date.ok() || year < 1 || year > 9999 || !timeFits) return std::nullopt;
  const std::int64_t days = sys_days(date).time_since_epoch().count();
  return DateTime{((days * 24 + hour) * 60 + minute) * 60 + second, 0};
}

DateTime noDate() {
  static const DateTime value = makeDateTime(4501, 1, 1).value();
  return value;
}

std::string formatStamp(DateTime time) {
  const sys_seconds point{seconds(time.seconds)};
  const auto midnight = floor<std::chrono::days>(point);
  const year_month_day date{midnight};
  const hh_mm_ss clock{point - midnight};
  std::string text = "0000/00/00 00:00:00";
  putDate(text, date);
  putDigits(text, 11, 2, clock.hours().count());
  putDigits(text, 14, 2, clock.minutes().count());
  putDigits(text, 17, 2, clock.seconds().count());
  return text;
}

std::string formatDay(DateTime time) {
  const year_month_day date{floor<std::chrono::days>(sys_seconds{seconds(time.seconds)})};
  std::string text = "0000-00-00";
  putDate(text, date);
  return text;
}

std::optional<DateTime> parseDateTime(std::string_view text) {
  Reader reader(text);
  reader.skipBlanks();
  const auto year = reader.number(4, 4);
  if (!year || reader.takeDateSeparator() == '\0') return std::nullopt;
  const auto month = reader.number(1, 2);
  if (!month || reader.takeDateSeparator() == '\0') return std::nullopt;
  const auto day = reader.number(1, 2);
  if (!day) return std::nullopt;
  reader.take(".");  // the Korean long form ends the date with a full stop
  reader.skipBlanks();
  TimeOfDay time;
  if (!reader.atEnd()) {
    const auto read = readTime(reader);
    reader.skipBlanks();
    if (!read || !reader.atEnd()) return std::nullopt;
    time = *read;
  }
  return makeDateTime(*year, *month, *day, time.hour, time.minute, time.second);
}

DateTime toWholeSeconds(DateTime time) {
  return DateTime{time.seconds, 0};
}

DateTime fromUnixTime(std::int64_t seconds, std::int32_t nanoseconds) {
  const auto unixTime = static_cast<std::time_t>(seconds);
  std::tm local{};
#ifdef _WIN32
  localtime_s(&local, &unixTime);
#else
  localtime_r(&unixTime, &local);
#endif
  auto time = makeDateTime(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                           local.tm_min, local.tm_sec < 60 ? local.tm_sec : 59);
  if (!time) return DateTime{seconds, nanoseconds};  // outside the years that stamps can hold
  time->nanoseconds = nanoseconds;
  return *time;
}

DateTime localNow() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const auto whole = floor<seconds>(now);
  return fromUnixTime(whole.count(),
                      static_cast<std::int32_t>(std::chrono::nanoseconds(now - whole).count()));
}

}  // namespace vlout::text
