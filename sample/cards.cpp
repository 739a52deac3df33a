#include "sample/cards.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <initializer_list>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "sample/picture.h"
#include "sample/words.h"
#include "store/sql.h"
#include "text/date_time.h"
#include "text/language.h"

namespace vlout::sample {
namespace {

constexpr int kMostCards = 32767;
constexpr int kSelectedPercent = 10;
constexpr std::uint64_t kCardsPerPicture = 8;

constexpr std::int64_t kFirstNewFolder = 3;  // the schema holds the rows below it
constexpr std::size_t kOpenFolder = 1;       // 거래처, which has subfolders

// The random numbers for one card. The engine is the same in every C++ library, but the
// distributions are not, so every draw here is a plain remainder.
class Dice {
 public:
  Dice(std::uint64_t seed, std::int64_t card)
      : engine_(seed + kSeedStep * static_cast<std::uint64_t>(card)) {}

  std::uint64_t below(std::uint64_t limit) { return engine_() % limit; }
  bool chance(int percent) { return below(100) < static_cast<std::uint64_t>(percent); }
  int between(int first, int last) {
    return first + static_cast<int>(below(static_cast<std::uint64_t>(last - first) + 1));
  }

  template <typename Table>
  const auto& pick(const Table& table) {
    return table[below(table.size())];
  }

  // One of the rows that `fits` accepts; a table must hold one.
  template <typename Table, typename Fits>
  const auto& pickFitting(const Table& table, Fits fits) {
    auto left = below(static_cast<std::uint64_t>(std::count_if(table.begin(), table.end(), fits)));
    return *std::find_if(table.begin(), table.end(),
                         [&](const auto& row) { return fits(row) && left-- == 0; });
  }

  template <typename Table, typename Fits>
  const auto& pickWeighted(const Table& table, Fits fits) {
    int total = 0;
    for (const auto& row : table) total += fits(row) ? row.weight : 0;
    int left = between(0, total - 1);
    return *std::find_if(table.begin(), table.end(), [&](const auto& row) {
      if (!fits(row)) return false;
      left -= row.weight;
      return left < 0;
    });
  }

  template <typename Table>
  const auto& pickWeighted(const Table& table) {
    return pickWeighted(table, [](const auto&) { return true; });
  }

 private:
  // Spreads the card numbers over the seeds, so that the next seed does not give the same cards
  // shifted by one.
  static constexpr std::uint64_t kSeedStep = 0x9E3779B97F4A7C15U;

  std::mt19937_64 engine_;
};

// The parts are in a list because only a list fixes the order of the draws that make them.
std::string join(std::initializer_list<std::string_view> parts) {
  std::string text;
  for (const std::string_view part : parts) text += part;
  return text;
}

std::string padded(std::uint64_t number, std::size_t width) {
  const std::string digits = std::to_string(number);
  return std::string(width - std::min(width, digits.size()), '0') + digits;
}

using Value = std::optional<std::string>;

// The columns and SQL values of one row to insert. A column that is left out gets NULL; naming it
// would only make the statement slower to prepare.
class Row {
 public:
  void addNumber(std::string_view column, std::int64_t number) {
    addSql(column, std::to_string(number));
  }
  void addText(std::string_view column, std::string_view text) {
    addSql(column, store::sqlLiteral(text));
  }
  void addTextOrNull(std::string_view column, const Value& value) {
    if (value) addText(column, *value);
  }
  void addBytes(std::string_view column, std::string_view bytes) {
    addSql(column, store::sqlBytes(bytes));
  }

  [[nodiscard]] std::string insertInto(std::string_view table) const {
    return join({"INSERT INTO ", table, " (", columns_, ") VALUES (", values_, ")"});
  }

 private:
  void addSql(std::string_view column, std::string_view sql) {
    if (!columns_.empty()) {
      columns_ += ',';
      values_ += ',';
    }
    columns_ += column;
    values_ += sql;
  }

