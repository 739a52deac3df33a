// The program itself, run as its user runs it: arguments, exit status, streams, interrupts, and
// what is left when it is killed or the disk is full.
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <map>
#include <optional>
#include <set>
#include <signal.h>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <nlohmann/json.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "outlook/pairing.h"
#include "outlook/vcard/vcard_store.h"
#include "store/sql.h"
#include "tests/support/component_fixture.h"
#include "tests/support/database_fixture.h"
#include "tests/support/temporary_folder.h"

namespace vlout {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

struct Result {
  int status = -1;
  std::string out;
  std::string err;
};

class ProgramTest : public testing::Test {
 protected:
  pid_t start(const std::vector<std::string>& arguments) {
    std::vector<char*> argv;
    std::string program = VLOUTSYNC_PROGRAM;
    argv.push_back(program.data());
    std::vector<std::string> copies = arguments;
    for (std::string& argument : copies) argv.push_back(argument.data());
    argv.push_back(nullptr);
    // A home of the test's own, where the XDG folders are too, and no display: nothing of whoever
    // runs the test is read or touched.
    std::string settings[]{"LC_MESSAGES=" + language, "PATH=/usr/bin:/bin",
                           "HOME=" + home().string()};
    char* environment[]{settings[0].data(), settings[1].data(), settings[2].data(), nullptr};
    const pid_t child = fork();
    if (child == 0) {
      dup2(open("/dev/null", O_RDONLY), 0);
      dup2(open((temporary.path() / "out").c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0600), 1);
      dup2(open((temporary.path() / "err").c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0600), 2);
      if (user != geteuid() && setuid(user) != 0) _exit(127);
      execve(argv[0], argv.data(), environment);
      _exit(127);
    }
    return child;
  }

