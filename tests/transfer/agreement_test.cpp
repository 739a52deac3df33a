// Many rounds of random edits on both sides and random transfers. A model that knows nothing of the
// engines predicts every count and every value; after each run both sides must look like it, and
// the same run again must change nothing. Before each run a preview must give its very lines, with
// the fields that the model says will change, and touch nothing.
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <string>
#include <sys/stat.h>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "history/run_report.h"
#include "tests/support/component_fixture.h"
#include "text/ascii.h"

namespace vlout::transfer {
namespace {

using ui::frmOutlookSync;

// One card and its contact as they should be. Times are seconds of a clock that moves with every
// edit.
struct ModelPair {
  std::string rowTitle, contactTitle;
  bool hasContact = false;
  std::int64_t last = 0, outlook = 0, sync = 0;  // the row's dates
  std::int64_t contact = 0;                      // the contact's time
};

struct ModelRun {
  frmOutlookSync::Mode mode;
  bool add, update, ignoreConflicts, showConflicts;
};

class AgreementTest : public tests::ComponentFixture {
 protected:
  static int setting(const char* name, int usual) {
    const char* const value = std::getenv(name);
    return value == nullptr ? usual : std::atoi(value);
  }
  std::uint64_t random(std::uint64_t below) { return generator() % below; }

  std::filesystem::path fileOf(int id) { return contactsFolder() / files.at(id); }

  void findFiles() {
    files.clear();
    for (const std::string& name : cardFiles()) {
      const std::string text = contactText(name);
      const std::size_t key = text.find("X-VLID:");
      ASSERT_NE(key, std::string::npos) << name;
      const int id = std::atoi(text.c_str() + key + 7);
      ASSERT_TRUE(files.emplace(id, name).second) << "two contacts of card " << id;
    }
  }

  void editRow(int id) {
    ModelPair& pair = model[id];
    pair.rowTitle = "행" + std::to_string(++clock);
    pair.last = clock;
    execute("UPDATE tbl_namecard SET [JobTitle]='" + pair.rowTitle + "',[Last_moddate]='" +
            text::formatStamp({clock, 0}) + "' where [i_idx]=" + std::to_string(id));
  }

  void editContact(int id) {
    ModelPair& pair = model[id];
    if (!pair.hasContact) return;
    std::string text = tests::readFile(fileOf(id));
    const std::string title = "연락처" + std::to_string(++clock);
    text = text::replaceAll(text, "TITLE:" + pair.contactTitle + "\r\n", "TITLE:" + title + "\r\n");
    if (text.find("X-KEEP:") == std::string::npos) {
      text = text::replaceAll(text, "END:VCARD",
                              "X-KEEP;Q=\"a;b\":" + std::to_string(id) + ",c;d\r\nEND:VCARD");
      kept.insert(id);
    }
    tests::writeFile(fileOf(id), text);
    tests::setModified(fileOf(id), text::formatStamp({clock, 0}));
    pair.contactTitle = title;
    pair.contact = clock;
  }

