// The component's adapters on Linux, for the terminal and the windows alike. Their runs are
// recorded, can be previewed and can be taken back.
#pragma once

#include <filesystem>
#include <memory>

#include "entry/runtime.h"
#include "history/run_recorder.h"

namespace vlout::entry::cli {

// `contacts` is the folder of vCards.
[[nodiscard]] Platform makePlatform(const std::filesystem::path& componentFolder,
                                    const std::filesystem::path& contacts,
                                    std::unique_ptr<ui::Toolkit> toolkit,
                                    const history::EmptiedFolder& emptied);

}  // namespace vlout::entry::cli
