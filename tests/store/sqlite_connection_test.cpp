#include "store/sqlite/sqlite_connection.h"

#include <csignal>
#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "store/sql.h"
#include "store/sqlite/preview_connection.h"
#include "tests/support/database_fixture.h"

namespace vlout::store::sqlite {
namespace {

using testing::HasSubstr;

class SqliteConnectionTest : public tests::DatabaseFixture {
 protected:
  std::string messageOf(const std::string& sql) {
    try {
      connection.query(sql);
    } catch (const DatabaseError& error) {
      return error.what();
    }
    return "";
  }
};

TEST_F(SqliteConnectionTest, RunsTheHostsStatementShapesUnchanged) {
  EXPECT_EQ(connection.execute("INSERT INTO tbl_namecard(FullName,i_idx,p_idx,Birthday,Memo_) "
                               "VALUES('O''Brien',7,0,null,'a;b -- c ? /* [x]')"),
            1);
  EXPECT_EQ(connection.execute("UPDATE tbl_namecard SET [VLLastsync_date] = 'x' ,[Last_moddate] = "
                               "'x',[Outlook_modate]='' where [i_idx]=7"),
            1);
  EXPECT_EQ(connection.execute("UPDATE tbl_namecard SET [Memo_]=null where [i_idx]=8"), 0);
  const auto row = connection.query("SELECT * from tbl_namecard where [I_IDX] = 7");
  ASSERT_EQ(row->rowCount(), 1U);
  EXPECT_EQ(row->field("fullname"), "O'Brien");  // names without regard to case
  EXPECT_EQ(row->field("MEMO_"), "a;b -- c ? /* [x]");
  EXPECT_EQ(row->field("Birthday"), std::nullopt);
  EXPECT_EQ(row->field("Outlook_modate"), "");  // an empty text is not NULL
  EXPECT_THROW(static_cast<void>(row->field("NoSuchColumn")), DatabaseError);
  row->moveNext();
  EXPECT_TRUE(row->atEnd());
  EXPECT_THROW(static_cast<void>(row->field("FullName")), DatabaseError);
  // Text compares without regard to ASCII case, as in Jet.
  EXPECT_EQ(
      connection.query("SELECT i_idx from [tbl_namecard] where [FullName]='o''BRIEN'")->rowCount(),
      1U);
}

TEST_F(SqliteConnectionTest, ValuesSurviveByteForByte) {
  const std::vector<std::string> values{"",
                                        " ",
                                        "줄\r\n바꿈",
                                        "😀",
                                        std::string(10000, 'x'),
                                        "invalid \xFF\xFE utf-8",
                                        std::string("nul\0inside", 10),
                                        "1",
                                        "007",
                                        "null",
                                        "?1"};
  for (const std::string& value : values) {
    connection.execute("DELETE FROM tbl_namecard");
    connection.execute("INSERT INTO tbl_namecard(i_idx,Memo_) VALUES(1,'" + value + "')");
    EXPECT_EQ(connection.query("SELECT Memo_ FROM tbl_namecard")->field("Memo_"), value);
  }
}

TEST_F(SqliteConnectionTest, RefusesAnythingButOneStatement) {
  const std::vector<std::string> refused{
      "DELETE FROM tbl_namecard; DELETE FROM tbl_folder",
      "UPDATE tbl_namecard SET [Memo_]='a' WHERE [i_idx]=1; DROP TABLE tbl_folder",
      "DELETE FROM tbl_folder -- where f_idx=9",
      "DELETE FROM tbl_folder /* all */",
      "UPDATE tbl_folder SET folder_name=? where f_idx=2",
      "UPDATE tbl_folder SET folder_name=:a where f_idx=2",
      "UPDATE tbl_folder SET folder_name='unfinished where f_idx=2",
      "UPDATE tbl_folder SET [folder_name='x' where f_idx=2",
      "UPDATE tbl_folder SET folder_name=\"double\" where f_idx=2",
      "ATTACH 'x' AS y; SELECT 1",
      std::string("SELECT 1 \0 FROM", 15),
      "",
  };
  for (const std::string& sql : refused) {
    EXPECT_THROW(connection.execute(sql), DatabaseError) << sql;
  }
  const auto folders = connection.query("SELECT * FROM tbl_folder ;\r\n ;");
  EXPECT_EQ(folders->rowCount(), 3U);
  EXPECT_EQ(folders->field("folder_name"), "전체");  // nothing of it was done
}

TEST_F(SqliteConnectionTest, SharedStatementsKeepTheirValuesApart) {
  for (int i = 1; i <= 3; ++i) {
    connection.execute("INSERT INTO tbl_namecard(i_idx,FullName) VALUES(" + std::to_string(i) +
                       ",'name" + std::to_string(i) + "')");
  }
  for (int i = 3; i >= 1; --i) {
    const auto row = readCard(connection, std::to_string(i));
    EXPECT_EQ(row->field("FullName"), "name" + std::to_string(i));
  }
  // A failed statement leaves nothing behind for the next one of its shape.
  EXPECT_THROW(connection.execute("INSERT INTO tbl_namecard(i_idx,FullName) VALUES(1,'again')"),
               DatabaseError);
  connection.execute("INSERT INTO tbl_namecard(i_idx,FullName) VALUES(4,'name4')");
  EXPECT_EQ(connection.query("SELECT i_idx from tbl_namecard where i_idx in (1,2,9)")->rowCount(),
            2U);
}

TEST_F(SqliteConnectionTest, SaysWhatIsMissing) {
  connection.execute("DROP TABLE tbl_namecard");
  EXPECT_THAT(messageOf("SELECT i_idx from tbl_namecard where [i_idx]=1"),
              HasSubstr("tbl_namecard"));
  connection.execute("ALTER TABLE tbl_folder DROP COLUMN p_idx");
  EXPECT_THAT(messageOf("SELECT Folder_Name,p_idx FROM tbl_folder Where f_idx=2"),
              HasSubstr("p_idx"));
}

TEST(SqliteOpen, RefusesWhatIsNoDatabaseAndLeavesItAsItIs) {
  struct Case {
    std::string content;
    std::string reason;
  };
  const std::string jet = std::string("\0\1\0\0Standard Jet DB\0", 20) + std::string(4000, '\7');
  const std::vector<Case> cases{
      {jet, "Jet"},
      {"this is some text, long enough to be taken for a database header if nobody looks " +
           std::string(200, 'x'),
       "손상되었습니다"},
  };
  for (const Case& c : cases) {
    const tests::TemporaryFolder folder;
    const ConnectionSettings settings{.componentFolder = folder.path()};
    tests::writeFile(settings.databaseFile(), c.content);
    SqliteConnection connection;
    try {
      connection.open(settings);
      FAIL() << c.reason;
    } catch (const DatabaseError& error) {
      EXPECT_THAT(error.what(), HasSubstr(c.reason));
      EXPECT_THAT(error.what(), HasSubstr("VelmoraDB.vdb"));
    }
    EXPECT_FALSE(connection.isOpen());
    EXPECT_EQ(tests::readFile(settings.databaseFile()), c.content);
    // Whoever uses the connection after all is told the same.
    try {
      connection.query("SELECT 1");
      FAIL();
    } catch (const DatabaseError& error) {
      EXPECT_THAT(error.what(), HasSubstr(c.reason));
    }
  }
}

// A refusal must not leave files beside the database that keep it from being written for ever.
TEST(SqliteOpen, RefusesWhatItMayNotWriteAndNamesIt) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can become somebody else";
  constexpr uid_t kSomebody = 65534;
  for (const char* const suffix : {"", "-wal", "-shm"}) {
    const tests::TemporaryFolder folder;
    const ConnectionSettings settings{.componentFolder = folder.path()};
    const std::string file = settings.databaseFile().string();
    createDatabase(file);
    tests::writeFile(file + suffix, *suffix == '\0' ? tests::readFile(file) : "");
    chmod((file + suffix).c_str(), 0444);
    for (const std::string& path : {folder.path().string(), file, file + suffix}) {
      ASSERT_EQ(chown(path.c_str(), kSomebody, kSomebody), 0);
    }
    ASSERT_EQ(seteuid(kSomebody), 0);
    SqliteConnection connection;
    std::string reason;
    try {
      connection.open(settings);
    } catch (const DatabaseError& error) {
      reason = error.what();
    }
    ASSERT_EQ(seteuid(0), 0);
    EXPECT_THAT(reason, HasSubstr(file + suffix + ": 쓸 수 없는 파일입니다: Permission denied"));
    EXPECT_EQ(tests::fileNames(folder.path()).size(), *suffix == '\0' ? 1U : 2U);
  }
}

TEST_F(SqliteConnectionTest, ReadsOfOneMomentHoldNobodyUp) {
  const auto title = [&] {
    return std::string(*connection.query("SELECT JobTitle FROM tbl_namecard")->field("JobTitle"));
  };
  connection.execute("INSERT INTO tbl_namecard(i_idx,JobTitle) VALUES(1,'a')");
  ASSERT_TRUE(connection.readTogether(true));
  EXPECT_EQ(title(), "a");
  static volatile std::sig_atomic_t stop = 1;  // who has to wait fails
  SqliteConnection other(&stop);
  other.open(settings);
  other.execute("UPDATE tbl_namecard SET JobTitle='b'");
  EXPECT_EQ(title(), "a");
  connection.execute("UPDATE tbl_namecard SET Department='c'");
  EXPECT_EQ(title(), "b");
  connection.readTogether(true);
  EXPECT_EQ(title(), "b");
  usleep(6'000);
  other.execute("UPDATE tbl_namecard SET JobTitle='d'");
  connection.readTogether(true);  // they were a while ago
  EXPECT_EQ(title(), "d");
  connection.readTogether(false);
}

// A program that finds nobody else in the database takes the log away when it closes.
TEST_F(SqliteConnectionTest, StaysInTheDatabaseWhileOthersComeAndGo) {
  const tests::TemporaryFolder elsewhere;
  connection.execute("INSERT INTO tbl_namecard(i_idx) VALUES(1)");
  SqliteConnection().open(settings);
  PreviewConnection(elsewhere.path(), {}).open(settings);
  const std::string sql = "\" \"UPDATE tbl_namecard SET JobTitle='b'\"";
  ASSERT_EQ(std::system(("sqlite3 \"" + settings.databaseFile().string() + sql).c_str()), 0);
  connection.execute("UPDATE tbl_namecard SET Department='c'");
  SqliteConnection later;
  later.open(settings);
  const auto row = later.query("SELECT JobTitle,Department FROM tbl_namecard");
  EXPECT_EQ(row->field("JobTitle"), "b");
  EXPECT_EQ(row->field("Department"), "c");
}

// In a database without a log even an open waits for another program that writes.
TEST_F(SqliteConnectionTest, SaysWhoWaitsForWhat) {
  static volatile std::sig_atomic_t stop = 0;
  execute(connection.database(), "PRAGMA journal_mode=DELETE");
  std::signal(SIGALRM, [](int) { stop = 1; });
  for (const char* const lock : {"BEGIN IMMEDIATE", "BEGIN EXCLUSIVE"}) {
    execute(connection.database(), lock);
    stop = 0;
    ualarm(50'000, 0);
    SqliteConnection waiting(&stop);
    try {
      waiting.open(settings);
      ADD_FAILURE();
    } catch (const DatabaseError& error) {
      EXPECT_THAT(error.what(), HasSubstr("VelmoraDB.vdb: 다른 프로그램이 데이터베이스의 잠금을"));
    }
    EXPECT_EQ(stop, 1) << lock;
    execute(connection.database(), "COMMIT");
  }
}

TEST(SqliteOpen, MakesNoDatabaseOfItsOwnAccord) {
  const tests::TemporaryFolder folder;
  SqliteConnection connection;
  EXPECT_THROW(connection.open({.componentFolder = folder.path()}), DatabaseError);
  EXPECT_TRUE(tests::fileNames(folder.path()).empty());
}

TEST(SqliteCreate, RefusesToOverwriteAndIsItsOwnersAlone) {
  const tests::TemporaryFolder folder;
  const auto file = folder.path() / "VelmoraDB.vdb";
  createDatabase(file);
  struct stat status {};
  ASSERT_EQ(stat(file.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600U);
  const std::string before = tests::readFile(file);
  EXPECT_THROW(createDatabase(file), DatabaseError);
  EXPECT_EQ(tests::readFile(file), before);
}

}  // namespace
}  // namespace vlout::store::sqlite
