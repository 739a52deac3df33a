// What the parser of arguments says by itself, in the user's language: its own words are English.
#pragma once

namespace CLI {
class App;
}

namespace vlout::entry::cli {

// For a program whose commands have all been added.
void translateParser(CLI::App& app);

}  // namespace vlout::entry::cli