  // Another program gives two contacts each other's file.
  void exchangeFiles(int a, int b) {
    if (!model[a].hasContact || !model[b].hasContact) return;
    struct stat ofA {};
    struct stat ofB {};
    ASSERT_EQ(stat(fileOf(a).c_str(), &ofA) + stat(fileOf(b).c_str(), &ofB), 0);
    const std::string text = tests::readFile(fileOf(a));
    tests::writeFile(fileOf(a), tests::readFile(fileOf(b)));
    tests::writeFile(fileOf(b), text);
    std::swap(files[a], files[b]);
    for (const auto& [file, time] : {std::pair{fileOf(a), ofA.st_mtim}, {fileOf(b), ofB.st_mtim}}) {
      const timespec times[2] = {time, time};
      ASSERT_EQ(utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
    }
  }

  void deleteContact(int id) {
    if (!model[id].hasContact) return;
    std::filesystem::remove(fileOf(id));
    files.erase(id);
    kept.erase(id);
    model[id].hasContact = false;
  }

  // What the run should do; its summary. A pair that it writes gets the contact's time, which only
  // the file knows: 0 stands for it until then.
  std::string predict(const ModelRun& run) {
    int added = 0, toRow = 0, toContact = 0, conflicts = 0;
    changes.clear();
    for (auto& [id, pair] : model) {
      if (!pair.hasContact) {
        if (run.mode != frmOutlookSync::kExport || !run.add) continue;
        pair.hasContact = true;
        pair.contactTitle = pair.rowTitle;
        pair.last = pair.outlook = pair.sync = pair.contact = 0;
        ++added;
        continue;
      }
      const bool rowNewer = pair.last > pair.contact;
      const bool contactNewer = pair.last < pair.contact;
      const bool bothChanged = pair.last > pair.sync && pair.contact > pair.outlook;
      const bool concerned =
          run.mode == frmOutlookSync::kSync ||
          (run.update && (run.mode == frmOutlookSync::kExport ? rowNewer : contactNewer));
      if (!concerned || (!rowNewer && !contactNewer)) continue;
      const bool asked =
          run.mode == frmOutlookSync::kSync ? run.showConflicts : !run.ignoreConflicts;
      if (asked && bothChanged) {
        ++conflicts;
        if (pair.rowTitle != pair.contactTitle) {
          changes.insert("  직책: " + pair.rowTitle + " ↔ " + pair.contactTitle + "|양쪽|충돌");
        }
        continue;
      }
      if (pair.rowTitle != pair.contactTitle) {
        changes.insert(rowNewer
                           ? "  직책: " + pair.contactTitle + " → " + pair.rowTitle + "|연락처|변경"
                           : "  직책: " + pair.rowTitle + " → " + pair.contactTitle + "|명함|변경");
      }
      (rowNewer ? pair.contactTitle : pair.rowTitle) = rowNewer ? pair.rowTitle : pair.contactTitle;
      ++(rowNewer ? toContact : toRow);
      pair.last = pair.outlook = pair.sync = pair.contact = 0;
    }
    if (run.mode == frmOutlookSync::kSync) {
      return "벨모라=" + std::to_string(toRow) + "/아웃룩=" + std::to_string(toContact);
    }
    std::string text =
        "추가=" + std::to_string(added) + "/갱신=" + std::to_string(toRow + toContact);
    return conflicts == 0 ? text : text + "/충돌=" + std::to_string(conflicts);
  }

  std::string transfer(const ModelRun& run) {
    const auto setBoxes = [&](frmOutlookSync& window) {
      window.import_check2.setValue(run.update);
      window.Export_Check1.setValue(run.add);
      window.Export_Check2.setValue(run.update);
      window.import_check3.setValue(run.ignoreConflicts);
      window.Export_Check3.setValue(run.ignoreConflicts);
      window.Sync_Check2.setValue(run.showConflicts);
    };
    harmIndex();
    std::vector<std::string> previewed;
    std::multiset<std::string> changed;
    for (const std::string& line : preview(run.mode, setBoxes)) {
      if (line.starts_with("  ")) {
        changed.insert(line);
      } else {
        previewed.push_back(line);
      }
    }
    const auto lines = this->run(run.mode, setBoxes);
    EXPECT_EQ(previewed, lines);
    EXPECT_EQ(changed, changes);
    // The history tells afterwards what the preview has told before.
    const auto report = history::reportOf(folder(), history::Runs(folder()).list().back().number);
    EXPECT_EQ(report.lines.size(), lines.size());
    for (const auto& change : report.changes) {
      if (change.caption.empty()) continue;
      const auto line = changed.find("  " + change.caption + ": " + change.before + " → " +
                                     change.after + "|" + change.kind + "|변경");
      if (line == changed.end()) ADD_FAILURE() << change.kind << change.who << change.caption;
      if (line != changed.end()) changed.erase(line);
    }
    EXPECT_THAT(changed, testing::Each(testing::EndsWith("|충돌")));
    const std::string& last = lines.back();
    return last.substr(last.find('|') + 1, last.rfind('|') - last.find('|') - 1);
  }

  void compareWithModel() {
    findFiles();
    const auto rows = database.query(
        "SELECT i_idx,JobTitle,Last_moddate,Outlook_modate,VLLastsync_date FROM tbl_namecard");
    ASSERT_EQ(rows->rowCount(), model.size());
    std::size_t contacts = 0;
    for (; !rows->atEnd(); rows->moveNext()) {
      const int id = std::atoi(std::string(*rows->field("i_idx")).c_str());
      ModelPair& pair = model.at(id);
      ASSERT_EQ(*rows->field("JobTitle"), pair.rowTitle) << id;
      ASSERT_EQ(files.contains(id), pair.hasContact) << id;
      if (!pair.hasContact) continue;
      ++contacts;
      const std::string text = tests::readFile(fileOf(id));
      ASSERT_NE(text.find("TITLE:" + pair.contactTitle + "\r\n"), std::string::npos) << id;
      if (kept.contains(id)) {
        // A book writes what it keeps in a form of its own.
        const std::string line = "X-KEEP;Q=\"a;b\":" + std::to_string(id) + ",c;d\r\n";
        const std::string inBook = text::replaceAll(line, ",", "\\,");
        ASSERT_NE(text.find(book ? inBook : line), std::string::npos) << id << text;
      }
      if (pair.contact != 0) continue;
      // Just transferred: all three dates are the contact's time.
      ASSERT_EQ(rows->field("Last_moddate"), rows->field("Outlook_modate")) << id;
      ASSERT_EQ(rows->field("Last_moddate"), rows->field("VLLastsync_date")) << id;
      pair.contact = text::parseDateTime(*rows->field("Last_moddate"))->seconds;
      pair.last = pair.outlook = pair.sync = pair.contact;
      ASSERT_EQ(modificationTime(id), pair.contact) << id;
    }
    ASSERT_EQ(files.size(), contacts);
  }

  std::int64_t modificationTime(int id) {
    struct stat status {};
    EXPECT_EQ(stat(fileOf(id).c_str(), &status), 0);
    return text::fromUnixTime(status.st_mtim.tv_sec, 0).seconds;
  }

  std::string everything() {
    return tests::filesDump(contactsFolder()) + tests::rowsDump(database);
  }

  // What runs know of the contacts is a cache: they end alike without it, with an old one, and with
  // one that is damaged in any way.
  void harmIndex() {
    const auto index = folder() / "history" / "contacts.index";
    const std::string bytes = tests::readFile(index);
    std::string harmed = bytes;
    const auto somewhere = [&] { return static_cast<std::size_t>(random(bytes.size())); };
    switch (bytes.empty() ? 0 : random(7)) {
      case 0:
        break;  // none of it, or all
      case 1:
        harmed.clear();
        break;
      case 2:
        harmed.resize(somewhere());
        break;
      case 3:
        ++harmed[somewhere()];
        break;
      case 4:  // a contact's key is another's
        harmed =
            text::replaceAll(bytes, std::string("\2\0\0\00012", 6), std::string("\2\0\0\00013", 6));
        break;
      case 5:
        harmed += bytes;
        break;
      default:
        harmed = oldIndex;
    }
    if (harmed != bytes) tests::writeFile(index, harmed);
    if (!bytes.empty() && random(3) == 0) oldIndex = bytes;
  }

  std::string oldIndex;
  std::mt19937_64 generator{7};
  std::map<int, ModelPair> model;
  std::map<int, std::string> files;
  std::multiset<std::string> changes;  // the lines of fields in the preview of the next run
  std::set<int> kept;                  // cards whose contact has a property that is none of ours
  std::int64_t clock = text::localNow().seconds + 86'400;
};

TEST_F(AgreementTest, EveryRoundEndsAsTheModelSays) {
  const int cards = setting("VLOUT_AGREEMENT_CARDS", 150);
  const int rounds = setting("VLOUT_AGREEMENT_ROUNDS", 60);
  for (int id = 1; id <= cards; ++id) {
    addCard(id, {{"FullName", "사람" + std::to_string(id)},
                 {"Outlook_modate", ""},
                 {"VLLastsync_date", ""}});
    editRow(id);
  }
  for (int round = 0; round < rounds; ++round) {
    const auto some = [&](auto edit) {
      for (std::uint64_t n = random(static_cast<std::uint64_t>(cards) / 5 + 1); n > 0; --n) {
        edit(1 + static_cast<int>(random(static_cast<std::uint64_t>(cards))));
      }
    };
    for (int half = 0; half < 2; ++half) {  // either side may be the later one
      some([&](int id) { editRow(id); });
      some([&](int id) { editContact(id); });
    }
    some([&](int id) { exchangeFiles(id, 1 + id % cards); });
    if (round % 3 == 0)
      some([&](int id) {
        if (random(4) == 0) deleteContact(id);
      });
    const ModelRun run{.mode = static_cast<frmOutlookSync::Mode>(round == 0 ? 1 : random(3)),
                       .add = random(4) != 0,
                       .update = random(4) != 0,
                       .ignoreConflicts = random(2) != 0,
                       .showConflicts = random(2) != 0};
    const std::string predicted = predict(run);
    ASSERT_EQ(transfer(run), predicted) << "round " << round << ", mode " << run.mode;
    ASSERT_NO_FATAL_FAILURE(compareWithModel()) << "round " << round << ", mode " << run.mode;
    const std::string before = everything();
    // The conflicts are there still.
    std::erase_if(changes, [](const std::string& line) { return line.ends_with("|변경"); });
    transfer(run);
    ASSERT_EQ(everything() == before, true)
        << "round " << round << ": the run again changed something";
  }
}

}  // namespace
}  // namespace vlout::transfer