  Result finish(pid_t child) {
    int status = 0;
    waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status),
            tests::readFile(temporary.path() / "out"), tests::readFile(temporary.path() / "err")};
  }

  Result run(const std::vector<std::string>& arguments) { return finish(start(arguments)); }
  // The same in the test's component folder.
  Result here(std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), {"--folder", folder()});
    return run(arguments);
  }

  // What the program shows there.
  std::string inATerminal(const std::string& arguments) const {
    const std::string command = "script -qec '" VLOUTSYNC_PROGRAM " " + arguments + " --folder " +
                                folder() + "' /dev/null </dev/null";
    FILE* const terminal = popen(command.c_str(), "r");
    std::string shown(4096, '\0');
    shown.resize(fread(shown.data(), 1, shown.size(), terminal));
    pclose(terminal);
    return shown;
  }

  // Whether a run that was begun after that many others has begun to write.
  bool writes(int runs) const {
    return std::filesystem::exists(folder() + "/history/" + std::to_string(runs + 1) + "/written");
  }

  static bool hasEnded(pid_t child) {
    siginfo_t info{};
    waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOHANG | WNOWAIT);
    return info.si_pid == child;
  }

  int countRuns() const {
    std::error_code none;
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder() + "/history", none)) {
      if (entry.is_directory()) ++count;
    }
    return count;
  }

  // Runs the program again and again, killing it at its beginning and among its writes by turns, a
  // little later each time, and then to its end. What all of them said.
  std::string killThenFinish(const std::vector<std::string>& arguments, int rounds) {
    int kills = 0;
    std::string said;
    for (int round = 0; round < rounds; ++round) {
      const int before = countRuns();
      const pid_t child = start(arguments);
      const bool amongWrites = round % 4 != 0;
      while (amongWrites && !writes(before) && !hasEnded(child)) {
        std::this_thread::sleep_for(std::chrono::microseconds(500));
      }
      std::this_thread::sleep_for(std::chrono::microseconds(3000 + 2000 * round));
      kill(child, SIGKILL);
      const Result killed = finish(child);
      said += killed.out;
      if (killed.status == -SIGKILL) ++kills;
    }
    EXPECT_GT(kills, 2);  // a busy machine lets some of them end
    const Result last = run(arguments);
    EXPECT_EQ(last.status, 0) << last.err;
    return said + last.out;
  }

  // Puts all contacts into one file, as other programs export them.
  void joinContacts() {
    std::string all;
    for (const auto& name : tests::fileNames(contacts())) {
      all += tests::readFile(contacts() / name);
      std::filesystem::remove(contacts() / name);
    }
    tests::writeFile(contacts() / "all.vcf", all);
    tests::setModified(contacts() / "all.vcf", "2020/01/01 00:00:00");
  }

  void execute(const std::string& sql) { tests::OpenDatabase(folder()).execute(sql); }

  // Each row has one contact, which holds what it holds, and three equal dates.
  void expectPairs(std::size_t count) {
    const auto keys = contactKeys();
    EXPECT_EQ(keys.size(), count);
    tests::OpenDatabase connection(folder());
    EXPECT_EQ(connection.query("PRAGMA integrity_check")->field("integrity_check"), "ok");
    const auto rows = connection.query("SELECT * FROM tbl_namecard");
    EXPECT_EQ(rows->rowCount(), count);
    outlook::vcard::VCardStore store(contacts().string());
    ASSERT_TRUE(store.connect());
    store.openContactsFolder();
    using P = outlook::ContactProperty;
    std::map<std::string, std::string> values;
    for (std::size_t i = 1; i <= store.count(); ++i) {
      const auto contact = store.item(i);
      values[outlook::readVLID(*contact)] =
          contact->text(P::MobileTelephoneNumber) + '|' + contact->text(P::JobTitle);
    }
    for (; !rows->atEnd(); rows->moveNext()) {
      const auto field = [&](const char* name) {
        return std::string(store::nullSafe(rows->field(name)));
      };
      EXPECT_EQ(values[field("i_idx")], field("cellphone") + '|' + field("JobTitle"));
      EXPECT_EQ(field("Last_moddate"), field("VLLastsync_date")) << field("i_idx");
      EXPECT_EQ(field("Outlook_modate"), field("VLLastsync_date")) << field("i_idx");
    }
    for (const auto& [key, times] : keys) EXPECT_EQ(times, 1) << key;
  }

  Result sample(int cards) { return here({"sample", "--cards", std::to_string(cards)}); }
  std::vector<std::string> exportAll() {
    return {"run", "export", "--folder", folder(), "--range", "all"};
  }

  // Every way for a card and a contact to stand to each other.
  void makeEveryStanding() {
    here({"init"});
    const auto contact = [&](const char* file, const std::string& name, const std::string& lines,
                             const char* month) {
      tests::writeFile(contacts() / file, "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:" + name + "\r\nN:" +
                                              name + ";;;;\r\n" + lines + "\r\nEND:VCARD\r\n");
      tests::setModified(contacts() / file, "2025/" + std::string(month) + "/01 10:00:00");
    };
    struct Card {
      int id;
      const char* name;
      const char* changed;  // the month of its last change; empty for one that was never sent
      const char* contact;  // the name of its contact, if there is one
      const char* contactChanged;
    };
    for (const Card& c : {Card{1, "가일", "01", "가일", "01"}, Card{2, "나이", "02", "나이", "01"},
                          Card{3, "다삼", "01", "다삼", "03"}, Card{4, "라사", "02", "라사", "03"},
                          Card{5, "마오", "", "", ""}, Card{6, "바육", "01", "", ""},
                          Card{7, "사칠", "01", "사칠", "01"}, Card{8, "아팔", "01", "오팔", "01"},
                          Card{9, "자구", "", "", ""}, Card{10, "가일", "", "", ""}}) {
      const std::string id = std::to_string(c.id);
      std::string dates = "'','',''";
      if (*c.changed != '\0') {
        const std::string sent = "/01 10:00:00','2025/01/01 10:00:00','2025/01/01 10:00:00'";
        dates = std::string("'2025/").append(c.changed).append(sent);
      }
      execute(std::string("INSERT INTO tbl_namecard(i_idx,p_idx,FullName,CompanyName,Last_moddate,"
                          "Outlook_modate,VLLastsync_date) VALUES(")
                  .append(id + ",0,'" + c.name + "','가나',")
                  .append(dates + ")"));
      if (*c.contact != '\0') {
        contact((id + ".vcf").c_str(), c.contact,
                "ORG:" + std::string(c.id == 4 ? "다른 회사" : "가나") + "\r\nX-VLID:" + id,
                c.contactChanged);
      }
    }
    contact("copy.vcf", "사칠", "X-VLID:7", "04");
    contact("gone.vcf", "차십", "X-VLID:99", "01");
    contact("joinable.vcf", "자구", "TITLE:부장", "01");
    contact("new.vcf", "카하", "TITLE:부장", "01");
  }

  std::filesystem::path home() const { return temporary.path() / "home"; }
  std::string folder() const { return (temporary.path() / "velmora").string(); }
  std::filesystem::path contacts() const { return temporary.path() / "velmora" / "contacts"; }

  // The row number that each contact carries, and how often.
  std::map<std::string, int> contactKeys() {
    std::map<std::string, int> keys;
    outlook::vcard::VCardStore store(contacts().string());
    EXPECT_TRUE(store.connect()) << store.connectFailure();
    store.openContactsFolder();
    EXPECT_THAT(store.folderNotices(), IsEmpty());
    for (std::size_t i = 1; i <= store.count(); ++i) {
      ++keys[outlook::readVLID(*store.item(i))];
    }
    return keys;
  }

  tests::TemporaryFolder temporary;
  uid_t user = geteuid();  // that the program runs as
  std::string language = "ko_KR.UTF-8";
};

