// A late-bound object of the stand-ins: members by name, failures as exceptions with a text.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "windows/com.h"
#include "windows/counted.h"
#include "windows/text.h"

namespace vlout::tests {

struct Failure {
  HRESULT code;
  std::string text;
};

// What a call answers that fails so: a code alone, or an exception with its text.
HRESULT raise(const Failure& failure, EXCEPINFO* exception);

class AutomationObject : public windows::Counted<IDispatch> {
 public:
  using Arguments = std::vector<_variant_t>;  // in the order of the call

  STDMETHODIMP GetTypeInfoCount(UINT* count) override;
  STDMETHODIMP GetTypeInfo(UINT index, LCID language, ITypeInfo** info) override;
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override;
  STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                      EXCEPINFO* exception, UINT*) override;

 protected:
  // `typeName` is what the object's type information calls it.
  explicit AutomationObject(std::string_view typeName);

  virtual _variant_t get(const std::string& member, const Arguments& arguments) = 0;
  virtual void put(const std::string& member, const _variant_t& value);

 private:
  struct Members;
  static Members& membersOf(std::string_view typeName);

  Members& members_;
};

[[noreturn]] inline void noSuchMember() {
  throw Failure{DISP_E_MEMBERNOTFOUND, ""};
}

inline _variant_t textVariant(std::string_view text) {
  return {windows::bstr(text)};
}
inline std::string textOf(const _variant_t& value) {
  return windows::variantText(value);
}

template <typename Object, typename... Arguments>
_variant_t newObject(Arguments&&... arguments) {
  return {static_cast<IDispatch*>(new Object(std::forward<Arguments>(arguments)...)), false};
}

}  // namespace vlout::tests
