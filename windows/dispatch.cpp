#include "windows/dispatch.h"

#include <iterator>
#include <vector>

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

// Windows are painted meanwhile and answer the system, or it would take them for hung; what the
// user presses waits for the run.
void waitPainting(DWORD milliseconds) {
  const ULONGLONG end = GetTickCount64() + milliseconds;
  for (ULONGLONG now = GetTickCount64(); now < end; now = GetTickCount64()) {
    MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(end - now),
                              QS_PAINT | QS_SENDMESSAGE);
    MSG message{};
    constexpr UINT kThese = PM_QS_PAINT | PM_QS_SENDMESSAGE;
    if (PeekMessageW(&message, nullptr, WM_PAINT, WM_PAINT, PM_REMOVE | kThese) == FALSE) continue;
    if (message.message == WM_QUIT) {  // whatever was asked for
      PostQuitMessage(static_cast<int>(message.wParam));
      return Sleep(static_cast<DWORD>(end - now));
    }
    DispatchMessageW(&message);
  }
}

// Makes a call again while its server is busy, for a bounded time; the last answer.
template <typename Call>
HRESULT untilNotBusy(Server server, Call call) {
  const ULONGLONG start = GetTickCount64();  // out of process, the call waits for itself
  while (true) {
    const HRESULT code = call();
    const bool busy = code == RPC_E_CALL_REJECTED || code == RPC_E_SERVERCALL_RETRYLATER;
    if (!busy || !BusyPatience::lasts(GetTickCount64() - start)) {
      if (server == Server::MayBeBusy) BusyPatience::answered(busy);
      return code;
    }
    waitPainting(BusyPatience::kPause);
  }
}

ComError failure(std::string_view member, HRESULT code, const std::string& description = {}) {
  return {code, std::string(member) + ": " + (description.empty() ? errorText(code) : description)};
}

}  // namespace

DISPID MemberIds::find(IDispatch& object, std::string_view name, Server server) {
  const auto known = ids_.find(name);
  if (known != ids_.end()) return known->second;
  std::wstring wideName = wide(name);
  LPOLESTR names[] = {wideName.data()};
  DISPID id = DISPID_UNKNOWN;
  const HRESULT result = untilNotBusy(
      server, [&] { return object.GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id); });
  if (FAILED(result)) throw failure(name, result);
  ids_.emplace(name, id);
  return id;
}

_variant_t Dispatch::invoke(std::string_view member, WORD kind, const Arguments& arguments) const {
  if (!object_) throw failure(member, E_POINTER);
  const DISPID id = ids_->find(*object_.Get(), member, server_);
  std::vector<VARIANT> reversed(std::rbegin(arguments),
                                std::rend(arguments));  // as the call wants them
  DISPID putId = DISPID_PROPERTYPUT;
  DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
  if (kind == DISPATCH_PROPERTYPUT) {
    parameters.rgdispidNamedArgs = &putId;
    parameters.cNamedArgs = 1;
  }
  const bool isPut = kind == DISPATCH_PROPERTYPUT;
  _variant_t value;
  std::string description;
  const HRESULT result = untilNotBusy(server_, [&] {
    ExceptionInfo info;
    const HRESULT code = object_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters,
                                         isPut ? nullptr : &value, &info, nullptr);
    if (code != DISP_E_EXCEPTION) return code;
    if (info.pfnDeferredFillIn != nullptr) info.pfnDeferredFillIn(&info);
    description = utf8({info.bstrDescription, SysStringLen(info.bstrDescription)});
    return FAILED(info.scode) ? info.scode : code;
  });
  if (FAILED(result)) throw failure(member, result, description);
  return value;
}

_variant_t Dispatch::call(std::string_view member, const Arguments& arguments) const {
  return invoke(member, DISPATCH_METHOD | DISPATCH_PROPERTYGET, arguments);
}

Dispatch Dispatch::object(std::string_view member, MemberIds& ids,
                          const Arguments& arguments) const {
  const _variant_t value = call(member, arguments);
  if (value.vt != VT_DISPATCH || value.pdispVal == nullptr) {
    throw failure(member, E_NOINTERFACE);
  }
  return {ComPtr<IDispatch>(value.pdispVal), ids, server_};
}

std::string Dispatch::text(std::string_view member) const {
  return variantText(call(member));
}

long Dispatch::number(std::string_view member) const {
  const _variant_t value = call(member);
  if (value.vt == VT_I4) return value.lVal;
  _variant_t number;
  const HRESULT result = VariantChangeType(
      &number, const_cast<VARIANT*>(static_cast<const VARIANT*>(&value)), 0, VT_I4);
  if (FAILED(result)) throw failure(member, result);
  return number.lVal;
}

void Dispatch::put(std::string_view member, const _variant_t& value) const {
  invoke(member, DISPATCH_PROPERTYPUT, {value});
}

}  // namespace vlout::windows
