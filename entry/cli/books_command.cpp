#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>

#include "entry/cli/command.h"
#include "outlook/evolution/desktop.h"
#include "text/shown_text.h"

namespace vlout::entry::cli {
namespace {

using outlook::evolution::BookInfo;

std::string asJson(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string result = "\"";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') result += '\\';
    if (byte < 0x20) {
      result += "\\u00";
      result += kDigits[byte >> 4];
      result += kDigits[byte & 15];
    } else {
      result += c;
    }
  }
  return result + '"';
}

std::string contactsOf(const BookInfo& book, const char* unknown) {
  return book.contacts ? std::to_string(*book.contacts) : unknown;
}

void printLine(const BookInfo& book, std::ostream& out) {
  const char* const access = !book.writable ? "-" : *book.writable ? "쓰기" : "읽기 전용";
  out << text::onOneLine(book.name) << '\t' << text::onOneLine(book.account) << '\t' << book.kind
      << '\t' << access << '\t' << contactsOf(book, "-") << '\t' << (book.isDefault ? "기본" : "")
      << '\t' << "book:" << text::onOneLine(book.uid) << '\t' << text::onOneLine(book.failure)
      << '\n';
}

void printObject(const BookInfo& book, std::ostream& out) {
  const char* const writable = !book.writable ? "null" : *book.writable ? "true" : "false";
  out << "{\"uid\": " << asJson(book.uid) << ", \"name\": " << asJson(book.name)
      << ", \"account\": " << asJson(book.account) << ", \"kind\": " << asJson(book.kind)
      << ", \"writable\": " << writable << ", \"contacts\": " << contactsOf(book, "null")
      << ", \"default\": " << (book.isDefault ? "true" : "false")
      << ", \"problem\": " << (book.failure.empty() ? "null" : asJson(book.failure)) << "}";
}

// A line for each book, or an array of objects.
void printBooks(bool json, std::ostream& out) {
  const auto books = outlook::evolution::Desktop([] {}).books();
  if (!json) {
    for (const BookInfo& book : books) printLine(book, out);
    return;
  }
  const char* before = "[";
  for (const BookInfo& book : books) {
    out << before;
    printObject(book, out);
    before = ",\n ";
  }
  out << (books.empty() ? "[]" : "]") << '\n';
}

}  // namespace

void addBooksCommand(CLI::App& app, int& status) {
  CLI::App* const books = app.add_subcommand("books", "데스크톱의 주소록을 보여 줍니다.");
  const auto json = std::make_shared<bool>(false);
  books->add_flag("--json", *json, "프로그램이 읽을 수 있게 JSON으로 씁니다.");
  books->callback([json, &status] {
    printBooks(*json, std::cout);
    status = std::cout ? kDone : kRefused;
  });
}

}  // namespace vlout::entry::cli
