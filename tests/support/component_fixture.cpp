#include "tests/support/component_fixture.h"

#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>

#include "entry/cli/platform.h"
#include "outlook/vcard/vcard_contact.h"
#include "store/sql.h"
#include "text/ascii.h"

namespace vlout::tests {

ComponentFixture::ComponentFixture() : ComponentFixture(std::make_unique<ScriptedToolkit>()) {
  toolkit = &dynamic_cast<ScriptedToolkit&>(runtime->toolkit());
}

ComponentFixture::ComponentFixture(std::unique_ptr<ui::Toolkit> shown) {
  std::filesystem::create_directory(contactsFolder());
  const store::ConnectionSettings settings{.componentFolder = folder()};
  store::sqlite::createDatabase(settings.databaseFile());
  database.open(settings);
  std::filesystem::path contacts = contactsFolder();
  if (const char* const uid = std::getenv("VLOUT_TEST_BOOK"); uid != nullptr) {
    book.emplace(folder(), contactsFolder(), uid);
    contacts = std::string("book:") + uid;
  }
  runtime = std::make_unique<entry::Runtime>(
      folder(), entry::cli::makePlatform(folder(), contacts, std::move(shown), {.goOn = true}));
}

void ComponentFixture::open(const std::function<void(ui::frmOutlookSync&)>& user) {
  toolkit->user = user;
  call();
}

void ComponentFixture::call() {
  if (book) book->intoBook();
  entry::ORUN(*runtime).OUTSYNCRUN();
  if (book) book->outOfBook();
}

void ComponentFixture::setStamps(int id, const std::string& last, const std::string& outlook,
                                 const std::string& sync) {
  execute("UPDATE tbl_namecard SET [Last_moddate]='" + last + "',[Outlook_modate]='" + outlook +
          "',[VLLastsync_date]='" + sync + "' where i_idx=" + std::to_string(id));
}

void ComponentFixture::writeContact(const std::string& file, const std::string& lines,
                                    const std::string& time) {
  const auto path = contactsFolder() / file;
  writeFile(path, "BEGIN:VCARD\r\nVERSION:3.0\r\n" + lines + "END:VCARD\r\n");
  setModified(path, time);
}

void ComponentFixture::startAfresh() {
  execute("DELETE FROM tbl_namecard");
  for (const auto& name : cardFiles()) std::filesystem::remove(contactsFolder() / name);
  std::filesystem::remove_all(folder() / "history");
  toolkit->messages.clear();
}

std::vector<std::string> ComponentFixture::press(
    ui::Button ui::frmOutlookSync::*button, ui::frmOutlookSync::Mode mode,
    const std::function<void(ui::frmOutlookSync&)>& prepare) {
  std::vector<std::string> lines;
  toolkit->messages.clear();
  open([&](ui::frmOutlookSync& window) {
    window.Combo1.setIndex(mode);
    window.Combo2.setIndex(ui::frmOutlookSync::kAllCards);
    prepare(window);
    const bool preview = button == &ui::frmOutlookSync::Command8;
    const std::string before = preview ? stampsOf(folder()) : "";
    (window.*button).press();
    EXPECT_TRUE(!preview || stampsOf(folder()) == before) << "the preview changed something";
    for (const auto& row : window.ListView1.rows()) {
      lines.push_back(row.cells[0] + "|" + row.cells[1] + "|" + row.cells[2]);
    }
  });
  return lines;
}

std::vector<std::string> ComponentFixture::run(
    ui::frmOutlookSync::Mode mode, const std::function<void(ui::frmOutlookSync&)>& prepare) {
  return press(&ui::frmOutlookSync::Command2, mode, prepare);
}

std::vector<std::string> ComponentFixture::preview(
    ui::frmOutlookSync::Mode mode, const std::function<void(ui::frmOutlookSync&)>& prepare) {
  return press(&ui::frmOutlookSync::Command8, mode, prepare);
}

void ComponentFixture::addCard(int id,
                               const std::vector<std::pair<std::string, std::string>>& columns) {
  std::string names = "i_idx,f_idx,p_idx";
  std::string values = std::to_string(id) + ",2,0";
  for (const auto& [column, value] : columns) {
    names += "," + column;
    values += ",'" + text::replaceAll(value, "'", "''") + "'";
  }
  execute("INSERT INTO tbl_namecard(" + names + ") VALUES(" + values + ")");
}

std::string ComponentFixture::valueOf(int id, std::string_view column) {
  const auto row = store::readCard(database, std::to_string(id));
  const auto field = row->field(column);
  return field ? std::string(*field) : "NULL";
}

std::unique_ptr<outlook::vcard::VCardStore> ComponentFixture::openContacts() const {
  // The component keeps the folder to itself, so this store looks at a copy.
  const auto copy = folder() / "seen";
  std::filesystem::remove_all(copy);
  std::filesystem::copy(contactsFolder(), copy, std::filesystem::copy_options::recursive);
  auto contacts = std::make_unique<outlook::vcard::VCardStore>(copy.string());
  EXPECT_TRUE(contacts->connect()) << contacts->connectFailure();
  contacts->openContactsFolder();
  return contacts;
}

std::string rowsDump(store::Connection& database, const std::string& leftOut) {
  std::string all;
  for (const char* table : {"tbl_namecard", "tbl_folder"}) {
    const auto columns = database.query(std::string("SELECT name FROM pragma_table_info('") +
                                        table + "') WHERE name<>'" + leftOut + "'");
    std::string list;
    for (; !columns->atEnd(); columns->moveNext()) {
      list += (list.empty() ? "quote(" : "||quote(") + std::string(*columns->field("name")) + ")";
    }
    const auto rows = database.query("SELECT " + list + " AS row FROM " + table);
    for (; !rows->atEnd(); rows->moveNext()) all += std::string(*rows->field("row")) + '\n';
  }
  return all;
}

std::string attachmentContent(outlook::Contact& contact, std::size_t index) {
  return dynamic_cast<outlook::vcard::VCardContact&>(contact).attachmentContent(index);
}

void setModified(const std::filesystem::path& file, const std::string& stamp) {
  std::tm local{};
  ASSERT_NE(strptime(stamp.c_str(), "%Y/%m/%d %H:%M:%S", &local), nullptr);
  local.tm_isdst = -1;
  const timespec times[2] = {{std::mktime(&local), 0}, {std::mktime(&local), 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
}

}  // namespace vlout::tests
