// Local date-times as the rows and contacts carry them. A stamp in the database is a text of whole
// seconds; a contact's time keeps its fraction until `toWholeSeconds` cuts it for comparison.
// Every caller that writes a date goes through the two formatting functions here, so that the texts
// never depend on regional settings.
#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vlout::text {

// A time on the local clock: whole seconds since 1970-01-01 00:00:00 on that clock, and the
// nanoseconds beyond them (0 to 999,999,999).
struct DateTime {
  std::int64_t seconds = 0;
  std::int32_t nanoseconds = 0;

  auto operator<=>(const DateTime&) const = default;  // NOLINT(modernize-use-nullptr)
};

// The date-time with these calendar fields, or nothing if there is no such day or time.
[[nodiscard]] std::optional<DateTime> makeDateTime(int year, int month, int day, int hour = 0,
                                                   int minute = 0, int second = 0);

// The value of a contact's date property that holds no date: 4501-01-01. The original contact store
// uses this odd constant; it becomes NULL in a row by an exact comparison.
[[nodiscard]] DateTime noDate();

// "yyyy/mm/dd hh:mm:ss", the form of the three sync-state dates.
[[nodiscard]] std::string formatStamp(DateTime time);

// "yyyy-mm-dd", the form of birthdays, anniversaries and creation days.
[[nodiscard]] std::string formatDay(DateTime time);

// Reads whatever a Korean desktop takes for a date, since a host may have stored it: year, month
// and day with "-", "/" or "." between them or 년, 월, 일 after them, fields of one digit, years of
// two (1930 to 2029), and the month or the day first if only one of these gives a valid day. A time
// may follow after blanks or "T", with 오전/오후 or AM/PM before or after it; a fraction of its
// second is cut off. Nothing if the text is empty or no date.
[[nodiscard]] std::optional<DateTime> parseDateTime(std::string_view text);

// The time without its fraction.
[[nodiscard]] DateTime toWholeSeconds(DateTime time);

// A Unix time as the local clock showed it.
[[nodiscard]] DateTime fromUnixTime(std::int64_t seconds, std::int32_t nanoseconds);

// The present time on the local clock.
[[nodiscard]] DateTime localNow();

}  // namespace vlout::text
