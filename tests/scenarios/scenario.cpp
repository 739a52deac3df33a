#include "tests/scenarios/scenario.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

#include "outlook/contact_property.h"
#include "store/sql.h"
#include "text/ascii.h"
#include "text/date_time.h"

namespace vlout::tests {
namespace {

using outlook::ContactProperty;
using outlook::PropertyKind;

// Dates from here on are of the run, those before are the scenario's.
constexpr std::string_view kRunsBegin = "2026";

bool isDate(ContactProperty property) {
  return outlook::propertyInfo(property).kind == PropertyKind::Date;
}

// Follows from the parts of the name, or is not comparable between stores.
bool isDerived(ContactProperty property) {
  return outlook::propertyInfo(property).kind == PropertyKind::Name &&
         property != ContactProperty::LastName && property != ContactProperty::FirstName;
}

void shorten(std::string& value) {
  if (value.size() > 1000) value = std::to_string(value.size()) + " letters";
}

// A record with its keys in one order and nothing empty.
Record ordered(const Record& record) {
  Record result;
  for (const auto& [key, value] : record.pairs) {
    if (key.starts_with("user:") && !value.empty()) result.add(key, value);
  }
  for (const auto& info : outlook::contactProperties()) {
    std::string value = record.get(info.objectModelName);
    if (info.property == ContactProperty::Gender && value == "0") value.clear();
    if (info.property == ContactProperty::Body) {
      value = text::replaceAll(value, "\r\n", "\n");  // as vCards have line breaks
    }
    shorten(value);
    if (isDate(info.property)) std::replace(value.begin(), value.end(), '/', '-');
    if (!value.empty() && !isDerived(info.property)) result.add(info.objectModelName, value);
  }
  for (const auto& [key, value] : record.pairs) {
    if (key != "attachment") continue;
    const std::size_t bar = value.rfind('|');
    result.add(key, value.substr(0, bar) + ":" + std::to_string((value.size() - bar - 1) / 2));
  }
  return result;
}

}  // namespace

Scenario Scenario::read(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw std::runtime_error("no scenario: " + file.string());
  Scenario scenario;
  std::vector<std::string>* section = nullptr;
  for (std::string line; std::getline(stream, line);) {
    if (line.starts_with('[')) {
      section = &scenario.sections[line];
    } else if (!line.empty() && !line.starts_with('#') && section != nullptr) {
      section->push_back(line);
    }
  }
  return scenario;
}

const std::vector<std::string>& Scenario::lines(const std::string& heading) const {
  static const std::vector<std::string> none;
  const auto found = sections.find(heading);
  return found == sections.end() ? none : found->second;
}

std::vector<Action> Scenario::actions() const {
  std::vector<Action> result;
  for (const std::string& line : lines("[actions]")) {
    const auto word = [rest = std::string_view(line)]() mutable {
      const std::string_view first = rest.substr(0, rest.find(' '));
      rest.remove_prefix(std::min(first.size() + 1, rest.size()));
      return std::pair(std::string(first), std::string(rest));
    };
    auto next = word;
    auto [verb, rest] = next();
    const bool named = verb == "choose" || verb == "press" || verb == "tick" || verb == "type" ||
                       verb == "node" || verb == "expect" || verb == "state";
    std::string control;
    if (named) std::tie(control, rest) = next();
    result.push_back({verb, control, rest});
  }
  return result;
}

void Scenario::fillDatabase(store::Connection& database) const {
  for (const std::string& line : lines("[folders]")) {
    const Record folder(line);
    database.execute("INSERT INTO tbl_folder (f_idx,p_idx,folder_name) VALUES (" +
                     folder.get("f_idx") + "," + folder.get("p_idx") + ",'" +
                     store::sqlQuote(folder.get("folder_name")) + "')");
  }
  for (const std::string& line : lines("[cards]")) {
    std::string columns = "p_idx";
    std::string values = "0";
    const Record card(line);
    for (const auto& [column, value] : card.pairs) {
      const bool number = column.ends_with("_idx");
      const bool picture = column == "Thumbnail";  // so many bytes
      columns += "," + column;
      values += "," + (number    ? value
                       : picture ? "'" + std::string(std::stoul(value), 'J') + "'"
                                 : store::sqlLiteral(value));
    }
    database.execute(std::string("INSERT INTO tbl_namecard(")
                         .append(columns)
                         .append(") VALUES(")
                         .append(values) +
                     ")");
  }
}

void Scenario::writeFiles(const std::filesystem::path& componentFolder) const {
  std::filesystem::create_directories(componentFolder / "temp");
  const auto write = [&](const std::string& heading, const char* file) {
    if (!sections.contains(heading)) return;
    std::ofstream stream(componentFolder / file, std::ios::binary);
    for (const std::string& line : lines(heading)) {
      stream << line.substr(line.starts_with(' ') ? 1 : 0) << "\r\n";
    }
  };
  write("[exportlist]", "temp/exportlist.txt");
  write("[settings.ini]", "settings.ini");
  write("[jet.txt]", "jet.txt");
  write("[VelmoraOlSync.ini]", "VelmoraOlSync.ini");
}

std::vector<std::string> outcome(store::Connection& database, const std::vector<Record>& contacts) {
  std::vector<std::string> result;
  const auto rows = database.query("SELECT * FROM tbl_namecard order by i_idx asc");
  const auto columns = database.query("SELECT name FROM pragma_table_info('tbl_namecard')");
  std::vector<std::string> names;
  for (; !columns->atEnd(); columns->moveNext()) names.emplace_back(*columns->field("name"));
  for (; !rows->atEnd(); rows->moveNext()) {
    Record row;
    std::string contactTime;
    for (const Record& contact : contacts) {
      if (contact.get("user:VLID") == store::nullSafe(rows->field("i_idx"))) {
        contactTime = contact.get("modified").substr(0, 19);
      }
    }
    for (const std::string& name : names) {
      std::string value(store::nullSafe(rows->field(name)));
      if (name == "Thumbnail" && !value.empty()) value = std::to_string(value.size()) + " bytes";
      shorten(value);
      if (!value.empty() && value == contactTime) value = "=contact";
      if (name.find("date") != std::string::npos && value >= kRunsBegin && value < "9")
        value = "now";
      if (name == "CreationTime" && value >= kRunsBegin) value = "today";
      if (!value.empty()) row.add(name, value);
    }
    result.push_back("row " + row.line());
  }
  std::vector<std::string> lines;
  for (const Record& contact : contacts) {
    Record record = ordered(contact);
    const std::string type = contact.get("type");
    if (!type.empty() && type != "ContactItem") continue;
    const std::string modified = contact.get("modified").substr(0, 19);
    record.set("modified", modified >= kRunsBegin ? "saved" : modified);
    lines.push_back("contact " + record.line());
  }
  std::sort(lines.begin(), lines.end());
  result.insert(result.end(), lines.begin(), lines.end());
  return result;
}

}  // namespace vlout::tests
