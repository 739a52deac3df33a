// Turns what a failed automation call throws into the port's own error.
#pragma once

#include <comdef.h>

#include "outlook/contact_store.h"
#include "windows/com.h"

namespace vlout::outlook::automation {

template <typename Call>
auto guarded(Call call) {
  try {
    return call();
  } catch (const windows::ComError& error) {
    throw ContactStoreError(error.what());
  } catch (const _com_error& error) {
    throw ContactStoreError(windows::errorText(error.Error()));
  }
}

}  // namespace vlout::outlook::automation
