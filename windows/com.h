// What the Windows adapters share of COM: owning pointers, errors as texts, and the conversion
// between variants and the texts and dates that the ports speak.
#pragma once

#include <comdef.h>
#include <stdexcept>
#include <string>
#include <wrl/client.h>

#include "text/date_time.h"

namespace vlout::windows {

using Microsoft::WRL::ComPtr;

// A call on a COM object that failed: on what, and the system's or the object's own text.
class ComError : public std::runtime_error {
 public:
  ComError(HRESULT code, const std::string& text) : std::runtime_error(text), code_(code) {}
  [[nodiscard]] HRESULT code() const { return code_; }

 private:
  HRESULT code_;
};

// The system's text for an error, with its number.
[[nodiscard]] std::string errorText(HRESULT code);

// The value as a text, whatever its type; an empty text for Null and Empty. A date becomes a stamp.
// Throws ComError for a value that has no text.
[[nodiscard]] std::string variantText(const VARIANT& value);

// Convert to and from an automation date, which counts days. A fraction of a second is kept to the
// millisecond: anything finer is the number's rounding error and would turn a whole second into the
// one before.
[[nodiscard]] text::DateTime fromAutomationDate(double days);
[[nodiscard]] double toAutomationDate(text::DateTime time);

}  // namespace vlout::windows
