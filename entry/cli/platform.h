// The component's adapters on Linux, for the terminal and the windows alike. Their runs are
// recorded, can be previewed and can be taken back.
#pragma once

#include <csignal>
#include <filesystem>
#include <memory>

#include "entry/runtime.h"
#include "history/run_recorder.h"

namespace vlout::entry::cli {

// `contacts` is the folder of vCards. `stop`, where it is given, ends waiting for other programs
// once it is not 0.
[[nodiscard]] Platform makePlatform(const std::filesystem::path& componentFolder,
                                    const std::filesystem::path& contacts,
                                    std::unique_ptr<ui::Toolkit> toolkit,
                                    const history::EmptiedFolder& emptied,
                                    const volatile std::sig_atomic_t* stop = nullptr);

}  // namespace vlout::entry::cli
