// A whole component on real files: a component folder with an SQLite database, a folder of vCards,
// and a toolkit whose user is the test. If VLOUT_TEST_BOOK names a book of the desktop, the
// component works on that, and the folder shows what is in it.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "entry/orun.h"
#include "outlook/vcard/vcard_store.h"
#include "store/sqlite/sqlite_connection.h"
#include "tests/support/book_folder.h"
#include "tests/support/temporary_folder.h"
#include "ui/toolkit.h"

namespace vlout::tests {

// Instead of showing a window, calls `user` for the main window and `dialog` for any other. Records
// every message box and skin.
class ScriptedToolkit : public ui::Toolkit {
 public:
  struct Message {
    ui::MessageIcon icon;
    std::string text;
  };

  void showModal(ui::Form& form) override {
    if (auto* const window = dynamic_cast<ui::frmOutlookSync*>(&form)) {
      user(*window);
      form.requestClose();
    } else {
      dialog(form);
    }
  }
  void applySkin(const std::filesystem::path& file) override {
    if (!file.empty()) skins.push_back(file.filename());
  }
  void messageBox(ui::MessageIcon icon, std::string_view text) override {
    messages.push_back({icon, std::string(text)});
    if (onMessage) onMessage(messages.back().text);
  }
  [[nodiscard]] bool ask(std::string_view question) override {
    messageBox(ui::MessageIcon::None, question);
    return true;
  }
  [[nodiscard]] ui::ScreenSize screenSize() const override { return {20000, 16000}; }
  void pump() override {
    if (onPump) onPump();
  }

  std::function<void(ui::frmOutlookSync&)> user = [](ui::frmOutlookSync&) {};
  std::function<void(ui::Form&)> dialog = [](ui::Form& form) { form.requestClose(); };
  std::function<void()> onPump;
  std::function<void(const std::string&)> onMessage;
  std::vector<std::string> skins;
  std::vector<Message> messages;
};

class ComponentFixture : public testing::Test {
 protected:
  ComponentFixture();
  // With the test's own toolkit instead of the scripted one.
  explicit ComponentFixture(std::unique_ptr<ui::Toolkit> shown);

  // Calls OUTSYNCRUN once, as the host does.
  void call();

  // The same, with the window in the hands of `user`.
  void open(const std::function<void(ui::frmOutlookSync&)>& user);

  // Chooses the mode and all cards, lets `prepare` set boxes, and presses run. Returns the result
  // lines, each as "text|percent|state".
  std::vector<std::string> run(
      ui::frmOutlookSync::Mode mode,
      const std::function<void(ui::frmOutlookSync&)>& prepare = [](ui::frmOutlookSync&) {});

  // The same for a preview, whose lines are those of the run together with the fields that it would
  // change. Fails the test if the preview touches anything in the component folder.
  std::vector<std::string> preview(
      ui::frmOutlookSync::Mode mode,
      const std::function<void(ui::frmOutlookSync&)>& prepare = [](ui::frmOutlookSync&) {});

  // The time of the last transfer of pairs, unless a test says otherwise.
  static constexpr const char* kTransferred = "2025/01/01 00:00:00";

  // An INSERT of a card from "column=value" pairs; f_idx and p_idx have defaults.
  void addCard(int id, const std::vector<std::pair<std::string, std::string>>& columns);
  void execute(const std::string& sql) { database.execute(sql); }
  [[nodiscard]] std::string valueOf(int id, std::string_view column);
  void setStamps(int id, const std::string& last, const std::string& outlook = kTransferred,
                 const std::string& sync = kTransferred);
  // A contact file of version 3.0 with these lines and that modification time.
  void writeContact(const std::string& file, const std::string& lines,
                    const std::string& time = kTransferred);
  [[nodiscard]] std::string contactText(const std::string& file) const {
    return readFile(contactsFolder() / file);
  }
  // Removes all rows, contacts and messages.
  void startAfresh();

  [[nodiscard]] std::filesystem::path folder() const { return temporary.path(); }
  [[nodiscard]] std::filesystem::path contactsFolder() const { return folder() / "contacts"; }
  [[nodiscard]] std::vector<std::string> cardFiles() const { return fileNames(contactsFolder()); }

  // The folder's contacts as another program would see them now.
  [[nodiscard]] std::unique_ptr<outlook::vcard::VCardStore> openContacts() const;

  TemporaryFolder temporary;
  store::sqlite::SqliteConnection database;  // the test's own view of the component's database
  ScriptedToolkit* toolkit = nullptr;
  std::optional<BookFolder> book;
  std::unique_ptr<entry::Runtime> runtime;

 private:
  std::vector<std::string> press(ui::Button ui::frmOutlookSync::*button,
                                 ui::frmOutlookSync::Mode mode,
                                 const std::function<void(ui::frmOutlookSync&)>& prepare);
};

// Every value of the cards and groups, except in the columns to leave out.
[[nodiscard]] std::string rowsDump(store::Connection& database, const std::string& leftOut = "");

// The bytes of a vCard contact's attachment.
[[nodiscard]] std::string attachmentContent(outlook::Contact& contact, std::size_t index);

// Sets a file's modification time, in whole seconds of the local clock: "2025/01/31 10:00:00".
void setModified(const std::filesystem::path& file, const std::string& stamp);

}  // namespace vlout::tests
