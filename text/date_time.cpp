#include "text/date_time.h"

#include <algorithm>
#include <array>
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

  // The same after blanks, which are not consumed if the word does not follow.
  bool takeBehindBlanks(std::string_view word) {
    const std::string_view before = rest_;
    skipBlanks();
    if (take(word)) return true;
    rest_ = before;
    return false;
  }

  std::string_view digits() {
    const auto end = std::find_if_not(rest_.begin(), rest_.end(), isAsciiDigit);
    const std::string_view taken = rest_.substr(0, static_cast<std::size_t>(end - rest_.begin()));
    rest_.remove_prefix(taken.size());
    return taken;
  }

  // A number of one or two digits.
  std::optional<int> number() {
    const std::string_view taken = digits();
    if (taken.empty() || taken.size() > 2) return std::nullopt;
    return static_cast<int>(*parseInteger(taken));
  }

  [[nodiscard]] bool atEnd() const { return rest_.empty(); }

 private:
  std::string_view rest_;
};

// The day with these digits. Two-digit years are 1930 to 2029, as Windows reads them.
std::optional<DateTime> dayOf(std::string_view year, std::string_view month, std::string_view day) {
  const auto isShort = [](std::string_view digits) { return digits.size() <= 2; };
  if (year.size() != 4 && year.size() != 2) return std::nullopt;
  if (!isShort(month) || !isShort(day)) return std::nullopt;
  const auto number = [](std::string_view digits) {
    return static_cast<int>(*parseInteger(digits));
  };
  const int century = year.size() == 4 ? 0 : number(year) < 30 ? 2000 : 1900;
  return makeDateTime(century + number(year), number(month), number(day));
}

// Year, month and day, or one of the other orders if only that makes a valid day.
std::optional<DateTime> dayOf(const std::array<std::string_view, 3>& parts) {
  if (const auto yearFirst = dayOf(parts[0], parts[1], parts[2])) return yearFirst;
  const auto monthFirst = dayOf(parts[2], parts[0], parts[1]);
  const auto dayFirst = dayOf(parts[2], parts[1], parts[0]);
  if (monthFirst && dayFirst && monthFirst != dayFirst) return std::nullopt;
  return monthFirst ? monthFirst : dayFirst;
}

std::optional<DateTime> readDay(Reader& reader) {
  std::array<std::string_view, 3> parts;
  constexpr std::array<std::string_view, 3> kKorean{"년", "월", "일"};
  bool korean = false;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    reader.skipBlanks();
    parts[i] = reader.digits();
    if (parts[i].empty()) return std::nullopt;
    const bool named = reader.takeBehindBlanks(kKorean[i]);
    if (i == 0) korean = named;
    if (named != korean) return std::nullopt;
    if (korean || i == 2) continue;
    const bool separated = reader.takeBehindBlanks("-") || reader.takeBehindBlanks("/") ||
                           reader.takeBehindBlanks(".");
    if (!separated) return std::nullopt;
  }
  return korean ? dayOf(parts[0], parts[1], parts[2]) : dayOf(parts);
}

enum class HalfDay { None, Morning, Afternoon };

HalfDay takeHalfDay(Reader& reader) {
  reader.skipBlanks();
  if (reader.take("오전") || reader.take("AM")) return HalfDay::Morning;
  if (reader.take("오후") || reader.take("PM")) return HalfDay::Afternoon;
  return HalfDay::None;
}

// The second of the day; a fraction after it is cut off.
std::optional<int> readTime(Reader& reader) {
  HalfDay half = takeHalfDay(reader);
  reader.skipBlanks();
  auto hour = reader.number();
  if (!hour || !reader.take(":")) return std::nullopt;
  const auto minute = reader.number();
  std::optional<int> second = 0;
  if (reader.take(":")) {
    second = reader.number();
    if (reader.take(".") && reader.digits().empty()) return std::nullopt;
  }
  if (half == HalfDay::None) half = takeHalfDay(reader);
  if (half != HalfDay::None) {
    if (*hour < 1 || *hour > 12) return std::nullopt;
    hour = *hour % 12 + (half == HalfDay::Afternoon ? 12 : 0);
  }
  if (!minute || !second || *hour > 23 || *minute > 59 || *second > 59) return std::nullopt;
  return (*hour * 60 + *minute) * 60 + *second;
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

// The form in which stamps are written, and so the form of nearly everything that is read.
std::optional<DateTime> readStamp(std::string_view text) {
  constexpr std::string_view kForm = "0000/00/00 00:00:00";
  if (text.size() != kForm.size()) return std::nullopt;
  for (std::size_t i = 0; i < kForm.size(); ++i) {
    const bool fits = kForm[i] == '0' ? isAsciiDigit(text[i]) : text[i] == kForm[i];
    if (!fits) return std::nullopt;
  }
  const auto two = [&](std::size_t at) { return (text[at] - '0') * 10 + text[at + 1] - '0'; };
  return makeDateTime(two(0) * 100 + two(2), two(5), two(8), two(11), two(14), two(17));
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
  if (const auto stamp = readStamp(text)) return stamp;
  Reader reader(text);
  auto date = readDay(reader);
  if (!date) return std::nullopt;
  reader.take(".");  // the Korean long form ends the date with a full stop
  const bool timeFollows = reader.take("T");
  reader.skipBlanks();
  if (!timeFollows && reader.atEnd()) return date;
  const auto time = readTime(reader);
  reader.skipBlanks();
  if (!time || !reader.atEnd()) return std::nullopt;
  date->seconds += *time;
  return date;
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
