// An object of the stand-in for Outlook: late-bound calls go through what the type library
// publishes, so that a wrong name, argument or kind of call fails as it would there.
#pragma once

#include <windows.h>

#include <string>

#include "tests/windows/automation_object.h"

namespace vlout::tests {

// What the library says of an interface; it lies beside the stand-ins' DLL.
[[nodiscard]] ITypeInfo* publishedType(REFIID interfaceId);

// Leaves a failure's text for the caller, as automation objects do; the failure's code.
HRESULT leaveError(const Failure& failure);

template <typename Call>
HRESULT guarded(Call call) {
  try {
    call();
    return S_OK;
  } catch (const Failure& failure) {
    return leaveError(failure);
  }
}

inline HRESULT give(std::string_view text, BSTR* result) {
  *result = windows::bstr(text).Detach();
  return S_OK;
}

template <typename Interface>
class PublishedObject : public windows::Counted<Interface> {
 public:
  STDMETHODIMP GetTypeInfoCount(UINT* count) override {
    *count = 1;
    return S_OK;
  }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo** info) override {
    *info = publishedType(__uuidof(Interface));
    (*info)->AddRef();
    return S_OK;
  }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
    return publishedType(__uuidof(Interface))->GetIDsOfNames(names, count, ids);
  }
  STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                      EXCEPINFO* exception, UINT* badArgument) override {
    ITypeInfo* const type = publishedType(__uuidof(Interface));
    _bstr_t name;
    UINT count = 0;
    if (FAILED(type->GetNames(id, name.GetAddress(), 1, &count))) return DISP_E_MEMBERNOTFOUND;
    try {
      before(windows::utf8(static_cast<const wchar_t*>(name)));
    } catch (const Failure& failure) {
      return raise(failure, exception);
    }
    SetErrorInfo(0, nullptr);
    return type->Invoke(static_cast<Interface*>(this), id, flags, parameters, result, exception,
                        badArgument);
  }

 protected:
  PublishedObject() : windows::Counted<Interface>({IID_IDispatch, __uuidof(Interface)}) {}

  // Called before each member, which fails with what this throws.
  virtual void before(const std::string& member) { static_cast<void>(member); }
};

}  // namespace vlout::tests
