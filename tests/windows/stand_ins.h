// What the stand-ins' DLL makes of each class; the caller gets the one reference.
#pragma once

#include <unknwn.h>

#include <filesystem>

namespace vlout::tests {

[[nodiscard]] std::filesystem::path folderOfStandIns();

// The last reference to an application has gone: a program of its own ends then.
void applicationEnded();

[[nodiscard]] IUnknown* newOutlookApplication();
[[nodiscard]] IUnknown* newSkinFramework();
[[nodiscard]] IUnknown* newAdoConnection();
[[nodiscard]] IUnknown* newAdoRecordset();

}  // namespace vlout::tests