  std::string columns_;
  std::string values_;
};

struct Name {
  Syllable surname;
  std::string givenHangul;
  std::string givenLatin;
};

std::string capitalized(std::string_view latin) {
  std::string word(latin);
  word.front() = static_cast<char>(word.front() - 'a' + 'A');
  return word;
}

std::string spell(Dice& dice, std::string_view pattern, const Name& name) {
  std::string text;
  for (const char c : pattern) {
    switch (c) {
      case 'S':
        text += name.surname.hangul;
        break;
      case 'G':
        text += name.givenHangul;
        break;
      case 'L':
        text += capitalized(name.surname.latin);
        break;
      case 'F':
        text += capitalized(name.givenLatin);
        break;
      case 'l':
        text += name.surname.latin;
        break;
      case 'f':
        text += name.givenLatin;
        break;
      case 'd':
        text += std::to_string(dice.below(10));
        break;
      default:
        text += c;
    }
  }
  return text;
}

Name makeName(Dice& dice, bool isMale) {
  constexpr int kSinglePercent = 3;
  const Syllable surname = dice.pickWeighted(kSurnames).name;
  if (dice.chance(kSinglePercent)) {
    const Syllable given = dice.pick(kSingle);
    return {surname, std::string(given.hangul), std::string(given.latin)};
  }
  const Syllable first = dice.pick(isMale ? kMaleFirst : kFemaleFirst);
  const Syllable second = dice.pickFitting(isMale ? kMaleSecond : kFemaleSecond,
                                           [&](const auto& s) { return s.hangul != first.hangul; });
  return {surname, join({first.hangul, second.hangul}), join({first.latin, second.latin})};
}

struct Company {
  std::string name;
  std::string site;
  std::string_view mailDomain;
};

// Everything follows from stem and line, so that colleagues share the spelling and the domain.
Company makeCompany(Dice& dice, Trade trade, bool inLatin) {
  const std::size_t stemIndex = dice.below(kCompanyStems.size());
  const CompanyStem& stem = kCompanyStems[stemIndex];
  const CompanyLine& line = dice.pickFitting(
      kCompanyLines, [&](const CompanyLine& candidate) { return candidate.trade == trade; });
  const auto lineIndex = static_cast<std::size_t>(&line - kCompanyLines.data());
  const CompanyForm& form = kCompanyForms[(stemIndex * 3 + lineIndex * 5) % kCompanyForms.size()];
  const std::string_view domain = kMailDomains[(stemIndex + lineIndex) % kMailDomains.size()];
  std::string name = inLatin ? join({stem.latin, " ", line.latin, " Co., Ltd."})
                             : join({form.before, stem.hangul, line.hangul, form.after});
  return {std::move(name), join({"http://www.", domain, "/", stem.latin}), domain};
}

constexpr bool liesIn(const DistrictRow& district, std::string_view place) {
  return place.empty() || place == district.region || place == district.sigungu;
}
static_assert(std::all_of(kFolders.begin(), kFolders.end(), [](const FolderRow& folder) {
  return std::any_of(kDistricts.begin(), kDistricts.end(),
                     [&](const DistrictRow& district) { return liesIn(district, folder.place); });
}));

// Draws one card. Values depend on one another, so the draws have a fixed order.
class SampleCard {
 public:
  SampleCard(std::uint64_t seed, std::int64_t id)
      : id_(id),
        dice_(seed, id),
        // The first card is in the open folder, so that this folder is never empty.
        folder_(id == 1 ? kFolders[kOpenFolder] : dice_.pickWeighted(kFolders)),
        district_(dice_.pickFitting(
            kDistricts, [&](const DistrictRow& row) { return liesIn(row, folder_.place); })),
        isMale_(dice_.chance(55)),
        name_(makeName(dice_, isMale_)),
        fullName_(spell(dice_, dice_.pickWeighted(kNameForms).pattern, name_)),
        company_(makeCompany(dice_, folder_.trade,
                             fullName_.front() >= 'A' && fullName_.front() <= 'Z')),
        missing_(dice_.chance(15) ? Value("") : std::nullopt) {}

  std::string insertStatement() {
    addIdentity();
    addWork();
    addNumbers();
    addMail();
    addNotes();
    addAddress("company", district_, 88, kBuildings, "층");
    addAddress("home", dice_.pick(kDistricts), 25, kApartments, "호");
    addAddress("etc", dice_.pick(kDistricts), 6, kBuildings, "층");
    addPicture();
    addStamps();
    return row_.insertInto("tbl_namecard");
  }