TEST_F(ProgramTest, ArgumentsAreCheckedAndExplained) {
  struct Case {
    std::vector<std::string> arguments;
    int status;
  };
  const std::vector<Case> cases{
      {{}, 2},
      {{"run"}, 2},
      {{"run", "delete"}, 2},
      {{"run", "export", "--range", "some"}, 2},
      {{"run", "--\u202Eelif"}, 2},
      {{"run", "export", "--set", "OUT_CHECK11=1"}, 2},
      {{"run", "export", "--set", "OUT_CHECK1=2"}, 2},
      {{"run", "export", "--on-conflict", "guess"}, 2},
      {{"sample", "--folder", folder(), "--cards", "-1"}, 2},
      {{"sample", "--folder", folder(), "--cards", "40000"}, 2},
      {{"--help"}, 0},
      {{"run", "--help"}, 0},
      {{"undo", "--help"}, 0},
      {{"status", "--help"}, 0},
      {{"history"}, 0},
      {{"run", "sync", "--group", "2"}, 2},
      {{"run", "import", "--range", "all"}, 2},
      {{"run", "import", "--subgroups"}, 2},
      {{"run", "export", "--group", "2", "--range", "all"}, 2},
      {{"run", "import", "--group", "1"}, 1},
      {{"history", "--folder", folder()}, 1},
      {{"window"}, 1},  // without a display
      {{"run", "import", "--folder", folder()}, 1},
      {{"run", "sync", "--folder", folder()}, 1},
  };
  EXPECT_EQ(run({"init"}).status, 0);
  EXPECT_THAT(run({"--version"}).out, testing::StartsWith("vloutsync "));
  for (const Case& c : cases) {
    const Result result = run(c.arguments);
    EXPECT_EQ(result.status, c.status) << testing::PrintToString(c.arguments);
    EXPECT_FALSE((result.out + result.err).empty());
    EXPECT_THAT(result.err, Not(HasSubstr("\u202E")));
    // The component's own messages are Korean in any language.
    if (c.status == 1) continue;
    const auto isKorean = [](const std::string& said) {
      return said.find_first_of("\xEA\xEB\xEC\xED") != std::string::npos;
    };
    EXPECT_TRUE(isKorean(result.out + result.err)) << result.out << result.err;
    language = "fr_FR.UTF-8";
    const Result english = run(c.arguments);
    language = "ko_KR.UTF-8";
    EXPECT_FALSE(isKorean(english.out + english.err)) << english.out << english.err;
  }
  EXPECT_FALSE(std::filesystem::exists(folder()));
  EXPECT_TRUE(std::filesystem::exists(home() / ".local/share/velmora/VelmoraDB.vdb"));
}

TEST_F(ProgramTest, MakesFoldersAndNeverOverwritesThem) {
  EXPECT_EQ(here({"init"}).status, 0);
  const auto database = std::filesystem::path(folder()) / "VelmoraDB.vdb";
  const std::string before = tests::readFile(database);
  EXPECT_EQ(here({"init"}).status, 1);
  EXPECT_EQ(sample(3).status, 1);
  EXPECT_EQ(tests::readFile(database), before);
  const std::string other = folder() + "2";
  const std::string same = folder() + "3";
  run({"sample", "--folder", other, "--cards", "30", "--seed", "7"});
  run({"sample", "--folder", same, "--cards", "30", "--seed", "7"});
  EXPECT_EQ(tests::readFile(other + "/VelmoraDB.vdb"), tests::readFile(same + "/VelmoraDB.vdb"));
  EXPECT_EQ(tests::readFile(other + "/temp/exportlist.txt"),
            tests::readFile(same + "/temp/exportlist.txt"));
}

TEST_F(ProgramTest, ExportsInThreeColumnsAndKeepsTheStreamsApart) {
  sample(20);
  const Result first = run(exportAll());
  EXPECT_EQ(first.status, 0);
  EXPECT_THAT(first.out, EndsWith("내보내기 완료\t추가=20/갱신=0\t\n"));
  EXPECT_EQ(first.err,
            "연락처: " + contacts().string() + "\n내보내기를 완료하였습니다.\n추가=20/갱신=0\n");
  EXPECT_EQ(std::count(first.out.begin(), first.out.end(), '\n'), 25);
  EXPECT_EQ(std::count(first.out.begin(), first.out.end(), '\t'), 2 * 25);
  EXPECT_THAT(run(exportAll()).out,
              EndsWith("연락처 추가\t100%\t완료\n내보내기 완료\t추가=0/갱신=0\t\n"));
  tests::writeFile(folder() + "/temp/exportlist.txt", "77\r\n1\r\n");
  const Result noGroup = here({"run", "export", "--range", "group"});
  EXPECT_EQ(noGroup.status, 0);  // nothing to do is no failure, but it is said
  EXPECT_THAT(noGroup.err, AllOf(HasSubstr("exportlist.txt"), HasSubstr("77")));
  const Result selected = here({"run", "export"});
  EXPECT_EQ(selected.status, 0) << selected.err;
  // A box that is set stays set, as in the window.
  here({"run", "export", "--range", "all", "--set", "OUT_CHECK7=0"});
  EXPECT_THAT(tests::readFile(folder() + "/VelmoraOlSync.ini"), HasSubstr("OUT_CHECK7=0\r\n"));
}

