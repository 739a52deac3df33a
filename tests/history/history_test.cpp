// Runs that are recorded and taken back, on real files: what an undo puts back, what it tells of
// edits made since, and how long its means are kept.
#include <fcntl.h>
#include <fstream>
#include <numeric>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "history/restore_point.h"
#include "history/undo.h"
#include "store/sql.h"
#include "tests/support/component_fixture.h"
#include "tests/support/rename_hook.h"
#include "text/ascii.h"

namespace vlout::history {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using ui::frmOutlookSync;

class HistoryTest : public tests::ComponentFixture {
 protected:
  // Both sides, with the times of the files.
  std::string everything() {
    return tests::filesDump(contactsFolder()) + tests::rowsDump(database, "extra");
  }

  // Three pairs and a card without a contact; every side has something that is newer.
  void makePairs() {
    for (const char* id : {"1", "2", "3"}) {
      addCard(
          std::stoi(id),
          {{"FullName", std::string("사람") + id}, {"JobTitle", "행"}, {"Memo_", "It's\r\nlong"}});
      setStamps(std::stoi(id), "2025/01/01 10:00:00", "2025/01/01 10:00:00", "2025/01/01 10:00:00");
      writeContact(std::string(id) + ".vcf",
                   std::string("FN:사람") + id + "\r\nN:사람" + id +
                       ";;;;\r\nTITLE:행\r\nX-VLID:" + id + "\r\n",
                   "2025/01/01 10:00:00");
    }
    execute(
        "UPDATE tbl_namecard SET JobTitle='새 행',Last_moddate='2025/02/01 10:00:00' where "
        "i_idx=1");
    editContact("2.vcf", "새 연락처");
    // Other names of a contact are no contacts, and no edits when the contact is written.
    std::filesystem::create_symlink("1.vcf", contactsFolder() / "0.vcf");
    std::filesystem::create_hard_link(contactsFolder() / "2.vcf", contactsFolder() / "22.vcf");
    addCard(4, {{"FullName", "새사람"}});
    writeContact("5.vcf", "FN:다섯\r\nN:다섯;;;;\r\n", "2025/03/01 10:00:00");
  }

  void editContact(const std::string& file, const std::string& title) {
    const auto path = contactsFolder() / file;
    const std::string text = tests::readFile(path);
    std::filesystem::remove(path);
    tests::writeFile(path, text::replaceAll(text, "TITLE:행", "TITLE:" + title));
    tests::setModified(path, "2025/02/01 10:00:00");
  }

  // An edited card whose contact shares its file with another one.
  void makeMany() {
    const std::string time = "2025/01/01 10:00:00";
    addCard(1, {{"FullName", "사람1"}, {"JobTitle", "새 행"}});
    setStamps(1, "2025/02/01 10:00:00", time, time);
    writeContact("many.vcf", "FN:사람1\r\nN:사람1;;;;\r\nTITLE:행\r\nX-VLID:1\r\n", time);
    tests::writeFile(many, tests::readFile(many) + "BEGIN:VCARD\r\nEND:VCARD\r\n");
    tests::setModified(many, time);
  }
  // As another program does it.
  void editMany(const std::string& time) {
    const std::string text = tests::readFile(many);
    std::filesystem::remove(many);
    tests::writeFile(many, text::replaceAll(text, "행", "남의 것"));
    tests::setModified(many, time);
  }
  // An export that cannot write that file, since another program is always faster.
  void exportCutShort() {
    tests::onExchange([&](int exchange) {
      if (exchange % 2 == 0) {
        tests::setModified(many, "2024/01/01 10:00:" + std::to_string(10 + exchange));
      }
      return true;
    });
    run(frmOutlookSync::kExport);
    tests::onExchange({});
    EXPECT_TRUE(std::filesystem::exists(contactsFolder() / ".vloutsync-journal"));
    tests::setModified(many, "2025/01/01 10:00:00");
  }
  const std::filesystem::path many = contactsFolder() / "many.vcf";

