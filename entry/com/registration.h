// The component's entries in the registry, under which hosts find its class: for all users of the
// machine or for the present one alone.
#pragma once

#include <windows.h>

namespace vlout::entry::com {

enum class Scope { Machine, User };

// Both leave no half of their work behind: a registration that fails is taken back. What the DLL of
// the other width needs stays.
[[nodiscard]] HRESULT registerComponent(Scope scope);
[[nodiscard]] HRESULT unregisterComponent(Scope scope);

}  // namespace vlout::entry::com