TEST_F(ProgramTest, AnswersConflictsAsItIsTold) {
  struct Case {
    const char* answer;
    const char* birthday;  // of the card
    int status;
    const char* title;  // of the card afterwards
    const char* said;
  };
  for (const Case& c : {Case{"skip", "null", 0, "card", "벨모라=0/아웃룩=0"},
                        Case{"newer", "null", 0, "contact", "벨모라=1/아웃룩=0"},
                        Case{"card", "null", 0, "card", "벨모라=0/아웃룩=1"},
                        Case{"outlook", "null", 0, "contact", "벨모라=1/아웃룩=0"},
                        Case{"stop", "null", 1, "card", "상호갱신 작업이 중지되었습니다!"},
                        // A save that the window refuses: the pair is left out, and that is said.
                        Case{"card", "'someday'", 0, "card", "제외합니다"}}) {
    std::filesystem::remove_all(folder());
    here({"init"});
    tests::OpenDatabase connection(folder());
    connection.execute(
        std::string("INSERT INTO tbl_namecard(i_idx,p_idx,FullName,JobTitle,Birthday,"
                    "Last_moddate) VALUES(1,0,'홍길동','card',") +
        c.birthday + ",'2030/01/01 00:00:00')");
    const auto contact = contacts() / "a.vcf";
    tests::writeFile(contact,
                     "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:홍길동\r\nN:홍;길동;;;\r\nTITLE:contact\r\n"
                     "X-VLID:1\r\nEND:VCARD\r\n");
    const timespec times[2] = {{4'000'000'000, 0}, {4'000'000'000, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, contact.c_str(), times, 0), 0);
    const Result result = here({"run", "sync", "--on-conflict", c.answer});
    EXPECT_EQ(result.status, c.status) << c.answer;
    EXPECT_THAT(result.err, HasSubstr(c.said)) << c.answer;
    EXPECT_EQ(store::readCard(connection, "1")->field("JobTitle"), c.title) << c.answer;
  }
}

TEST_F(ProgramTest, SaysWhatIsWrongWithWhatItIsGiven) {
  struct Case {
    const char* name;
    std::function<void()> damage;
    std::vector<std::string> extra;
    const char* said;
  };
  const std::string base = folder();
  const std::string database = base + "/VelmoraDB.vdb";
  const std::string list = base + "/temp/exportlist.txt";
  const auto gone = [](const std::string& what) {
    return [what] { std::filesystem::remove_all(what); };
  };
  const auto holds = [](const std::string& file, const std::string& content) {
    return [file, content] { tests::writeFile(file, content); };
  };
  const auto pipe = [](const std::vector<std::string>& files) {
    return [files] {
      for (const std::string& file : files) {
        std::filesystem::remove(file);
        ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
      }
    };
  };
  const auto jet = std::string("\0\1\0\0Standard Jet DB\0", 20) + std::string(3000, '\0');
  const std::vector<std::string> selected{"--range", "selected"};
  const std::vector<Case> cases{
      {"no folder", gone(base), {}, "vloutsync init"},
      {"no database", gone(database), {}, "데이터 연결이 실패되었습니다!"},
      {"Jet database", holds(database, jet), {}, "Jet"},
      {"a pipe for a database", pipe({database}), {}, "VelmoraDB.vdb: 보통 파일이 아닙니다"},
      {"no contact folder", [] {}, {"--contacts", base + "/none"}, "none"},
      {"contacts is a file", [] {}, {"--contacts", database}, "VelmoraDB.vdb"},
      {"a folder of folders", holds(base + "/contacts/people/a.vcf", ""), {}, "contacts/people"},
      {"no export list", gone(list), selected, "exportlist.txt"},
      {"pipes nobody writes to", pipe({list, base + "/VelmoraOlSync.ini", base + "/settings.ini"}),
       selected, "settings.ini: 보통 파일이 아닙니다\n"},
      {"an empty export list", holds(list, ""), {"--yes"}, "선택된 명함이 없습니다"},  // no range
      {"endless export list", [&] { std::filesystem::resize_file(list, std::uintmax_t{1} << 40); },
       selected, "File too large"},
      {"binary export list", holds(list, "1\r\n\xFF\xFE"), selected, "exportlist.txt"},
      {"unknown group", [] {}, {"--group", "없는 그룹"}, "그룹이 없습니다: 없는 그룹"},
      {"a column missing",
       [&] {
         execute("DROP INDEX idx_namecard_fullname");
         execute("ALTER TABLE tbl_namecard DROP COLUMN FullName");
       },
       {},
       "FullName"},
  };
  for (const Case& c : cases) {
    std::filesystem::remove_all(base);
    sample(3);
    c.damage();
    std::vector<std::string> arguments = exportAll();
    arguments.insert(arguments.end(), c.extra.begin(), c.extra.end());
    if (!c.extra.empty() && c.extra[0] != "--contacts")
      arguments.erase(arguments.begin() + 4, arguments.begin() + 6);
    const Result result = run(arguments);
    EXPECT_EQ(result.status, 1) << c.name << result.out;
    EXPECT_THAT(result.err, HasSubstr(c.said)) << c.name;
    if (std::filesystem::exists(contacts())) {
      EXPECT_THAT(tests::fileNames(contacts()), Not(Contains(EndsWith(".vcf")))) << c.name;
    }
  }
}

