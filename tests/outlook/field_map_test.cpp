#include "outlook/field_map.h"

#include <vector>

#include <gtest/gtest.h>

#include "outlook/pairing.h"
#include "outlook/vcard/vcard_contact.h"
#include "outlook/vcard/vcard_store.h"
#include "store/sql.h"
#include "tests/support/component_fixture.h"

namespace vlout::outlook {
namespace {

using P = ContactProperty;

class FieldMapTest : public tests::ComponentFixture {
 protected:
  FieldMapTest() { EXPECT_TRUE(runtime->contacts().connect()); }

  std::unique_ptr<Contact> written(std::unique_ptr<Contact> contact, int card, ContactWrite how,
                                   const MapOptions& options = {}) {
    writeContactFromRow(*contact, *store::readCard(database, std::to_string(card)), how, options);
    return contact;
  }
  std::unique_ptr<Contact> created(int card, const MapOptions& options = {}) {
    return written(runtime->contacts().create(), card, ContactWrite::Create, options);
  }
  static std::string fieldOf(Contact& contact, std::string_view column) {
    for (const MappedField& field : mappedFields()) {
      if (field.column == column) return fieldTextFromContact(contact, field).value();
    }
    return "no such column";
  }
};

TEST_F(FieldMapTest, AnAddressIsEmptiedThenGetsItsCodeThenItsStreet) {
  struct Watched : vcard::VCardContact {
    using VCardContact::VCardContact;
    void setText(P property, std::string_view value) override {
      const std::string name(propertyInfo(property).objectModelName);
      if (name.starts_with("OtherAddress"))
        written += name.substr(12) + "=" + std::string(value) + " ";
      VCardContact::setText(property, value);
    }
    std::string written;
  };
  addCard(1, {{"etc_addr", "길"}, {"etc_zipcode", "1"}, {"home_zipcode", "2"}});
  Watched contact(dynamic_cast<vcard::VCardStore&>(runtime->contacts()), std::nullopt);
  writeContactFromRow(contact, *store::readCard(database, "1"), ContactWrite::Create, {});
  EXPECT_EQ(contact.written, "State= City= Street= PostalCode=1 Street=길 PostalCode=2 ");
}

TEST_F(FieldMapTest, NamesAreSplitByScriptLengthAndOption) {
  struct Case {
    const char* name;
    bool split;
    const char* last;
    const char* first;
    const char* rowName;  // what an import makes of the contact
  };
  const std::vector<Case> cases{
      {"홍길동", true, "홍", "길동", "홍길동"},
      {"홍길동", false, "", "홍길동", "홍길동"},
      {"허준", true, "허", "준", "허준"},
      {"남궁민수", true, "", "남궁민수", "남궁민수"},
      {"홍 길동", true, "홍", "길동", "홍길동"},
      {"홍,길동", true, "홍", "길동", "홍길동"},
      {" 홍길동 ", true, "홍", "길동", "홍길동"},
      {"Minsu Kim", true, "Kim", "Minsu", "Kim, Minsu"},
      {"Kim, Minsu", true, "Kim", "Minsu", "Kim, Minsu"},
      {"김Jr", true, "", "김Jr", "김Jr"},  // Latin by its last character
      {"", true, "", "", ""},
  };
  for (const Case& c : cases) {
    execute("DELETE FROM tbl_namecard");
    addCard(1, {{"FullName", c.name}});
    const auto contact = created(1, {.splitName = c.split});
    EXPECT_EQ(contact->text(P::LastName), c.last) << c.name;
    EXPECT_EQ(contact->text(P::FirstName), c.first) << c.name;
    EXPECT_EQ(rowNameFromContact(*contact), c.rowName) << c.name;
  }
}

TEST_F(FieldMapTest, EveryColumnArrivesAndComesBackWithTheKnownAsymmetries) {
  std::vector<std::pair<std::string, std::string>> columns{{"FullName", "홍길동"}};
  for (const MappedField& field : mappedFields()) {
    std::string value = std::string(field.column) + " '값'";
    if (field.rule == FieldRule::Date) value = "1999/12/31 10:00:00";
    if (field.rule == FieldRule::Gender) value = "여";
    if (field.rule == FieldRule::Company) value = "(주)가나다";
    columns.emplace_back(field.column, value);
  }
  addCard(1, columns);
  const auto contact = created(1);
  EXPECT_EQ(contact->text(P::CompanyName), "(주)가나다");
  EXPECT_EQ(contact->text(P::OtherAddressPostalCode), "home_zipcode '값'");
  EXPECT_EQ(contact->text(P::HomeAddressPostalCode), "");
  EXPECT_EQ(readVLID(*contact), "1");
  for (const MappedField& field : mappedFields()) {
    std::string expected = std::string(field.column) + " '값'";
    if (field.rule == FieldRule::Date) expected = "1999-12-31";
    if (field.rule == FieldRule::Gender) expected = "여";
    if (field.rule == FieldRule::Company) expected = "㈜가나다";
    if (field.column == "etc_zipcode") expected = "home_zipcode '값'";
    if (field.column == "home_zipcode") expected = "";
    EXPECT_EQ(fieldTextFromContact(*contact, field), expected) << field.column;
  }
}

TEST_F(FieldMapTest, EmptyAndOddColumnsGiveNoValues) {
  execute("INSERT INTO tbl_namecard(i_idx,p_idx) VALUES(1,0)");  // NULL everywhere else
  addCard(2, {{"FullName", "홍길동"}, {"Birthday", "언젠가"}, {"Gender", "M"}});
  for (const int card : {1, 2}) {
    const auto contact = created(card);
    EXPECT_EQ(contact->date(P::Birthday), text::noDate());
    EXPECT_EQ(contact->gender(), Gender::Unspecified);
    for (const MappedField& field : mappedFields()) {
      EXPECT_EQ(fieldTextFromContact(*contact, field), "") << field.column;
      const bool isNull = fieldSqlValue(field, "") == "null";
      EXPECT_EQ(isNull, field.rule == FieldRule::Date) << field.column;
    }
  }
}

TEST_F(FieldMapTest, AnUpdateProtectsFaxNumbersAndMayKeepTheName) {
  addCard(1, {{"FullName", "홍길동"}, {"company_fax1", "02-1"}, {"home_fax", "02-2"}});
  addCard(2, {{"FullName", "김철수"}, {"company_fax1", "02-9"}, {"Categories", "VIP"}});
  struct Case {
    ContactWrite how;
    bool protectFax;
    const char* name;
    const char* businessFax;
    const char* homeFax;
  };
  for (const Case& c : {Case{ContactWrite::Update, true, "김철수", "02-1", "02-2"},
                        Case{ContactWrite::Update, false, "김철수", "02-9", ""},
                        Case{ContactWrite::UpdateKeepingName, false, "홍길동", "02-9", ""},
                        Case{ContactWrite::Create, true, "김철수", "02-9", ""}}) {
    const auto contact = written(created(1), 2, c.how, {.protectFax = c.protectFax});
    EXPECT_EQ(contact->text(P::FullName), c.name);
    EXPECT_EQ(contact->text(P::BusinessFaxNumber), c.businessFax);
    EXPECT_EQ(contact->text(P::HomeFaxNumber), c.homeFax);
    EXPECT_EQ(contact->text(P::Categories), "VIP");
    EXPECT_EQ(readVLID(*contact), "2");
  }
}

TEST_F(FieldMapTest, AnAddressGoesOutAsItsStreetAndLeavesCountryAndBox) {
  addCard(1, {{"FullName", "홍길동"}, {"company_addr", "서울특별시 강남구 테헤란로"}});
  auto contact = runtime->contacts().create();
  contact->setText(P::BusinessAddressCity, "City");
  contact->setText(P::BusinessAddressState, "State");
  contact->setText(P::BusinessAddressCountry, "대한민국");
  contact->setText(P::BusinessAddressPostOfficeBox, "7");
  contact = written(std::move(contact), 1, ContactWrite::Update);
  EXPECT_EQ(contact->text(P::BusinessAddressStreet), "서울특별시 강남구 테헤란로");
  EXPECT_EQ(contact->text(P::BusinessAddressCity) + contact->text(P::BusinessAddressState), "");
  EXPECT_EQ(fieldOf(*contact, "company_addr"), "서울특별시 강남구 테헤란로 7");
}

}  // namespace
}  // namespace vlout::outlook
