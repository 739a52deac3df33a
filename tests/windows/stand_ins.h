// What the stand-ins' DLL makes of each class; the caller gets the one reference.
#pragma once

#include <unknwn.h>

#include <filesystem>

namespace vlout::tests {

[[nodiscard]] std::filesystem::path folderOfStandIns();

[[nodiscard]] IUnknown* newOutlookApplication();
[[nodiscard]] IUnknown* newSkinFramework();
[[nodiscard]] IUnknown* newAdoConnection();
[[nodiscard]] IUnknown* newAdoRecordset();

}  // namespace vlout::tests
