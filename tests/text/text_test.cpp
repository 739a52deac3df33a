#include <vector>

#include <gtest/gtest.h>

#include "text/ascii.h"
#include "text/code_page.h"
#include "text/date_time.h"
#include "text/latin_script.h"
#include "text/shown_text.h"
#include "text/utf8.h"

namespace vlout::text {
namespace {

TEST(DateTime, ReadsWhatAKoreanHostMayHaveStored) {
  struct Case {
    const char* text;
    const char* stamp;  // "" for no date
  };
  const std::vector<Case> cases{
      {"2025/01/31 09:08:07", "2025/01/31 09:08:07"},
      {"2025-1-3 9:8:7", "2025/01/03 09:08:07"},
      {"2025.01.31", "2025/01/31 00:00:00"},
      {"2025. 1. 3. 오후 2:05:09", "2025/01/03 14:05:09"},
      {"2025-01-31 오전 12:00:01", "2025/01/31 00:00:01"},
      {"2025-01-31 12:30 PM", "2025/01/31 12:30:00"},
      {"2025-01-31 12:30:00 am", "2025/01/31 00:30:00"},
      {" 2024/02/29 23:59:59 ", "2024/02/29 23:59:59"},
      {"1969/12/31 23:59:59", "1969/12/31 23:59:59"},
      {"4501-01-01", "4501/01/01 00:00:00"},
      {"2023/02/29", ""},
      {"2025/13/01", ""},
      {"2025/01/31 24:00:00", ""},
      {"2025/01/31 13:00 오후", ""},
      {"2025/01/31 나중에", ""},
      {"2025-01-31T09:08:07", "2025/01/31 09:08:07"},
      {"2025/01/31 09:08:07.9999999", "2025/01/31 09:08:07"},
      {"1980년 3월 22일", "1980/03/22 00:00:00"},
      {"1980년3월22일 오후 2:05", "1980/03/22 14:05:00"},
      {"1980. 3. 22", "1980/03/22 00:00:00"},
      {"80-03-22", "1980/03/22 00:00:00"},
      {"30/01/31", "1930/01/31 00:00:00"},
      {"29/01/30", "2029/01/30 00:00:00"},
      {"3/22/1980", "1980/03/22 00:00:00"},
      {"22.3.80", "1980/03/22 00:00:00"},
      {"03/03/1980", "1980/03/03 00:00:00"},
      {"10-11-12", "2010/11/12 00:00:00"},  // the year comes first, as it does on such a desktop
      {"03/04/1980", ""},
      {"3-4-80", ""},
      {"980-03-22", ""},
      {"80-003-22", ""},
      {"1980년 3월 22", ""},
      {"1980-3월 22", ""},
      {"2025-01-31T", ""},
      {"2025-01-31 09:08:07.", ""},
      {"2025-01-31 09:60", ""},
      {"2025-01-3109:08", ""},
      {"2025-01-31T09:08:07Z", ""},
      {"20250131", ""},
      {"2025", ""},
      {"", ""},
      {"없음", ""},
  };
  for (const Case& c : cases) {
    const auto read = parseDateTime(c.text);
    EXPECT_EQ(read ? formatStamp(*read) : "", c.stamp) << c.text;
  }
}

TEST(DateTime, LocalTimeOfAFileKeepsItsFractionUntilItIsCut) {
  const DateTime time = fromUnixTime(1'700'000'000, 999'999'999);
  EXPECT_EQ(time.nanoseconds, 999'999'999);
  EXPECT_EQ(parseDateTime(formatStamp(time)), toWholeSeconds(time));
  EXPECT_GT(time, toWholeSeconds(time));
}

TEST(LatinScript, LastCharacterDecides) {
  struct Case {
    std::string text;
    bool latin;
    std::string trimmed;
  };
  const std::vector<Case> cases{
      {"Minsu Kim", true, "Minsu Kim"},
      {"홍길동", false, "홍길동"},
      {"홍길동 Jr ", true, "홍길동 Jr"},
      {"Kim 민수", false, "Kim 민수"},
      {"", true, ""},
      {"   ", true, ""},
      {"㈜", false, "㈜"},
      {"\u1112\u1169\u11BC", false, "\u1112\u1169\u11BC"},  // 홍, as some phones send it
      {"\uFFBE\uFFCC\uFFB7", false, "\uFFBE\uFFCC\uFFB7"},  // of half-width letters
      {"\u11FF", true, "\u11FF"},                           // an old jamo that the page lacks
      {"Acme ©", false, "Acme ©"},                          // as the page makes it
      {"金", false, "金"},
      {"서울 1-2", true, "서울 1-2"},
      {"Café", true, "Café"},
      {"😀", true, "😀"},
      {"\t", true, "\t"},
  };
  for (const Case& c : cases) {
    std::string text = c.text;
    EXPECT_EQ(isLatinScript(text), c.latin) << c.text;
    EXPECT_EQ(text, c.trimmed);
  }
}

TEST(Utf8, InvalidBytesAreReplacedAndCounted) {
  struct Case {
    std::string bytes;
    std::string sanitized;
    std::size_t characters;
  };
  const std::vector<Case> cases{
      {"홍a😀", "홍a😀", 3},
      {"a\xFF"
       "b",
       "a\xEF\xBF\xBD"
       "b",
       3},
      {"\xED\xA0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD", 3},  // a surrogate
      {"\xC0\xAF", "\xEF\xBF\xBD\xEF\xBF\xBD", 2},                  // an overlong form
      {"\xED\x99", "\xEF\xBF\xBD\xEF\xBF\xBD", 2},                  // cut off
  };
  for (const Case& c : cases) {
    EXPECT_EQ(sanitizeUtf8(c.bytes), c.sanitized);
    EXPECT_EQ(characters(c.bytes).size(), c.characters);
  }
  EXPECT_EQ(codePoint("홍"), U'홍');
  EXPECT_EQ(codePoint("😀"), U'😀');
}

TEST(CodePage949, ConvertsBothWaysAndRefusesWhatItLacks) {
  EXPECT_EQ(fromCodePage949("\xC8\xAB\xB1\xE6\xB5\xBF"), "홍길동");
  EXPECT_EQ(toCodePage949("똠방각하"), "\x8C\x63\xB9\xE6\xB0\xA2\xC7\xCF");  // beyond KS X 1001
  EXPECT_EQ(fromCodePage949("\xFF\xFF"), std::nullopt);
  EXPECT_EQ(toCodePage949("😀"), std::nullopt);
}

TEST(Ascii, ReplacesInOnePassAndReadsWholeNumbersOnly) {
  EXPECT_EQ(replaceAll("a   b", "  ", " "), "a  b");
  // What a terminal would obey is not shown to it.
  const std::string name = "홍\u202E길\x1B[2J동\u0085\u2066\u200F\u061C\u2028\t\n-";
  EXPECT_EQ(onOneLine(name), "홍 길 [2J동       -");
  EXPECT_EQ(onItsLines(name), "홍 길 [2J동      \n-");
  EXPECT_EQ(digitsOnly("010-1234-5678 (내선 9)"), "010123456789");
  EXPECT_EQ(parseInteger("0042"), 42);
  for (const char* text : {"", " 4", "4 ", "4a", "1 OR 1=1", "99999999999999999999"}) {
    EXPECT_EQ(parseInteger(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace vlout::text