  // Comes after the statement, as its draw is the card's last.
  bool isSelected() { return dice_.chance(kSelectedPercent); }

 private:
  // What a card lacks is always NULL or, as after a visit to the host's edit window, always empty.
  template <typename Make>
  void addSometimes(std::string_view column, int percent, Make make) {
    row_.addTextOrNull(column, dice_.chance(percent) ? Value(make()) : missing_);
  }

  void addIdentity() {
    row_.addNumber("i_idx", id_);
    row_.addNumber("f_idx", folder_.id);
    row_.addNumber("p_idx", 0);
    row_.addText("folder_name", folder_.name);
    row_.addText("FullName", fullName_);
    row_.addText("Gender", dice_.chance(15) ? "" : (isMale_ ? "남" : "여"));
    addDay("Birthday", 45, 1955, 46);
    addDay("Anniversary", 12, 1985, 36);
    addSometimes("LifePartner", 12, [&] { return spell(dice_, "SG", makeName(dice_, !isMale_)); });
  }

  void addDay(std::string_view column, int percent, int firstYear, int years) {
    if (!dice_.chance(percent)) return;
    const auto day = dayAfter(firstYear, dice_.between(0, years * 365));
    row_.addText(column, text::formatDay(day));
  }

  static text::DateTime dayAfter(int year, int days) {
    constexpr std::int64_t kDay = 86400;
    return {text::makeDateTime(year, 1, 1).value().seconds + days * kDay, 0};
  }

  void addWork() {
    const auto ofTrade = [&](const TradeName& row) { return row.trade == folder_.trade; };
    addSometimes("CompanyName", 94, [&] { return company_.name; });
    addSometimes("Department", 80, [&] { return dice_.pickWeighted(kDepartments, ofTrade).name; });
    addSometimes("JobTitle", 88, [&] { return dice_.pickWeighted(kJobTitles, ofTrade).name; });
  }

  // No exchange begins with 0, so a sample number can never be somebody's.
  std::string phone(std::string_view areaCode) {
    const std::string_view separator = dice_.pickWeighted(kPhoneSeparators).text;
    return join({areaCode, separator, "0", padded(dice_.below(1000), 3), separator,
                 padded(dice_.below(10000), 4)});
  }

  void addNumbers() {
    const auto mobile = [&] { return phone("010"); };
    const auto local = [&] { return phone(district_.areaCode); };
    addSometimes("cellphone", 95, mobile);
    addSometimes("company_phone1", 85, local);
    addSometimes("company_phone2", 18, local);
    addSometimes("company_fax1", 45, local);
    addSometimes("home_phone", 14, local);
    addSometimes("home_fax", 3, local);
    addSometimes("etc_fax", 3, local);
  }

  void addMail() {
    addSometimes("email", 85, [&] { return mailAddress(company_.mailDomain); });
    addSometimes("email2", 15, [&] { return mailAddress("example.net"); });
    addSometimes("Webpage", 40, [&] { return company_.site; });
    addSometimes("Webpage2", 5, [&] {
      return join({"http://blog.example.com/", name_.givenLatin});
    });
  }

  std::string mailAddress(std::string_view domain) {
    return join({spell(dice_, dice_.pickWeighted(kMailForms).pattern, name_), "@", domain});
  }

  void addNotes() {
    addSometimes("Categories", 35, [&] { return dice_.pick(kCategories); });
    addSometimes("Memo_", 30, [&] { return dice_.pick(kMemos); });
  }

  // Some addresses were typed in as one line and have no parts. Where there are parts, the street
  // often holds the whole line all the same.
  template <typename Places>
  void addAddress(const std::string& kind, const DistrictRow& district, int percent,
                  const Places& places, std::string_view unit) {
    const bool isKnown = dice_.chance(percent);
    const bool inParts = isKnown && dice_.chance(92);
    const auto part = [&](const char* name, const Value& value) {
      row_.addTextOrNull(kind + name, value);
    };
    part("_nation", inParts ? Value("대한민국") : missing_);
    part("_sido", inParts ? Value(district.sido) : missing_);
    part("_sigungu", inParts ? Value(district.sigungu) : missing_);
    const bool streetAlone = inParts && dice_.chance(30);
    part("_addr", isKnown ? Value(addressLine(district, streetAlone)) : missing_);
    part("_addr2", inParts ? Value(addressDetail(places, unit)) : missing_);
    const int zipcode = district.firstZipcode + dice_.between(0, district.zipcodes - 1);
    part("_zipcode", inParts ? Value(padded(static_cast<std::uint64_t>(zipcode), 5)) : missing_);
  }

