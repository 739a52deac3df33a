#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "entry/export_list.h"
#include "entry/ini_file.h"
#include "entry/option_file.h"
#include "entry/text_file.h"
#include "tests/support/temporary_folder.h"
#include "text/ascii.h"

namespace vlout::entry {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(OptionFile, AnythingButZeroIsChecked) {
  struct Case {
    const char* line;
    const char* value;
  };
  for (const Case& c :
       {Case{"OUT_CHECK1=0", "0"}, Case{"OUT_CHECK1 =  0  ", "0"}, Case{"out_check1=\"0\"", "0"},
        Case{"OUT_CHECK1=2", "1"}, Case{"OUT_CHECK1=", "1"}, Case{"OUT_CHECK1=00", "1"},
        Case{"OTHER=0", "1"}}) {
    const tests::TemporaryFolder folder;
    for (const char* end : {"\r\n", "\n"}) {
      const std::string text = std::string("[Windows]\nTop=5\n[SET]\n") + c.line + "\n";
      tests::writeFile(folder.path() / "VelmoraOlSync.ini", text::replaceAll(text, "\n", end));
      EXPECT_EQ(loadOptions(folder.path())[0], c.value) << c.line;
      EXPECT_EQ(loadOptions(folder.path())[1], "1");
    }
  }
}

TEST(OptionFile, SavingKeepsWhatElseIsInTheFile) {
  const tests::TemporaryFolder folder;
  const auto file = folder.path() / "VelmoraOlSync.ini";
  // "; 설정", and a key of Korean letters, in code page 949
  tests::writeFile(file,
                   "; \xBC\xB3\xC1\xA4\r\n[Windows]\r\nTop=12\r\n\r\n[SET]\r\nOUT_CHECK1=1\r\n"
                   "\xC0\xCC\xB8\xA7=\xC8\xAB\r\n");
  ui::OptionValues options;
  options.fill("0");
  options[7] = "2";
  saveOptions(folder.path(), options);
  const std::string text = tests::readFile(file);
  for (const char* kept :
       {"; \xBC\xB3\xC1\xA4\r\n", "Top=12\r\n", "OUT_CHECK1=0\r\n", "OUT_CHECK8=2\r\n",
        "OUT_CHECK10=0\r\n", "\xC0\xCC\xB8\xA7=\xC8\xAB\r\n"}) {
    EXPECT_THAT(text, HasSubstr(kept));
  }
  EXPECT_EQ(loadOptions(folder.path())[7], "1");
  EXPECT_THAT(tests::fileNames(folder.path()), ElementsAre("VelmoraOlSync.ini"));
}

TEST(OptionFile, OddLinesSurviveAndProtectedFilesStay) {
  const tests::TemporaryFolder folder;
  const auto file = folder.path() / "VelmoraOlSync.ini";
  const std::string odd = "just a line\r\n[Other]\r\nA=1\r\nA=2\r\nB = \"x y\"\r\n=5\r\n\r\n";
  tests::writeFile(file, odd + "[set]\r\nout_check2 = 0\r\n\r\n; end\r\n[Last]\r\nz=1");
  ui::OptionValues options;
  options.fill("1");
  saveOptions(folder.path(), options);
  std::string expected = odd + "[set]\r\nOUT_CHECK2=1\r\n\r\n; end\r\nOUT_CHECK1=1\r\n";
  for (int i = 3; i <= 10; ++i) expected += "OUT_CHECK" + std::to_string(i) + "=1\r\n";
  EXPECT_EQ(tests::readFile(file), expected + "[Last]\r\nz=1");
  // A file in UTF-8 with a character that the code page lacks, and one in no encoding.
  for (const auto& [start, loaded] :
       {std::pair{"\xEF\xBB\xBF[set]\n; 😀\n", "0"}, std::pair{"\xFF\xFE\r\n[SET]\n", "1"}}) {
    std::string content = std::string(start) + "OUT_CHECK1=0\n";
    tests::writeFile(file, content + "\n");
    EXPECT_EQ(loadOptions(folder.path())[0], loaded);
    saveOptions(folder.path(), options);
    content[content.size() - 2] = '1';
    for (int i = 2; i <= 10; ++i) content += "OUT_CHECK" + std::to_string(i) + "=1\n";
    EXPECT_EQ(tests::readFile(file), content + "\n");
  }
  // A folder stands for a file that is there and cannot be read; root reads any file.
  std::filesystem::remove(file);
  std::filesystem::create_directory(file);
  saveOptions(folder.path(), options);
  EXPECT_TRUE(std::filesystem::is_directory(file));
}

TEST(TextFile, IsReadInEitherEncodingOrRefusedByName) {
  const tests::TemporaryFolder folder;
  const auto file = folder.path() / "list.txt";
  for (const char* content : {"\xC8\xAB", "홍", "\xEF\xBB\xBF홍"}) {
    tests::writeFile(file, content);
    EXPECT_EQ(readTextFile(file), "홍");
  }
  tests::writeFile(file, "1\r\n\xFF\xFF\r\n");
  try {
    static_cast<void>(readTextFile(file));
    FAIL();
  } catch (const EncodingError& error) {
    EXPECT_THAT(error.what(), HasSubstr("list.txt"));
  }
  EXPECT_THROW(static_cast<void>(readTextFile(folder.path())), std::system_error);
}

TEST(ExportList, CardsComeAsSevenDigitsInTextOrder) {
  struct Case {
    const char* content;
    std::vector<std::string> ids;
  };
  const std::vector<Case> cases{
      {"12\r\n10\r\n9\r\n", {"0000009", "0000010"}},
      {"12\n 42 \n\n7", {"0000007", "0000042"}},
      {"12\r\n123456789\r\n2\r\n", {"0000002", "123456789"}},
      {"\r\n7\r\n", {"0000007"}},
      {"12\r\nabc\r\n", {"abc"}},
      {"12\r\n", {}},
      {"", {}},
  };
  const tests::TemporaryFolder folder;
  const ExportList list(folder.path());
  EXPECT_THAT(list.readSelectedCards(), IsEmpty());  // no file
  for (const Case& c : cases) {
    tests::writeFile(list.file(), c.content);
    EXPECT_EQ(list.readSelectedCards(), c.ids) << c.content;
  }
  list.remove();
  list.remove();
  EXPECT_FALSE(std::filesystem::exists(list.file()));
}

}  // namespace
}  // namespace vlout::entry