TEST_F(ProgramTest, AnInterruptStopsInOrder) {
  sample(3000);
  const pid_t child = start(exportAll());
  while (!std::filesystem::exists(contacts()) || tests::fileNames(contacts()).size() < 20) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  kill(child, SIGINT);
  const Result stopped = finish(child);
  EXPECT_EQ(stopped.status, 1);
  EXPECT_THAT(stopped.out,
              AllOf(HasSubstr("내보내기 중지\t추가="), Not(HasSubstr("내보내기 완료"))));
  const std::size_t written = contactKeys().size();
  EXPECT_LT(written, 3000U);
  EXPECT_THAT(stopped.out, HasSubstr("추가=" + std::to_string(written) + "/"));
  const Result rest = run(exportAll());
  EXPECT_THAT(rest.out, HasSubstr("추가=" + std::to_string(3000 - written) + "/갱신=0"));
}

// A lock that another program keeps is waited for once, and not past a signal to end.
TEST_F(ProgramTest, ARunThatWaitsForTheDatabaseCanBeEnded) {
  sample(3);
  tests::OpenDatabase other(folder());
  std::optional<store::sqlite::Transaction> lock(other.database());
  const pid_t child = start(exportAll());
  while (tests::fileNames(contacts()).empty() && !hasEnded(child)) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  kill(child, SIGTERM);
  const Result ended = finish(child);
  EXPECT_EQ(ended.status, 1);
  EXPECT_THAT(ended.err,
              AllOf(HasSubstr("VelmoraDB.vdb: 다른 프로그램이"), HasSubstr("database is locked")));
  EXPECT_EQ(tests::fileNames(contacts()).size(), 1U);
  lock.reset();
  EXPECT_THAT(run(exportAll()).out, HasSubstr("추가=2/갱신=0"));
  expectPairs(3);
}

// Killed at many moments, a run is taken up again and ends as if nothing had happened: each person
// once on either side, in step, and nothing to ask about or left to do.
TEST_F(ProgramTest, AKilledRunIsTakenUpAgain) {
  const auto loseRows = [&] {
    execute("DELETE FROM tbl_namecard");
    int index = 0;
    for (const auto& name : tests::fileNames(contacts())) {
      // One name for all: they are told apart by their numbers.
      tests::writeFile(
          contacts() / name,
          "BEGIN:VCARD\r\nVERSION:3.0\r\nN:홍;길동;;;\r\nFN:홍길동\r\nTEL;TYPE=CELL:010-" +
              std::to_string(++index) + "\r\nEND:VCARD\r\n");
    }
  };
  const auto editBothSides = [&] {
    execute(
        "UPDATE tbl_namecard SET Last_moddate='2020/01/01 00:00:00',"
        "Outlook_modate='2020/01/01 00:00:00',VLLastsync_date='2020/01/01 00:00:00'");
    execute(
        "UPDATE tbl_namecard SET JobTitle='새 직함',Last_moddate='2021/01/01 00:00:00' "
        "where i_idx % 2 = 0");
    for (const auto& name : tests::fileNames(contacts())) {
      std::string text = tests::readFile(contacts() / name);
      const bool edited = std::stoi(text.substr(text.find("X-VLID:") + 7)) % 2 != 0;
      if (edited) {
        text.insert(text.find("X-VLID:"), "NICKNAME:다름\r\n");
        tests::writeFile(contacts() / name, text);
      }
      tests::setModified(contacts() / name, edited ? "2021/01/01 00:00:00" : "2020/01/01 00:00:00");
    }
  };
  struct Case {
    std::vector<std::string> run;
    int cards;
    std::function<void()> prepare;
    bool isJoined;
    const char* nothing;
  };
  const std::vector<std::string> import{"run", "import", "--folder", folder()};
  const std::vector<std::string> sync{"run", "sync", "--folder", folder()};
  for (const Case& c : {Case{exportAll(), 5000, [] {}, false, "추가=0/갱신=0"},
                        Case{import, 2000, loseRows, false, "추가=0/갱신=0"},
                        Case{sync, 2000, editBothSides, false, "벨모라=0/아웃룩=0"},
                        Case{import, 2000, loseRows, true, "추가=0/갱신=0"},
                        Case{sync, 2000, editBothSides, true, "벨모라=0/아웃룩=0"}}) {
    std::filesystem::remove_all(folder());
    sample(c.cards);
    if (c.run != exportAll()) run(exportAll());
    c.prepare();
    if (c.isJoined) joinContacts();
    EXPECT_EQ(killThenFinish(c.run, 16).find("충돌"), std::string::npos) << c.run[1];
    EXPECT_THAT(run(c.run).out, HasSubstr(c.nothing)) << c.run[1];
    EXPECT_THAT(tests::fileNames(contacts()), Each(EndsWith(".vcf")));
    expectPairs(static_cast<std::size_t>(c.cards));
  }
}

