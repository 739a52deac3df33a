// The component's adapters on Linux, for both the terminal and the windows. Runs are recorded, and
// can be previewed and undone.
#pragma once

#include <csignal>
#include <filesystem>
#include <memory>

#include "entry/runtime.h"
#include "history/run_recorder.h"

namespace vlout::entry::cli {

// `contacts` is the folder of vCards or an address book. If `stop` is given, waiting for other
// programs ends once it is not 0.
[[nodiscard]] Platform makePlatform(const std::filesystem::path& componentFolder,
                                    const std::filesystem::path& contacts,
                                    std::unique_ptr<ui::Toolkit> toolkit,
                                    const history::EmptiedFolder& emptied,
                                    const volatile std::sig_atomic_t* stop = nullptr);

}  // namespace vlout::entry::cli