  std::string addressLine(const DistrictRow& district, bool streetAlone) {
    const std::string_view gap = district.sigungu.empty() ? "" : " ";
    std::string line = streetAlone ? "" : join({district.sido, gap, district.sigungu, " "});
    line += join({dice_.pick(district.streets), " ", std::to_string(dice_.between(1, 480))});
    if (dice_.chance(20)) line += join({"-", std::to_string(dice_.between(1, 30))});
    return line;
  }

  template <typename Places>
  std::string addressDetail(const Places& places, std::string_view unit) {
    const std::string_view place = dice_.pick(places);
    const int floor = dice_.between(1, 20);
    const bool isRoom = unit == "호";
    const std::string room =
        isRoom ? padded(static_cast<std::uint64_t>(dice_.between(1, 8)), 2) : "";
    return join({place, " ", std::to_string(floor), room, unit});
  }

  void addPicture() {
    if (dice_.below(kCardsPerPicture) != 0) return;
    row_.addText("Fname", join({"card_", padded(static_cast<std::uint64_t>(id_), 7), ".jpg"}));
    row_.addBytes(
        "Thumbnail",
        makeCardPicture(static_cast<std::uint32_t>(dice_.below(std::uint64_t{1} << 32U))));
  }

  // Without Outlook_modate and VLLastsync_date: the cards were never transferred.
  void addStamps() {
    constexpr int kDaysOf2024And2025 = 366 + 365;
    const int day = dice_.between(0, kDaysOf2024And2025 - 1);
    const text::DateTime changed{dayAfter(2024, day).seconds + dice_.between(8 * 3600, 20 * 3600),
                                 0};
    const text::DateTime made = dayAfter(2024, day - dice_.between(0, 1500));
    row_.addText("CreationTime", text::formatDay(made));
    row_.addNumber("OutlookSync", 0);
    row_.addText("Last_moddate", text::formatStamp(changed));
  }

  std::int64_t id_;
  Dice dice_;
  const FolderRow& folder_;
  const DistrictRow& district_;
  bool isMale_;
  Name name_;
  std::string fullName_;
  Company company_;
  Value missing_;
  Row row_;
};

void addFolders(store::Connection& connection) {
  for (const FolderRow& folder : kFolders) {
    if (folder.id < kFirstNewFolder) continue;
    Row row;
    row.addNumber("f_idx", folder.id);
    row.addNumber("p_idx", folder.parent);
    row.addText("folder_name", folder.name);
    connection.execute(row.insertInto("tbl_folder"));
  }
}

SampleSelection addRows(store::Connection& connection, const SampleSize& size) {
  SampleSelection selection{.folder = kFolders[kOpenFolder].id, .cards = {}};
  addFolders(connection);
  for (std::int64_t id = 1; id <= size.cards; ++id) {
    SampleCard card(size.seed, id);
    connection.execute(card.insertStatement());
    if (card.isSelected()) selection.cards.push_back(id);
  }
  if (selection.cards.empty() && size.cards > 0) selection.cards.push_back(1);
  return selection;
}

}  // namespace

SampleSelection fillWithSampleCards(store::Connection& connection, const SampleSize& size) {
  if (size.cards < 0 || size.cards > kMostCards) {
    throw std::invalid_argument(
        text::say("예제 명함은 0장부터 %1장까지 만들 수 있습니다: %2",
                  "the number of sample cards must be 0 to %1: %2",
                  {std::to_string(kMostCards), std::to_string(size.cards)}));
  }
  connection.execute("BEGIN");
  try {
    SampleSelection selection = addRows(connection, size);
    connection.execute("COMMIT");
    return selection;
  } catch (...) {
    try {
      connection.execute("ROLLBACK");
    } catch (const store::DatabaseError&) {
      // The failure to report is the one that led here.
    }
    throw;
  }
}

}  // namespace vlout::sample