TEST_F(ProgramTest, TheContactsAreThoseOfTheLastRunUnlessAnotherPlaceIsConfirmed) {
  sample(40);
  std::filesystem::remove(folder() + "/temp/exportlist.txt");
  const std::string other = (temporary.path() / "other").string();
  std::filesystem::create_directory(other);
  EXPECT_THAT(here({"run", "export"}).out, HasSubstr("추가=40/갱신=0"));
  std::vector<std::string> elsewhere{"run",     "export",      "--folder",   folder(),
                                     "--group", "거래처/서울", "--contacts", other};
  const Result asked = run(elsewhere);
  EXPECT_EQ(asked.status, 1);
  EXPECT_THAT(asked.err,
              AllOf(HasSubstr(contacts().string()), HasSubstr(other), HasSubstr("--yes")));
  EXPECT_THAT(tests::fileNames(other), IsEmpty());
  elsewhere.emplace_back("--yes");
  EXPECT_EQ(run(elsewhere).status, 0);
  tests::OpenDatabase connection(folder());
  const auto inGroup = connection.query("SELECT i_idx FROM tbl_namecard WHERE f_idx=4")->rowCount();
  EXPECT_GT(inGroup, 0U);
  EXPECT_EQ(tests::fileNames(other).size(), inGroup);
  tests::writeFile(other + "/new.vcf",
                   "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:새봄\r\nN:새;봄;;;\r\nEND:VCARD\r\n");
  EXPECT_THAT(here({"run", "import", "--group", "5"}).err, HasSubstr(other));
  EXPECT_EQ(
      connection.query("SELECT f_idx FROM tbl_namecard WHERE FullName='새봄'")->field("f_idx"),
      "5");
  EXPECT_THAT(here({"status"}).out, HasSubstr(other + "\n"));
  // A run that nobody watches has nothing to say when there was nothing to do.
  EXPECT_EQ(here({"run", "sync", "--quiet"}).out, "");
  execute("UPDATE tbl_namecard SET Last_moddate='2099/01/01 00:00:00' WHERE FullName='새봄'");
  EXPECT_EQ(here({"run", "sync", "--quiet"}).out, "갱신완료\t벨모라=0/아웃룩=1\t\n");
}

// As all the commands that look see it.
TEST_F(ProgramTest, AnOverviewSortsEveryCardAndContact) {
  makeEveryStanding();
  const std::string before = tests::stampsOf(folder());
  const auto json = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), {"--json", "--folder", folder()});
    return nlohmann::json::parse(run(arguments).out);
  };
  auto status = json({"status"});
  EXPECT_EQ(status["conflict"][0]["differences"].dump(),
            R"([{"card":"가나","contact":"다른 회사","field":"CompanyName"}])");
  std::map<std::string, std::string> found;
  for (const auto& [key, list] : status.items()) {
    for (const auto& each : list.is_array() ? list : nlohmann::json::array()) {
      found[key] += each["card"].is_null() ? "-" : each["card"].get<std::string>() + " ";
    }
  }
  const std::map<std::string, std::string> expected{
      {"card_changed", "2 "},  {"contact_changed", "3 "}, {"conflict", "4 "},
      {"never_sent", "10 5 "}, {"contact_gone", "6 "},    {"double", "7 "},
      {"card_gone", "99 "},    {"cardless", "-"},         {"joinable", "9 "},
      {"name_differs", "8 "},  {"namesake", "1 10 "}};
  EXPECT_EQ(found, expected);
  EXPECT_EQ(status["in_step"], 3);
  std::string listed;
  for (const auto& card : json({"list", "가나"})) {
    listed += card["card"].get<std::string>() + card["standing"].get<std::string>() + " ";
  }
  EXPECT_EQ(listed,
            "1in_step 10never_sent 2card_changed 3contact_changed 4conflict 5never_sent "
            "6contact_gone 7in_step 8in_step 9joinable ");
  EXPECT_THAT(here({"show", "라사"}).out, HasSubstr("회사\t가나\t다른 회사\t≠\n"));
  EXPECT_THAT(inATerminal("show 라사"), HasSubstr("회사  가나      다른 회사  ≠\r\n"));
  EXPECT_THAT(here({"show", "가일"}).err, HasSubstr("여럿입니다"));
  EXPECT_EQ(tests::stampsOf(folder()), before);
  EXPECT_THAT(here({"run", "sync", "--preview"}).err,
              AllOf(HasSubstr("벨모라=1/아웃룩=1"), HasSubstr("충돌 1건")));
}

