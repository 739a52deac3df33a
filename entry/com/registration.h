// The registry entries by which hosts find the component's class, either for all users of the
// machine or for the current user only.
#pragma once

#include <windows.h>

namespace vlout::entry::com {

enum class Scope { Machine, User };

// Neither leaves half its work behind: a registration that fails is undone. What the DLL of the
// other width needs stays.
[[nodiscard]] HRESULT registerComponent(Scope scope);
[[nodiscard]] HRESULT unregisterComponent(Scope scope);

}  // namespace vlout::entry::com
