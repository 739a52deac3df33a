#include "entry/cli/parser_words.h"

#include <CLI/CLI.hpp>
#include <regex>
#include <string>
#include <utility>

#include "text/language.h"

namespace vlout::entry::cli {
namespace {

constexpr std::pair<const char*, const char*> kLabels[]{{"Usage", "사용법"},
                                                        {"OPTIONS", "옵션"},
                                                        {"SUBCOMMAND", "명령"},
                                                        {"Positionals", "인수"},
                                                        {"REQUIRED", "필수"}};

// In the order in which they are tried. What none of them matches is left as it is.
constexpr std::pair<const char*, const char*> kErrors[]{
    {"The following arguments? (?:was|were) not expected: (.*)", "알 수 없는 인수입니다: $1"},
    {"A subcommand is required", "명령이 있어야 합니다"},
    {"(.*) is required", "$1: 있어야 합니다"},
    {"Could not convert: (.*)", "값을 읽을 수 없습니다: $1"},
    {"(.*): [0-9]+ required .* missing", "$1: 값이 있어야 합니다"},
    {"(.*): Value (.*) not in range (.*) to (.*)", "$1: 값 $2은(는) $3부터 $4까지여야 합니다"},
    {"(.*): (.*) not in (\\{.*\\})", "$1: $2은(는) $3 가운데 하나가 아닙니다"},
    {"(.*) was given a disallowed flag override", "$1: 값을 가질 수 없습니다"},
};

std::string inKorean(const std::string& message) {
  for (const auto& [pattern, korean] : kErrors) {
    std::smatch found;
    if (std::regex_match(message, found, std::regex(pattern))) return found.format(korean);
  }
  return message;
}

void translateOptions(CLI::App& app) {
  for (CLI::Option* const option : app.get_options()) {
    if (option->get_group() == "Options") option->group("옵션");
  }
  if (CLI::Option* const help = app.get_help_ptr()) help->description("이 도움말을 보여 줍니다.");
  if (CLI::Option* const version = app.get_option_no_throw("--version")) {
    version->description("판을 보여 줍니다.");
  }
}

}  // namespace

void translateParser(CLI::App& app) {
  if (text::language() != text::Language::Korean) return;
  for (const auto& [label, korean] : kLabels) app.get_formatter()->label(label, korean);
  translateOptions(app);
  for (CLI::App* const command : app.get_subcommands({})) {
    command->group("명령");
    translateOptions(*command);
  }
  app.failure_message([](const CLI::App*, const CLI::Error& error) {
    return inKorean(error.what()) + "\n--help 로 도움말을 볼 수 있습니다.\n";
  });
}

}  // namespace vlout::entry::cli
