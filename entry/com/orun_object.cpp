#include "entry/com/orun_object.h"

#include "entry/com/module.h"
#include "vloutsync_h.h"
#include "windows/com.h"
#include "windows/counted.h"

namespace vlout::entry::com {
namespace {

using windows::ComPtr;

// What the embedded type library says of the interface, which serves late-bound callers.
HRESULT loadTypeInfo(ITypeInfo** info) {
  ComPtr<ITypeLib> library;
  const HRESULT result = LoadTypeLibEx(moduleFile().c_str(), REGKIND_NONE, library.GetAddressOf());
  return FAILED(result) ? result : library->GetTypeInfoOfGuid(IID__ORUN, info);
}

class OrunObject : public windows::Counted<_ORUN> {
 public:
  explicit OrunObject(ComPtr<ITypeInfo> info)
      : Counted({IID_IDispatch, IID__ORUN}), info_(std::move(info)) {}

  STDMETHODIMP GetTypeInfoCount(UINT* count) override {
    if (count == nullptr) return E_POINTER;
    *count = 1;
    return S_OK;
  }
  STDMETHODIMP GetTypeInfo(UINT index, LCID, ITypeInfo** info) override {
    if (info == nullptr) return E_POINTER;
    *info = nullptr;
    return index == 0 ? info_.CopyTo(info) : DISP_E_BADINDEX;
  }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
    return info_->GetIDsOfNames(names, count, ids);
  }
  STDMETHODIMP Invoke(DISPID member, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                      VARIANT* result, EXCEPINFO* exception, UINT* badArgument) override {
    return info_->Invoke(static_cast<_ORUN*>(this), member, flags, parameters, result, exception,
                         badArgument);
  }

  STDMETHODIMP OUTSYNCRUN(VARIANT* result) override {
    if (result == nullptr) return E_POINTER;
    VariantInit(result);
    runComponent();
    return S_OK;  // and empty, whatever happened: the user has seen it
  }

 private:
  ComPtr<ITypeInfo> info_;
  InUse inUse_;
};

class Factory : public windows::Counted<IClassFactory> {
 public:
  Factory() : Counted({IID_IClassFactory}) {}

  STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** result) override {
    if (result == nullptr) return E_POINTER;
    *result = nullptr;
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    try {
      ComPtr<ITypeInfo> info;
      const HRESULT loaded = loadTypeInfo(info.GetAddressOf());
      if (FAILED(loaded)) return loaded;
      return windows::makeCounted<OrunObject>(std::move(info)).CopyTo(iid, result);
    } catch (...) {
      return E_OUTOFMEMORY;
    }
  }

  STDMETHODIMP LockServer(BOOL lock) override {
    InUse::lock(lock != FALSE);
    return S_OK;
  }

 private:
  InUse inUse_;
};

}  // namespace

HRESULT getClassObject(REFCLSID classId, REFIID iid, void** result) {
  if (result == nullptr) return E_POINTER;
  *result = nullptr;
  if (classId != CLSID_ORUN) return CLASS_E_CLASSNOTAVAILABLE;
  return windows::makeCounted<Factory>().CopyTo(iid, result);
}

}  // namespace vlout::entry::com
