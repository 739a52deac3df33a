#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "store/address_line.h"
#include "store/folders.h"
#include "store/sql.h"
#include "tests/support/database_fixture.h"

namespace vlout::store {
namespace {

using StoreTest = tests::DatabaseFixture;

TEST_F(StoreTest, NextCardIdEndsWithAnErrorInsteadOfWrapping) {
  EXPECT_EQ(nextCardId(connection), 1);
  connection.execute("INSERT INTO tbl_namecard(i_idx) VALUES(41)");
  EXPECT_EQ(nextCardId(connection), 42);
  connection.execute("INSERT INTO tbl_namecard(i_idx) VALUES(32766)");
  EXPECT_EQ(nextCardId(connection), 32767);
  connection.execute("INSERT INTO tbl_namecard(i_idx) VALUES(32767)");
  EXPECT_THROW(static_cast<void>(nextCardId(connection)), std::overflow_error);
  connection.execute("UPDATE tbl_namecard SET i_idx=-65000-i_idx");
  EXPECT_THROW(static_cast<void>(nextCardId(connection)), std::overflow_error);
}

TEST_F(StoreTest, CardsAreFoundByNumberOnly) {
  connection.execute("INSERT INTO tbl_namecard(i_idx) VALUES(7)");
  EXPECT_TRUE(cardExists(connection, "7"));
  EXPECT_FALSE(cardExists(connection, "8"));
  for (const char* id : {"", "abc", "8 OR 1=1", "7;"}) {
    EXPECT_THROW(static_cast<void>(cardExists(connection, id)), DatabaseError) << id;
    EXPECT_THROW(static_cast<void>(readCard(connection, id)), DatabaseError) << id;
  }
}

TEST(SqlQuote, TrimsAndDoublesQuotes) {
  EXPECT_EQ(sqlQuote("  O'Brien  "), "O''Brien");
  EXPECT_EQ(sqlQuote("   "), "");
  EXPECT_EQ(sqlLiteral("''"), "''''''");
  EXPECT_EQ(nullSafe(std::nullopt), "");
}

TEST_F(StoreTest, SubfoldersComeOnceEvenInACycle) {
  for (const auto& [id, parent] :
       std::vector<std::pair<int, int>>{{10, 1}, {11, 10}, {5, 11}, {12, 1}, {20, 21}, {21, 20}}) {
    connection.execute("INSERT INTO tbl_folder(f_idx,p_idx,folder_name) VALUES(" +
                       std::to_string(id) + "," + std::to_string(parent) + ",'f')");
  }
  EXPECT_EQ(folderWithSubfolders(connection, "10"), "10,11,5");
  EXPECT_EQ(folderWithSubfolders(connection, "20"), "20,21");
  EXPECT_EQ(folderWithSubfolders(connection, "999"), "999");
  EXPECT_THROW(static_cast<void>(folderWithSubfolders(connection, "x")), DatabaseError);
}

TEST(AddressLine, JoinsPartsInTheOrderOfTheirScript) {
  struct Case {
    AddressParts parts;  // country, state, city, street, box
    const char* line;
  };
  const std::vector<Case> cases{
      {{"대한민국", "서울특별시", "강남구", "테헤란로 1", ""}, "서울특별시 강남구 테헤란로 1"},
      {{"", "", "", "", ""}, ""},
      // Decided by the last character of street and city: this street counts as Latin, the city
      // not.
      {{"대한민국", "경기도", "성남시", "판교로 1-2", "사서함 3"},
       "경기도 성남시 판교로 1-2 사서함 3"},
      {{"USA", "NY", "New York", "5th Avenue", "PO 7"}, "PO 7 5th Avenue New York NY USA"},
      {{"USA", "", "", "5th Avenue", ""}, "5th Avenue  USA"},
      {{"대한민국", "서울특별시", "", "", "7"}, "7  서울특별시"},
      {{"", "서울", "", "가로", ""}, "서울 가로"},
      {{"", "서울", "구", "", "7"}, "서울 구 7"},
      {{"대한민국", " 서울 ", " 강남구 ", "  테헤란로  ", ""}, "서울 강남구 테헤란로"},
  };
  for (const Case& c : cases) EXPECT_EQ(addressLine(c.parts), c.line);
}

}  // namespace
}  // namespace vlout::store
