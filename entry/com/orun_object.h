// The COM class ORUN and its factory.
#pragma once

#include <windows.h>

#include <unknwn.h>

namespace vlout::entry::com {

// The factory of the class with that id, as DllGetClassObject returns it.
[[nodiscard]] HRESULT getClassObject(REFCLSID classId, REFIID iid, void** result);

}  // namespace vlout::entry::com
