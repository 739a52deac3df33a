#include "ui/card_picture_attacher.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "outlook/vcard/vcard_contact.h"
#include "tests/support/component_fixture.h"
#include "text/ascii.h"
#include "ui/skin.h"

namespace vlout::ui {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::StartsWith;

class CardPictureAttacherTest : public tests::ComponentFixture {
 protected:
  // The attachments of the only contact, as name=content.
  std::vector<std::string> attachments() {
    const auto contacts = openContacts();
    const auto contact = contacts->item(1);
    std::vector<std::string> result;
    for (std::size_t i = 1; i <= contact->attachmentCount(); ++i) {
      result.push_back(contact->attachmentName(i) + "=" + tests::attachmentContent(*contact, i));
    }
    return result;
  }
  void edit(const std::string& assignment) {
    execute("UPDATE tbl_namecard SET " + assignment +
            ",[Last_moddate]='2099/01/01 00:00:00' where i_idx=15");
  }
};

TEST_F(CardPictureAttacherTest, ThePictureReplacesTheOneBeforeItOrFailsAlone) {
  addCard(15, {{"FullName", "홍길동"}, {"Fname", "Ärger.jpg"}});
  edit("[Thumbnail]='first'");
  run(frmOutlookSync::kExport);
  EXPECT_THAT(attachments(), ElementsAre("Ärger.jpg=first"));
  edit("[Thumbnail]='second',[Fname]='äRGER.JPG'");
  const auto blocked = folder() / "temp/명함이미지15.jpg";
  tests::writeFile(blocked / "x", "");  // a folder in the way of the temporary file
  EXPECT_THAT(run(frmOutlookSync::kExport),
              AllOf(Contains(AllOf(StartsWith("사진 실패→(홍길동): "), EndsWith("|0%|실패"))),
                    Contains("갱신→(홍길동)|100%|완료")));
  EXPECT_THAT(attachments(), ElementsAre("Ärger.jpg=first"));
  std::filesystem::remove_all(blocked);
  edit("[JobTitle]='이사'");
  run(frmOutlookSync::kExport);
  EXPECT_THAT(attachments(), ElementsAre("äRGER.JPG=second"));
  edit("[Fname]='other.jpg'");
  run(frmOutlookSync::kExport);
  EXPECT_THAT(attachments(), ElementsAre("äRGER.JPG=second", "other.jpg=second"));
  edit("[Thumbnail]=null");
  run(frmOutlookSync::kExport);
  EXPECT_EQ(attachments().size(), 2U);  // no picture: what is attached stays
  EXPECT_THAT(tests::fileNames(folder() / "temp"), IsEmpty());
}

TEST_F(CardPictureAttacherTest, WithoutAFileNameItCarriesTheTemporaryOne) {
  addCard(15, {{"FullName", "홍길동"}});
  for (const char* picture : {"first", "second"}) {
    edit(std::string("[Thumbnail]='") + picture + "'");
    run(frmOutlookSync::kExport);
    EXPECT_THAT(attachments(), ElementsAre(std::string("명함이미지15.jpg=") + picture));
  }
}

TEST_F(CardPictureAttacherTest, AContactShowsItsCardsPictureUnlessItHasItsOwn) {
  for (const std::string version : {"2.1", "3.0", "4.0"}) {
    startAfresh();
    addCard(15, {{"FullName", "홍길동"}});
    writeContact("a.vcf", "N:;홍길동;;;\r\nX-VLID:15\r\n");
    const auto replace = [&](const std::string& old, const std::string& now) {
      tests::writeFile(contactsFolder() / "a.vcf",
                       text::replaceAll(contactText("a.vcf"), old, now));
    };
    replace("VERSION:3.0", "VERSION:" + version);
    const auto shownFor = [&](const std::string& thumbnail) {
      edit("[Thumbnail]=" + thumbnail);
      run(frmOutlookSync::kExport, [](frmOutlookSync& window) { window.Check8.setValue(1); });
      const auto contacts = openContacts();
      return dynamic_cast<outlook::vcard::VCardContact&>(*contacts->item(1)).shownPicture();
    };
    EXPECT_EQ(shownFor("'\xFF\xD8 first'"), "\xFF\xD8 first") << version;
    EXPECT_EQ(shownFor("'\xFF\xD8 second'"), "\xFF\xD8 second") << version;
    EXPECT_EQ(contactText("a.vcf").find(":data:image/jpeg;base64,/9gg") != std::string::npos,
              version == "4.0");
    EXPECT_EQ(shownFor("'no JPEG'"), "") << version;
    EXPECT_EQ(shownFor("'\xFF\xD8 third'"), "\xFF\xD8 third") << version;
    replace("\r\n ", "");             // folds
    replace("/9ggdGhpcmQ=", "/9gg");  // another program's picture, under our mark
    EXPECT_EQ(shownFor("'\xFF\xD8 fourth'"), "\xFF\xD8 ") << version;
    EXPECT_EQ(shownFor("null"), "\xFF\xD8 ") << version;
  }
}

TEST(SaveFieldToFile, WritesEveryByteInEitherWay) {
  const tests::TemporaryFolder folder;
  const auto file = folder.path() / "picture.jpg";
  for (const std::size_t size : {0U, 1U, 8191U, 8192U, 8193U, 20000U}) {
    std::string value(size, '\0');
    for (std::size_t i = 0; i < size; ++i) value[i] = static_cast<char>(i * 31);
    for (const FieldSaving how : {FieldSaving::Chunks, FieldSaving::Stream}) {
      tests::writeFile(file, "an older file that is longer than nothing");
      saveFieldToFile(file, value, how, 8192);
      EXPECT_EQ(tests::readFile(file), value) << size;
    }
  }
  EXPECT_THROW(saveFieldToFile(folder.path() / "none" / "x", "a", FieldSaving::Chunks, 8192),
               std::system_error);
}

TEST_F(CardPictureAttacherTest, SkinsFollowTheHostsSettings) {
  struct Case {
    const char* settings;
    std::vector<std::string> skins;
  };
  const std::vector<Case> cases{{"[COMMON]\r\nSKIN_THEME=2\r\n", {"Office2007.cjstyles"}},
                                {"[COMMON]\r\nSKIN_THEME=7\r\n", {"WinXP.Luna.cjstyles"}},
                                {"[COMMON]\r\nSKIN_THEME=8\r\n", {}},
                                {"[COMMON]\r\nSKIN_THEME=-1\r\n", {}},
                                {"[COMMON]\r\nSKIN_THEME=65538\r\n", {}},
                                {"[COMMON]\r\nSKIN_THEME=blue\r\n", {"WinXP.Luna.cjstyles"}},
                                {"\xFF\xFF", {"WinXP.Luna.cjstyles"}}};
  for (const bool fileThere : {false, true}) {
    for (const Case& c : cases) {
      toolkit->skins.clear();
      tests::writeFile(folder() / "settings.ini", c.settings);
      open([](frmOutlookSync&) {});
      EXPECT_EQ(toolkit->skins, fileThere ? c.skins : std::vector<std::string>{}) << c.settings;
    }
    tests::writeFile(folder() / "Styles" / "Office2007.cjstyles", "");
    tests::writeFile(folder() / "Styles" / "WinXP.Luna.cjstyles", "");
  }
}

}  // namespace
}  // namespace vlout::ui
