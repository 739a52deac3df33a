// The component's adapters on Linux, for the terminal and the windows alike.
#pragma once

#include <filesystem>
#include <memory>

#include "entry/runtime.h"

namespace vlout::entry::cli {

// `contacts` is the folder of vCards.
[[nodiscard]] Platform makePlatform(const std::filesystem::path& contacts,
                                    std::unique_ptr<ui::Toolkit> toolkit);

}  // namespace vlout::entry::cli