  std::vector<RunRecord> runs() { return Runs(folder()).list(); }
};

TEST_F(HistoryTest, UndoPutsBothSidesBackAndCanItselfBeUndone) {
  for (const auto mode :
       {frmOutlookSync::kExport, frmOutlookSync::kImport, frmOutlookSync::kSync}) {
    startAfresh();
    makePairs();
    const std::string before = everything();
    run(mode);
    const std::string after = everything();
    ASSERT_NE(after, before) << mode;
    const int number = runs().back().number;
    {
      Undo undo(folder(), 0);
      EXPECT_EQ(undo.run().number, number);
      EXPECT_THAT(undo.edits(), IsEmpty());
      undo.perform();
    }
    EXPECT_EQ(everything(), before) << mode;
    EXPECT_EQ(runs().back().mode, "undo");
    EXPECT_EQ(runs()[runs().size() - 2].undoneBy, runs().back().number);
    Undo(folder(), runs().back().number).perform();
    EXPECT_EQ(everything(), after) << mode;
    EXPECT_EQ(runs()[runs().size() - 3].undoneBy, 0);
    run(mode);  // and a run again finds nothing to do
    EXPECT_FALSE(runs().back().wrote) << mode;
  }
}

// What was edited where the runs wrote is told and lost, what was edited elsewhere stays.
TEST_F(HistoryTest, EditsMadeSinceAreToldOrStay) {
  struct Case {
    const char* told;  // nothing for what stays
    std::function<void()> edit;
    std::function<void()> later = [] {};
    frmOutlookSync::Mode mode = frmOutlookSync::kSync;
  };
  const auto sql = [&](const char* statement) { return [=, this] { execute(statement); }; };
  const auto sync = [&] { run(frmOutlookSync::kSync); };
  const std::vector<Case> cases{
      {nullptr, [] {}},
      {nullptr, [] {}, sync},
      {nullptr, sql("UPDATE tbl_namecard SET JobTitle=JobTitle")},
      {nullptr, sql("UPDATE tbl_namecard SET Memo_=upper(Memo_) where i_idx=3")},
      {nullptr, sql("UPDATE tbl_namecard SET FullName='사람1',Fname='' where i_idx=1")},
      // An edit of another column that the next run is to transfer.
      {nullptr, sql("UPDATE tbl_namecard SET Memo_='나중',Last_moddate='2040/01/01 00:00:00' "
                    "where i_idx=1")},
      {"명함 고침: 사람1", sql("UPDATE tbl_namecard SET Outlook_modate='' where i_idx=1")},
      {"명함 고침: 사람2", sql("UPDATE tbl_namecard SET JobTitle='고침' where i_idx=2")},
      {"명함 고침: 사람2",  // before another run that takes it over
       sql("UPDATE tbl_namecard SET JobTitle='고침',Last_moddate='2040/01/01 00:00:00' where "
           "i_idx=2"),
       sync},
      {"명함 고침: 다섯", [] {}, sql("UPDATE tbl_namecard SET Memo_='고침' where FullName='다섯'"),
       frmOutlookSync::kImport},
      {nullptr,
       [&] {
         addCard(9, {{"FullName", "나중"}});
       }},
      {nullptr, sql("DELETE FROM tbl_namecard where i_idx=1")},
      {nullptr, sql("DELETE FROM tbl_namecard where i_idx=3")},
      {nullptr, sql("INSERT INTO tbl_folder VALUES(9,1,'거래처')")},
      {nullptr, [] {}, sql("ALTER TABLE tbl_namecard ADD COLUMN extra TEXT")},
      {nullptr, [&] { editContact("3.vcf", "고침"); }},
      {nullptr, [&] { editContact("3.vcf", "고침"); }, sync},
      {"연락처 고침: 사람1 (1.vcf)", [] {},
       [&] { std::ofstream(contactsFolder() / "1.vcf", std::ios::app) << "\r\n"; }},
      {nullptr, [&] { writeContact("n.vcf", "FN:나중\r\n", "2025/03/01 10:00:00"); }},
      {nullptr, [&] { std::filesystem::remove(contactsFolder() / "5.vcf"); }},
      {"연락처 삭제: 1.vcf", [] {}, [&] { std::filesystem::remove(contactsFolder() / "1.vcf"); }},
  };
  const auto prepare = [&] {
    startAfresh();
    execute("DELETE FROM tbl_folder where f_idx=9");
    makePairs();
  };
  for (std::size_t i = 0; i < cases.size(); ++i) {
    const Case& c = cases[i];
    prepare();
    if (c.told == nullptr) c.edit();
    const std::string expected = everything();
    prepare();
    run(c.mode);
    c.edit();
    c.later();
    Undo undo(folder(), 1);
    if (c.told == nullptr) {
      EXPECT_THAT(undo.edits(), IsEmpty()) << i;
    } else {
      EXPECT_THAT(undo.edits(), ElementsAre(HasSubstr(c.told))) << i;
    }
    undo.perform();  // as when it is forced
    EXPECT_EQ(everything(), expected) << i;
  }
}

TEST_F(HistoryTest, AFileThatWasChangedInPlaceStaysAsItIs) {
  makePairs();
  run(frmOutlookSync::kSync);
  // Another program wrote into the very file that the restore point keeps, by another name of it.
  std::ofstream(folder() / "history/1/kept/1.vcf", std::ios::app) << "X-LATER:1\r\n";
  const std::string written = contactText("1.vcf");
  Undo undo(folder(), 0);
  EXPECT_THAT(undo.edits(), IsEmpty());
  ASSERT_THAT(undo.lost(), SizeIs(1));
  EXPECT_EQ(undo.lost()[0].name, "1.vcf");
  undo.perform();
  EXPECT_EQ(contactText("1.vcf"), written);
  EXPECT_EQ(store::readCard(database, "2")->field("JobTitle"), "행");
}

TEST_F(HistoryTest, ADamagedPointIsRefusedAndHarmsNothing) {
  const auto point = [&](const char* part) { return folder() / "history" / "1" / part; };
  const auto cut = [](const std::filesystem::path& file) {
    std::filesystem::resize_file(file, std::filesystem::file_size(file) / 2);
  };
  const auto makePipe = [](const std::filesystem::path& file) {
    std::filesystem::remove(file);
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
  };
  const std::vector<std::function<void()>> damages{
      [&] { cut(point("written")); },
      [&] { tests::writeFile(point("written"), ""); },
      [&] { std::filesystem::remove(point("written")); },
      [&] {
        std::string log = tests::readFile(point("written"));
        log[log.size() / 2] ^= 1;
        tests::writeFile(point("written"), log);
      },
      [&] { std::filesystem::remove_all(point("kept")); },
      [&] { std::filesystem::create_directory(point("point")); },  // of an earlier version
      [&] { makePipe(point("written")); },
      [&] { makePipe(point("run")); },
      [&] { tests::writeFile(point("run"), ""); },
      [&] { tests::writeFile(point("run"), "\xFF=\n==\nwrote=1\nstarted=never\n"); },
  };
  for (std::size_t i = 0; i < damages.size(); ++i) {
    startAfresh();
    makePairs();
    run(frmOutlookSync::kExport);
    damages[i]();
    const std::string before = everything();
    EXPECT_ANY_THROW(Undo(folder(), 1).perform()) << i;
    EXPECT_EQ(everything(), before) << i;
  }
  // It is not the point that is to blame for a damaged database.
  startAfresh();
  makePairs();
  run(frmOutlookSync::kExport);
  const auto file = folder() / "VelmoraDB.vdb";
  execute("PRAGMA wal_checkpoint(TRUNCATE)");
  for (const std::size_t whole : {4096U, 0U}) {
    const std::string bytes = tests::readFile(file);
    std::ofstream(file, std::ios::binary)
        << bytes.substr(0, whole) << std::string(bytes.size() - whole, 'x');
    try {
      Undo(folder(), 1).perform();
      ADD_FAILURE();
    } catch (const store::DatabaseError& error) {
      EXPECT_THAT(error.what(), testing::StartsWith(file.string() + ": "));
    }
  }
}

TEST_F(HistoryTest, AFileThatCannotBePutBackDoesNotKeepTheOthersAndTheUndoIsRepeated) {
  makePairs();
  const std::string before = everything();
  run(frmOutlookSync::kSync);
  const auto kept = folder() / "history" / "1" / "kept" / "1.vcf";
  {
    Undo undo(folder(), 1);
    std::filesystem::rename(kept, folder() / "away.vcf");
    EXPECT_THROW(undo.perform(), UndoError);
  }
  EXPECT_THAT(contactText("1.vcf"), HasSubstr("TITLE:새 행"));
  std::filesystem::rename(folder() / "away.vcf", kept);
  {
    // Nor does one that another program writes in that moment.
    const std::string theirs =
        text::replaceAll(contactText("2.vcf"), "TITLE", "X-THEIRS:1\r\nTITLE");
    Undo undo(folder(), 1);
    tests::onExchange([&](int exchange) {
      if (exchange == 0) {
        tests::writeFile(folder() / "theirs", theirs);
        std::filesystem::rename(folder() / "theirs", contactsFolder() / "1.vcf");
      }
      return true;
    });
    EXPECT_THROW(undo.perform(), UndoError);
    tests::onExchange({});
    EXPECT_EQ(contactText("1.vcf"), theirs);
  }
  // Not even many runs later is the point gone that has to be gone back to.
  const Runs list(folder());
  RunRecord later = runs().front();
  for (int i = 0; i < 25; ++i) list.begin(later);
  list.prune();
  for (int number = 4; number <= later.number; ++number) {
    std::filesystem::remove_all(list.folderOf(number));
  }
  Undo(folder(), 1).perform();
  EXPECT_EQ(everything(), before);
}

// A run whose contacts were saved and whose rows were not, as a kill in between leaves it.
TEST_F(HistoryTest, TheNextRunCompletesWhatIsCertain) {
  struct Case {
    const char* what;
    std::string dates;  // of cards 1 and 4 afterwards, where they have the times of their contacts
    std::function<void()> since = [] {};
  };
  const auto record = [&](const std::function<void(RunRecord&)>& change) {
    RunRecord run = runs().front();
    change(run);
    Runs(folder()).save(run);
  };
  const std::vector<Case> cases{
      {"nothing", "14"},
      {"the contact", "4",
       [&] { std::ofstream(contactsFolder() / "1.vcf", std::ios::app) << '\n'; }},
      {"the row", "4",
       [&] { execute("UPDATE tbl_namecard SET JobTitle='더 새 행' where i_idx=1"); }},
      {"a copy", "4",
       [&] { std::filesystem::copy_file(contactsFolder() / "1.vcf", contactsFolder() / "c.vcf"); }},
      {"a point that is gone", "",
       [&] { std::filesystem::remove(folder() / "history/1/written"); }},
      {"an end", "", [&] { record([](RunRecord& run) { run.state = RunState::Completed; }); }},
      {"another folder", "", [&] { record([](RunRecord& run) { run.contacts = "other"; }); }},
  };
  for (const Case& c : cases) {
    startAfresh();
    makePairs();
    execute("UPDATE tbl_namecard SET Last_moddate='2025/02/01 10:00:00' where i_idx=4");
    store::sqlite::execute(
        database.database(),
        "CREATE TRIGGER killed BEFORE UPDATE ON tbl_namecard WHEN NEW.i_idx IN (1,4) "
        "BEGIN SELECT RAISE(ABORT,'killed'); END");
    run(frmOutlookSync::kExport);
    execute("DROP TRIGGER killed");
    record([](RunRecord& run) { run.state = RunState::Unfinished; });
    c.since();
    auto previewed = preview(frmOutlookSync::kSync);
    std::erase_if(previewed, [](const std::string& line) { return line.starts_with("  "); });
    const auto lines = run(frmOutlookSync::kSync);
    EXPECT_EQ(previewed, lines) << c.what;
    std::string dates;
    for (const char* id : {"1", "4"}) {
      const auto row = store::readCard(database, id);
      if (row->field("VLLastsync_date") == row->field("Last_moddate")) dates += id;
    }
    EXPECT_EQ(dates, c.dates) << c.what;
    // What was sent whole is nothing to ask the user about.
    const auto conflicts = std::count_if(lines.begin(), lines.end(), [](const std::string& line) {
      return line.find("충돌") != std::string::npos;
    });
    EXPECT_EQ(static_cast<std::size_t>(conflicts), 2 - dates.size()) << c.what;
  }
}

// Cards of one file are written when the run ends; another program may have been there before.
TEST_F(HistoryTest, ARowWhoseSaveIsLostCountsAsChangedOnBothSides) {
  struct Case {
    const char* what;
    std::function<void()> others;
  };
  const std::vector<Case> cases{
      {"an edit", [&] { editMany("2025/03/01 10:00:00"); }},
      {"an edit in the same second", [&] { editMany("2025/01/01 10:00:00"); }},
      {"an edit a second later", [&] { editMany("2025/01/01 10:00:01"); }},
      {"another name", [&] { std::filesystem::rename(many, contactsFolder() / "m.vcf"); }},
  };
  for (const bool isKilled : {false, true}) {
    for (const Case& c : cases) {
      SCOPED_TRACE(std::string(c.what) + (isKilled ? " after a kill" : ""));
      startAfresh();
      makeMany();
      if (isKilled) {
        exportCutShort();
        c.others();
      } else {
        toolkit->onPump = [&] {
          if (!std::filesystem::exists(contactsFolder() / ".vloutsync-journal")) return;
          toolkit->onPump = {};
          c.others();
        };
        const auto reported = run(frmOutlookSync::kExport);
        EXPECT_THAT(reported, testing::Contains(HasSubstr("실패→(사람1)")));
      }
      const auto isConflict = testing::Contains(HasSubstr("→충돌←(사람1)"));
      EXPECT_THAT(preview(frmOutlookSync::kSync), isConflict);
      EXPECT_THAT(run(frmOutlookSync::kSync), isConflict);
      EXPECT_EQ(valueOf(1, "JobTitle"), "새 행");
      EXPECT_THAT(contactText(cardFiles().front()), testing::Not(HasSubstr("새 행")));
      // What the next run had to do about it is none of the user's edits.
      Undo undo(folder(), 1);
      EXPECT_THAT(undo.edits(), testing::Each(HasSubstr(".vcf")));
      undo.perform();
      EXPECT_EQ(valueOf(1, "Last_moddate"), "2025/02/01 10:00:00");
    }
  }
}

TEST_F(HistoryTest, AnUndoFirstCompletesWhatWasCutShort) {
  for (const bool isLinked : {false, true}) {
    for (const bool isEdited : {false, true}) {
      startAfresh();
      makeMany();
      if (isLinked) std::filesystem::create_hard_link(many, contactsFolder() / "other.vcf");
      const std::string before = everything();
      exportCutShort();
      if (isEdited) editMany("2025/03/01 10:00:00");
      Undo undo(folder(), 1);
      EXPECT_THAT(undo.edits(), SizeIs(isEdited ? 1 : 0)) << isLinked;
      undo.perform();
      EXPECT_EQ(everything(), before) << isLinked << isEdited;
    }
  }
}

TEST_F(HistoryTest, OldAndManyPointsAreDroppedWhateverTheClockSays) {
  struct Case {
    std::vector<int> days;  // on which the runs were made
    std::vector<int> points;
    int firstRecord;
    std::size_t idle = 0;  // how many of them, before the last one, wrote nothing
  };
  std::vector<int> today(22, 0);
  std::vector<int> ofToday(20);
  std::iota(ofToday.begin(), ofToday.end(), 3);
  const std::vector<Case> cases{
      {{-90, 0, 0, 0, 0}, {1, 2, 3, 4, 5}, 1},  // the clock may have gone wrong just now
      {{-90, -80, 0, 0, 0, 0, 0}, {3, 4, 5, 6, 7}, 3},
      {{-90, -80, -70, -60, -50, -40}, {1, 2, 3, 4, 5, 6}, 1},
      {{-90, 5, 4, 3, 2, 1, 0}, {2, 3, 4, 5, 6, 7}, 2},
      {{0, 200, 201, 0, 0, 0}, {1, 2, 3, 4, 5, 6}, 1},  // ahead, and back again
      {{0, 200, 201, 202, 203}, {1, 2, 3, 4, 5}, 1},
      {{0, 0, 200, 200, 200, 200, 200, 201}, {1, 2, 8}, 1, 5},  // idle runs prove no clock
      {{-2, -1, 200, 0, 0, 0, 0, 0}, {1, 2, 3, 4, 5, 6, 7, 8}, 1},
      {{-18000, 0, 0, 0, 0, 0}, {1, 2, 3, 4, 5, 6}, 1},  // in the seventies
      {{-2, -18000, 0, 0, 0, 0, 0}, {1, 2, 3, 4, 5, 6, 7}, 1},
      {{-2, -100, 0, 0, 0, 0, 0}, {1, 2, 3, 4, 5, 6, 7}, 1},  // behind
      {{-90, -2, -18000, 0, 0, 0, 0}, {2, 3, 4, 5, 6, 7}, 2},
      {today, ofToday, 1},  // a record stays longer than its point
  };
  const Runs list(folder());
  for (const Case& c : cases) {
    std::filesystem::remove_all(folder() / "history");
    for (std::size_t i = 0; i < c.days.size(); ++i) {
      const int day = c.days[i];
      RunRecord record;
      const text::DateTime now = text::localNow();
      record.started = text::formatStamp({now.seconds + day * 86400LL, 0});
      record.wrote = i + 1 == c.days.size() || i + 1 + c.idle < c.days.size();
      record.state = RunState::Completed;
      list.begin(record);
      if (record.wrote) std::filesystem::create_directory(list.folderOf(record.number) / "kept");
    }
    list.prune();
    std::vector<int> points;
    for (const RunRecord& run : list.list()) {
      if (RestorePoint(list.folderOf(run.number)).exists()) points.push_back(run.number);
    }
    EXPECT_EQ(points, c.points) << testing::PrintToString(c.days);
    EXPECT_EQ(list.list().front().number, c.firstRecord) << testing::PrintToString(c.days);
  }
  EXPECT_THROW(Undo(folder(), 2), UndoError);
  EXPECT_THROW(Undo(folder(), 99), UndoError);
}

TEST_F(HistoryTest, APreviewThatCannotBeMadeLeavesTheWindowInOrder) {
  makePairs();
  const char* const usual = std::getenv("TMPDIR");
  const std::string kept = usual == nullptr ? "/tmp" : usual;
  setenv("TMPDIR", (folder() / "none").c_str(), 1);
  preview(frmOutlookSync::kSync, [&](frmOutlookSync& window) {
    window.Command8.press();
    EXPECT_THAT(toolkit->messages.back().text, HasSubstr("임시 폴더"));
    EXPECT_FALSE(window.isRunning());
  });
  setenv("TMPDIR", kept.c_str(), 1);
  EXPECT_THAT(run(frmOutlookSync::kSync).back(), HasSubstr("갱신완료"));
}

TEST_F(HistoryTest, AskedAgainAnExportFillsAnEmptiedFolder) {
  makePairs();
  for (int id = 10; id < 20; ++id) addCard(id, {{"FullName", "사람" + std::to_string(id)}});
  run(frmOutlookSync::kExport);
  for (const auto& name : cardFiles()) std::filesystem::remove(contactsFolder() / name);
  RunRecorder recorder(folder(), contactsFolder(), {.askAgain = true, .howToGoOn = "다시!"});
  transfer::RunDescription description;
  EXPECT_EQ(recorder.beginOrObject(description), "");  // one that adds nothing
  recorder.end({});
  description.addsContacts = true;
  description.preview = true;
  EXPECT_THAT(recorder.beginOrObject(description), HasSubstr("다시!"));
  description.preview = false;
  EXPECT_THAT(recorder.beginOrObject(description), HasSubstr("다시!"));
  EXPECT_EQ(recorder.beginOrObject(description), "");
}

TEST_F(HistoryTest, AFolderOnAnotherDiskIsCopied) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can mount a file system";
  ASSERT_EQ(mount("tmpfs", contactsFolder().c_str(), "tmpfs", 0, "size=4m"), 0);
  makePairs();
  const std::string before = everything();
  run(frmOutlookSync::kExport);
  EXPECT_NE(everything(), before);
  Undo(folder(), 0).perform();
  EXPECT_EQ(everything(), before);
  umount(contactsFolder().c_str());
}

}  // namespace
}  // namespace vlout::history
