#include "windows/dispatch.h"

#include "windows/text.h"

namespace vlout::windows {
namespace {

// What an object says about its failure; the strings are ours to free.
class ExceptionInfo : public EXCEPINFO {
 public:
  ExceptionInfo() : EXCEPINFO{} {}
  ~ExceptionInfo() {
    SysFreeString(bstrSource);
    SysFreeString(bstrDescription);
    SysFreeString(bstrHelpFile);
  }
  ExceptionInfo(const ExceptionInfo&) = delete;
  ExceptionInfo& operator=(const ExceptionInfo&) = delete;
};

bool isBusy(HRESULT result) {
  return result == RPC_E_CALL_REJECTED || result == RPC_E_SERVERCALL_RETRYLATER;
}

[[noreturn]] void fail(std::string_view member, HRESULT result, ExceptionInfo& info) {
  if (result == DISP_E_EXCEPTION && info.pfnDeferredFillIn != nullptr) {
    info.pfnDeferredFillIn(&info);
  }
  HRESULT code = result;
  if (result == DISP_E_EXCEPTION && info.scode != 0) code = info.scode;
  std::string text(member);
  text += ": ";
  if (info.bstrDescription != nullptr && SysStringLen(info.bstrDescription) > 0) {
    text += utf8({info.bstrDescription, SysStringLen(info.bstrDescription)});
  } else {
    text += errorText(code);
  }
  throw ComError(code, text);
}

}  // namespace

DISPID MemberIds::find(IDispatch& object, std::string_view name) {
  const auto known = ids_.find(std::string(name));
  if (known != ids_.end()) return known->second;
  std::wstring wideName = wide(name);
  LPOLESTR names[] = {wideName.data()};
  DISPID id = DISPID_UNKNOWN;
  const DWORD start = GetTickCount();
  HRESULT result = object.GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
  while (isBusy(result) && GetTickCount() - start < kBusyPatience) {
    Sleep(kBusyPause);
    result = object.GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
  }
  if (FAILED(result)) throw ComError(result, std::string(name) + ": " + errorText(result));
  ids_.emplace(name, id);
  return id;
}

_variant_t Dispatch::invoke(std::string_view member, WORD kind, const Arguments& arguments) const {
  if (!object_) throw ComError(E_POINTER, std::string(member) + ": " + errorText(E_POINTER));
  const DISPID id = ids_->find(*object_.Get(), member);
  std::vector<VARIANT> reversed(arguments.rbegin(), arguments.rend());  // as the call wants them
  DISPID putId = DISPID_PROPERTYPUT;
  DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
  if (kind == DISPATCH_PROPERTYPUT) {
    parameters.rgdispidNamedArgs = &putId;
    parameters.cNamedArgs = 1;
  }
  const DWORD start = GetTickCount();
  while (true) {
    _variant_t value;
    ExceptionInfo info;
    const HRESULT result =
        object_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters,
                        kind == DISPATCH_PROPERTYPUT ? nullptr : &value, &info, nullptr);
    if (SUCCEEDED(result)) return value;
    const HRESULT code = result == DISP_E_EXCEPTION ? info.scode : result;
    if (!isBusy(code) || GetTickCount() - start >= kBusyPatience) fail(member, result, info);
    Sleep(kBusyPause);
  }
}

_variant_t Dispatch::call(std::string_view member, const Arguments& arguments) const {
  return invoke(member, DISPATCH_METHOD | DISPATCH_PROPERTYGET, arguments);
}

Dispatch Dispatch::object(std::string_view member, MemberIds& ids,
                          const Arguments& arguments) const {
  const _variant_t value = call(member, arguments);
  if (value.vt != VT_DISPATCH || value.pdispVal == nullptr) {
    throw ComError(E_NOINTERFACE, std::string(member) + ": " + errorText(E_NOINTERFACE));
  }
  return {ComPtr<IDispatch>(value.pdispVal), ids};
}

std::string Dispatch::text(std::string_view member) const {
  return variantText(call(member));
}

long Dispatch::number(std::string_view member) const {
  const _variant_t value = call(member);
  _variant_t number;
  const HRESULT result = VariantChangeType(&number, &value, 0, VT_I4);
  if (FAILED(result)) throw ComError(result, std::string(member) + ": " + errorText(result));
  return number.lVal;
}

void Dispatch::put(std::string_view member, const _variant_t& value) const {
  invoke(member, DISPATCH_PROPERTYPUT, {value});
}

}  // namespace vlout::windows
