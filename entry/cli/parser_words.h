// Translates what the argument parser says by itself, which is English, into the user's language.
#pragma once

namespace CLI {
class App;
}

namespace vlout::entry::cli {

// Call it after all commands have been added.
void translateParser(CLI::App& app);

}  // namespace vlout::entry::cli
