#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>
#include <string>

#include "entry/cli/columns.h"
#include "entry/cli/command.h"
#include "entry/cli/json.h"
#include "outlook/evolution/desktop.h"
#include "text/language.h"

namespace vlout::entry::cli {
namespace {

using outlook::evolution::BookInfo;

void addLine(const BookInfo& book, Columns& lines) {
  const std::string access = !book.writable   ? "-"
                             : *book.writable ? text::say("쓰기", "writable")
                                              : text::say("읽기 전용", "read-only");
  lines.add({book.name, book.account, std::string(book.kind), access,
             book.contacts ? std::to_string(*book.contacts) : "-",
             book.isDefault ? text::say("기본", "default") : "", "book:" + book.uid, book.failure});
}

Json asJson(const BookInfo& book) {
  return {{"uid", book.uid},
          {"name", book.name},
          {"account", book.account},
          {"kind", book.kind},
          {"writable", book.writable ? Json(*book.writable) : Json()},
          {"contacts", book.contacts ? Json(*book.contacts) : Json()},
          {"default", book.isDefault},
          {"problem", book.failure.empty() ? Json() : Json(book.failure)}};
}

// A line for each book, or an array of objects.
void printBooks(bool json, std::ostream& out) {
  const auto books = outlook::evolution::Desktop([] {}).books();
  if (!json) {
    Columns lines(out);
    for (const BookInfo& book : books) addLine(book, lines);
    return;
  }
  Json list = Json::array();
  for (const BookInfo& book : books) list.push_back(asJson(book));
  print(list, out);
}

}  // namespace

void addBooksCommand(CLI::App& app, int& status) {
  CLI::App* const books = app.add_subcommand(
      "books",
      text::say("데스크톱의 주소록을 보여 줍니다.", "Lists the address books of the desktop."));
  const auto json = std::make_shared<bool>(false);
  addJsonFlag(*books, *json);
  onGiven(*books, status, [json](std::ostream& out) { printBooks(*json, out); });
}

}  // namespace vlout::entry::cli