// A preview reads what a crash has left beside the database, and leaves not even a time of access.
TEST_F(ProgramTest, APreviewTouchesNothing) {
  sample(20);
  run(exportAll());
  const std::string crashed = folder() + "2";
  {
    tests::OpenDatabase connection(folder());
    connection.execute(
        "UPDATE tbl_namecard SET [JobTitle]='새 직함',[Last_moddate]='2099/01/01 00:00:00' where "
        "i_idx=7");
    // Line ends are another matter in the card than in the row; they are no change.
    connection.execute("UPDATE tbl_namecard SET [Memo_]='한\r\n줄' where i_idx=7");
    run(exportAll());
    connection.execute(
        "UPDATE tbl_namecard SET [JobTitle]='더 새 직함',[Last_moddate]='2099/01/01 00:00:00' "
        "where i_idx=7");
    std::filesystem::copy(folder(), crashed, std::filesystem::copy_options::recursive);
  }
  ASSERT_GT(std::filesystem::file_size(crashed + "/VelmoraDB.vdb-wal"), 0U);
  constexpr timespec kLongAgo{1'000'000'000, 0};
  const auto files = [&] {
    std::vector<std::filesystem::path> all{crashed, crashed + "/contacts"};
    for (const auto& name : tests::fileNames(contacts())) {
      all.push_back(all[1] / name);  // a copy; with a time of its own it would be an edit
      std::filesystem::last_write_time(all.back(),
                                       std::filesystem::last_write_time(contacts() / name));
    }
    for (const char* name : {"/VelmoraDB.vdb", "/VelmoraDB.vdb-wal"}) all.push_back(crashed + name);
    return all;
  }();
  for (const auto& file : files) {
    const timespec times[2] = {kLongAgo, {0, UTIME_OMIT}};
    ASSERT_EQ(utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
  }
  const std::vector<std::string> arguments{"run", "export",    "--folder", crashed,       "--range",
                                           "all", "--preview", "--set",    "OUT_CHECK7=0"};
  const Result preview = run(arguments);
  EXPECT_EQ(preview.status, 0) << preview.err;
  EXPECT_THAT(preview.out, AllOf(HasSubstr("  직책: 새 직함 → 더 새 직함\t연락처\t변경\n"
                                           "연락처 비교"),
                                 HasSubstr("내보내기 완료\t추가=0/갱신=1")));
  EXPECT_THAT(preview.err, HasSubstr("아무것도 바꾸지 않았습니다"));
  for (const auto& file : files) {
    struct stat status {};
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_atim.tv_sec, kLongAgo.tv_sec) << file;
  }
  const std::string before = tests::stampsOf(crashed);  // its own look moves folders' access times
  run(arguments);
  EXPECT_EQ(tests::stampsOf(crashed), before);
  {
    tests::OpenDatabase connection(crashed);
    connection.execute("PRAGMA journal_mode=DELETE");
  }
  EXPECT_EQ(run(arguments).out, preview.out);
  const Result refused =
      run({"run", "export", "--folder", folder() + "3", "--range", "all", "--preview"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.err, HasSubstr("vloutsync init"));
}

// An export that was killed and an undo that is killed again and again end as if neither had been.
TEST_F(ProgramTest, AKilledRunIsUndoneByAnUndoThatIsKilled) {
  const auto everything = [&] {
    tests::OpenDatabase connection(folder());
    return tests::filesDump(contacts()) + tests::rowsDump(connection);
  };
  // Into files of their own, and into one that holds all.
  for (const bool isJoined : {false, true}) {
    std::filesystem::remove_all(folder());
    sample(3000);
    if (isJoined) {
      run(exportAll());
      joinContacts();
      execute("UPDATE tbl_namecard SET JobTitle='새 직함',Last_moddate='2021/01/01 00:00:00'");
      execute("UPDATE tbl_namecard SET VLLastsync_date='2020/01/01 00:00:00'");
      execute("UPDATE tbl_namecard SET Outlook_modate='2020/01/01 00:00:00'");
    }
    const std::string before = everything();
    const pid_t child = start(exportAll());
    const auto hasWrittenMuch = [&] {
      std::error_code none;
      const auto saved = std::filesystem::file_size(contacts() / ".vloutsync-journal", none);
      return isJoined ? !none && saved > 300'000 : tests::fileNames(contacts()).size() >= 1000;
    };
    while (!hasWrittenMuch() && !hasEnded(child)) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    kill(child, SIGKILL);
    EXPECT_EQ(finish(child).status, -SIGKILL);
    EXPECT_THAT(here({"history"}).out, HasSubstr("내보내기 전체\t끝나지 않음\t명함="));
    // No --force: what the killed run wrote is known to be its own.
    killThenFinish({"undo", isJoined ? "2" : "1", "--yes", "--folder", folder()}, 20);
    EXPECT_TRUE(everything() == before);  // a comparison line by line would take minutes
  }
}

TEST_F(ProgramTest, UndoSaysWhatItWillChangeAndMindsLaterEdits) {
  sample(5);
  run(exportAll());
  const Result said = here({"undo", "--preview"});
  EXPECT_EQ(said.status, 0);
  EXPECT_THAT(said.out, AllOf(HasSubstr("명함: 되돌림=5 삭제=0 되살림=0\n"),
                              HasSubstr("연락처: 되돌림=0 삭제=5 되살림=0\n")));
  const auto database = std::filesystem::path(folder()) / "VelmoraDB.vdb";
  if (geteuid() == 0) {  // its look at a protected database leaves nothing, whoever looks
    chmod(database.c_str(), 0444);
    EXPECT_EQ(here({"undo", "--preview"}).status, 0);
    EXPECT_THAT(tests::fileNames(folder()), Not(Contains(HasSubstr("-shm"))));
    ASSERT_EQ(std::system(("chown -R nobody " + temporary.path().string()).c_str()), 0);
    user = 65534;
    const Result refused = here({"undo", "--preview"});
    EXPECT_THAT(refused.err, HasSubstr("VelmoraDB.vdb: 쓸 수 없는 파일입니다"));
    EXPECT_THAT(tests::fileNames(folder()), Not(Contains(HasSubstr("-shm"))));
    user = 0;
  }
  // The folder may be moved with everything in it.
  const std::string moved = folder() + "2";
  const auto cards = std::filesystem::path(moved) / "contacts";
  std::filesystem::rename(folder(), moved);
  const auto edited = cards / tests::fileNames(cards).front();
  tests::writeFile(edited, tests::readFile(edited) + "\r\n");
  std::vector<std::string> undo{"undo", "--folder", moved};
  const std::string before = tests::stampsOf(cards);
  const Result refused = run(undo);
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.out, HasSubstr("연락처 고침: "));
  EXPECT_THAT(refused.err, HasSubstr("--force"));
  EXPECT_EQ(tests::stampsOf(cards), before);
  undo.emplace_back("--force");
  const Result unasked = run(undo);
  EXPECT_EQ(unasked.status, 1);
  EXPECT_THAT(unasked.err, HasSubstr("--yes"));
  EXPECT_EQ(tests::stampsOf(cards), before);
  undo.emplace_back("--yes");
  EXPECT_EQ(run(undo).status, 0);
  EXPECT_THAT(tests::fileNames(cards), IsEmpty());
  const Result nothing = run(undo);
  EXPECT_EQ(nothing.status, 1);
  EXPECT_THAT(nothing.err, HasSubstr("되돌릴 작업이 없습니다"));
}

TEST_F(ProgramTest, AnEmptiedContactFolderIsNotFilledAgain) {
  for (const int cards : {8, 9}) {
    std::filesystem::remove_all(folder());
    sample(cards);
    const std::string added = "추가=" + std::to_string(cards) + "/갱신=0";
    EXPECT_THAT(run(exportAll()).out, HasSubstr(added));  // one that never held any may be filled
    tests::writeFile(contacts() / "guest.vcf", "BEGIN:VCARD\r\nFN:손님\r\nEND:VCARD\r\n");
    EXPECT_THAT(run(exportAll()).out, HasSubstr("추가=0/갱신=0"));
    for (const auto& name : tests::fileNames(contacts())) {
      std::filesystem::remove(contacts() / name);
    }
    auto arguments = exportAll();
    if (cards == 9) {
      const Result refused = run(arguments);
      EXPECT_EQ(refused.status, 1);
      EXPECT_THAT(refused.err, AllOf(HasSubstr("10개"), HasSubstr("--yes")));
      EXPECT_THAT(tests::fileNames(contacts()), IsEmpty());
      arguments.emplace_back("--yes");
    }
    EXPECT_THAT(run(arguments).out, HasSubstr(added));  // a few are not worth a question
  }
}

TEST_F(ProgramTest, ADiskThatIsFullOrProtectedLeavesNothingByHalves) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can mount a file system";
  struct Case {
    std::filesystem::path at;
    const char* size;
    unsigned long flags;
    int cards;
    int status;
    std::vector<std::string> said;
    bool writes;
  };
  for (const Case& c :
       {Case{folder(), "size=2m", 0, 1000, 1, {"복원 지점을 둘 자리가 없어"}, false},
        Case{contacts(), "", MS_RDONLY, 3, 1, {"아웃룩 연결에 실패", "Read-only"}, false},
        Case{contacts(), "size=256k", 0, 300, 0, {"실패→(", "No space left on device"}, true}}) {
    std::filesystem::create_directory(folder());
    if (c.at == contacts()) sample(c.cards);
    ASSERT_EQ(mount("tmpfs", c.at.c_str(), "tmpfs", c.flags, c.size), 0);
    if (c.at == folder()) {
      sample(c.cards);
      tests::writeFile(folder() + "/filler", std::string(std::size_t{600} << 10, 'x'));
    }
    const Result result = run(exportAll());
    const std::size_t written = c.writes ? contactKeys().size() : 0;  // each of them is whole
    const auto names = tests::fileNames(contacts());
    umount(c.at.c_str());
    std::filesystem::remove_all(folder());
    EXPECT_EQ(result.status, c.status) << result.err;
    for (const auto& text : c.said) EXPECT_THAT(result.out + result.err, HasSubstr(text));
    EXPECT_THAT(names, Each(EndsWith(".vcf")));
    EXPECT_EQ(names.size(), written);
    EXPECT_EQ(written > 10 && written < 300, c.writes);
    if (!c.writes) continue;
    EXPECT_THAT(result.out, HasSubstr("추가=" + std::to_string(written) + "/갱신=0"));
  }
}

}  // namespace
}  // namespace vlout
