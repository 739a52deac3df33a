#include "ui/frm_outlook_sync_modify.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/component_fixture.h"

namespace vlout::ui {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class CompareWindowTest : public tests::ComponentFixture {
 protected:
  // Runs a sync in which `user` has the compare window of card 1 and "1.vcf".
  std::vector<std::string> compare(const std::function<void(frmOutlookSyncModify&)>& user) {
    toolkit->dialog = [&](Form& form) {
      user(dynamic_cast<frmOutlookSyncModify&>(form));
      if (form.isVisible()) form.requestClose();
    };
    return run(frmOutlookSync::kSync);
  }
  void makeConflict(const std::vector<std::pair<std::string, std::string>>& columns,
                    const std::string& lines) {
    startAfresh();
    addCard(1, columns);
    setStamps(1, "2025/01/02 00:00:00");
    writeContact("1.vcf", lines + "X-VLID:1\r\n", "2025/01/03 04:05:06");
  }
  std::vector<std::string> texts() const {
    std::vector<std::string> result;
    for (const auto& message : toolkit->messages) result.push_back(message.text);
    return result;
  }
};

TEST_F(CompareWindowTest, OpensLockedWithDifferencesMarked) {
  makeConflict({{"FullName", "홍길동"},
                {"JobTitle", "부장"},
                {"Department", " "},
                {"Categories", "VIP"},
                {"Memo_", "한\r\n줄"},
                {"Birthday", "1980/3/2"},
                {"company_nation", "대한민국"},
                {"company_sido", "서울"},
                {"company_addr", "테헤란로"}},
               "N:홍;길동;;;\r\nTITLE:이사\r\nNOTE:한\\n줄\r\nADR;TYPE=WORK:;;테헤란로;;서울;;"
               "대한민국\r\nBDAY:"
               "1980-03-02\r\n");
  bool shown = false;
  compare([&](frmOutlookSyncModify& window) {
    shown = true;
    EXPECT_EQ(window.Label32.text(), "▶▶▶▶▶");
    EXPECT_EQ(window.Label29.text(), "수정일:2025-01-02 00:00:00");
    EXPECT_EQ(window.Label30.text(), "수정일:2025-01-03 04:05:06");
    EXPECT_EQ(window.Text4.foreColour(), Colour::LightRed);
    EXPECT_EQ(window.Text47.foreColour(), Colour::LightRed);
    EXPECT_EQ(window.Text3.foreColour(), Colour::LightRed);  // a blank is not nothing
    EXPECT_EQ(window.Text54.foreColour(), Colour::Black);    // categories are never compared
    EXPECT_EQ(window.Text26.text(), "한\n줄");
    EXPECT_EQ(window.Text26.foreColour(), Colour::Black);
    EXPECT_EQ(window.Text22.text(), "1980-03-02");
    EXPECT_EQ(window.Text29.foreColour(), Colour::Black);
    EXPECT_EQ(window.Text27.text(), "");  // no date
    EXPECT_EQ(window.Text14.text(), "서울 테헤란로");
    EXPECT_EQ(window.VL_Company_Juso1.text(), "대한민국");
    EXPECT_EQ(window.Text37.text(), "서울 테헤란로");
    EXPECT_EQ(window.Text1.text() + window.Text50.text(), "홍길동홍길동");
    EXPECT_TRUE(window.Text1.locked() && window.Text54.locked());
    EXPECT_EQ(window.Text25.backColour(), Colour::ButtonFace);
    EXPECT_FALSE(window.Command1.visible() || window.Command2.visible());
    window.Check1.setValue(1);
    EXPECT_TRUE(window.Command1.visible() && window.Command2.visible());
    EXPECT_FALSE(window.Text1.locked());
    EXPECT_EQ(window.Text1.backColour(), Colour::White);
    window.Check1.setValue(0);
    EXPECT_TRUE(window.Text1.locked());
    window.Command8.press();
    window.Command5.press();
    window.Command7.press();  // has no action
  });
  EXPECT_TRUE(shown);
  EXPECT_EQ(toolkit->messages[0].text.substr(0, 10), std::string("→충돌←\r\n").substr(0, 10));
  EXPECT_EQ(toolkit->messages[1].text, "현재 설치된 아웃룩버전은 지원하지 않습니다!");
  setStamps(1, "2025/01/01 00:00:00");
  EXPECT_THAT(preview(frmOutlookSync::kSync),
              AllOf(Contains("  직책: 부장 → 이사|명함|변경"), Not(Contains(HasSubstr("메모")))));
}

TEST_F(CompareWindowTest, ValidatesEachSideInItsOwnWay) {
  struct Case {
    bool cardSide;
    const char* name;
    const char* birthday;
    const char* anniversary;
    const char* refusal;  // the beginning of the message, or "" when it goes through
  };
  const std::vector<Case> cases{
      {true, "", "", "", "이름은 공백일수 없습니다!"},
      {true, "홍", "언젠가", "",
       "생년월일 날짜형식이 부적당합니다.\r\n형식: 2006/12/25 or 2006-09-25"},
      {true, "홍", "", "2001-02-03", "기념일 날짜형식이 부적당합니다."},  // it needs a birthday
      {true, "홍", "1980-01-01", "언젠가", ""},  // and is not looked at itself
      {true, "홍", "1980-01-01", "2001-02-03", ""},
      {true, "홍", "", "", ""},
      {false, "", "", "", "이름은 공백일수 없습니다!"},
      {false, "홍", "1980-13-01", "", "생년월일 날짜형식이 부적당합니다."},
      {false, "홍", "", "2001-02-03", ""},
      {false, "홍", "1980-01-01", "언젠가", "기념일 날짜형식이 부적당합니다."},
  };
  for (const Case& c : cases) {
    makeConflict({{"FullName", "홍길동"}, {"JobTitle", "부장"}}, "N:홍;길동;;;\r\n");
    std::vector<std::string> messages;
    compare([&](frmOutlookSyncModify& window) {
      window.Check1.setValue(1);
      (c.cardSide ? window.Text1 : window.Text50).setText(c.name);
      (c.cardSide ? window.Text22 : window.Text29).setText(c.birthday);
      (c.cardSide ? window.Text24 : window.Text27).setText(c.anniversary);
      (c.cardSide ? window.Command1 : window.Command2).press();
      messages = texts();
      EXPECT_EQ(window.isVisible(), *c.refusal != '\0');
    });
    if (*c.refusal == '\0') {
      EXPECT_THAT(messages, IsEmpty()) << c.birthday << c.anniversary;
      EXPECT_EQ(valueOf(1, "Birthday"), *c.birthday == '\0' ? "NULL" : c.birthday);
    } else {
      EXPECT_THAT(messages, ElementsAre(StartsWith(c.refusal)));
    }
  }
}

// The street of a row may hold what its other parts hold too. Keeping either side, again and again,
// leaves the line as it is.
TEST_F(CompareWindowTest, AnAddressDoesNotGrow) {
  struct Case {
    const char* state;
    const char* city;
    const char* street;
    const char* detail;
    const char* line;
  };
  for (const Case& c :
       {Case{"서울", "강남구", "서울 강남구 테헤란로 1", "5층", "서울 강남구 테헤란로 1 5층"},
        Case{"서울", "강남구", "서울 강남구 테헤란로 1 5층", "5층", "서울 강남구 테헤란로 1 5층"},
        Case{"서울", "강남구", "테헤란로 1", "", "서울 강남구 테헤란로 1"},
        Case{"서울", "강", "강남로 1", "", "서울 강 강남로 1"},
        Case{"Gyeonggi", "Suwon", "1 Main-ro", "5F", "5F 1 Main-ro Suwon Gyeonggi"}}) {
    makeConflict({{"FullName", "홍길동"},
                  {"company_nation", "대한민국"},
                  {"company_sido", c.state},
                  {"company_sigungu", c.city},
                  {"company_addr", c.street},
                  {"company_addr2", c.detail}},
                 "N:홍;길동;;;\r\n");
    for (const bool cardSide : {true, false, true}) {
      compare([&](frmOutlookSyncModify& window) {
        EXPECT_EQ(window.Text14.text(), c.line);
        window.Check1.setValue(1);
        (cardSide ? window.Command1 : window.Command2).press();
      });
      EXPECT_EQ(valueOf(1, "company_addr"), c.line);
      setStamps(1, "2099/01/02 00:00:00");
    }
  }
}

}  // namespace
}  // namespace vlout::ui
