#include "tests/windows/automation_object.h"

namespace vlout::tests {
namespace {

// Type information that knows nothing but the name.
class NamedType : public windows::Counted<ITypeInfo> {
 public:
  explicit NamedType(const std::string& name) : Counted({IID_ITypeInfo}), name_("_" + name) {}
  STDMETHODIMP GetDocumentation(MEMBERID, BSTR* name, BSTR*, DWORD*, BSTR*) override {
    *name = windows::bstr(name_).Detach();
    return S_OK;
  }
  STDMETHODIMP GetTypeAttr(TYPEATTR**) override { return E_NOTIMPL; }
  STDMETHODIMP GetTypeComp(ITypeComp**) override { return E_NOTIMPL; }
  STDMETHODIMP GetFuncDesc(UINT, FUNCDESC**) override { return E_NOTIMPL; }
  STDMETHODIMP GetVarDesc(UINT, VARDESC**) override { return E_NOTIMPL; }
  STDMETHODIMP GetNames(MEMBERID, BSTR*, UINT, UINT*) override { return E_NOTIMPL; }
  STDMETHODIMP GetRefTypeOfImplType(UINT, HREFTYPE*) override { return E_NOTIMPL; }
  STDMETHODIMP GetImplTypeFlags(UINT, INT*) override { return E_NOTIMPL; }
  STDMETHODIMP GetIDsOfNames(LPOLESTR*, UINT, MEMBERID*) override { return E_NOTIMPL; }
  STDMETHODIMP Invoke(PVOID, MEMBERID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
    return E_NOTIMPL;
  }
  STDMETHODIMP GetDllEntry(MEMBERID, INVOKEKIND, BSTR*, BSTR*, WORD*) override { return E_NOTIMPL; }
  STDMETHODIMP GetRefTypeInfo(HREFTYPE, ITypeInfo**) override { return E_NOTIMPL; }
  STDMETHODIMP AddressOfMember(MEMBERID, INVOKEKIND, PVOID*) override { return E_NOTIMPL; }
  STDMETHODIMP CreateInstance(IUnknown*, REFIID, PVOID*) override { return E_NOTIMPL; }
  STDMETHODIMP GetMops(MEMBERID, BSTR*) override { return E_NOTIMPL; }
  STDMETHODIMP GetContainingTypeLib(ITypeLib**, UINT*) override { return E_NOTIMPL; }
  STDMETHODIMP_(void) ReleaseTypeAttr(TYPEATTR*) override {}
  STDMETHODIMP_(void) ReleaseFuncDesc(FUNCDESC*) override {}
  STDMETHODIMP_(void) ReleaseVarDesc(VARDESC*) override {}

 private:
  std::string name_;
};

}  // namespace

// The members of a class are numbered as they are first asked for, each class in a range of its
// own: a number of another class is none.
struct AutomationObject::Members {
  std::string typeName;
  DISPID first;
  std::vector<std::string> names;
};

AutomationObject::Members& AutomationObject::membersOf(std::string_view typeName) {
  static std::map<std::string, Members, std::less<>> classes;
  if (const auto known = classes.find(typeName); known != classes.end()) return known->second;
  const auto first = static_cast<DISPID>(1000 * (classes.size() + 1));
  const std::string name(typeName);
  return classes.emplace(name, Members{name, first, {}}).first->second;
}

AutomationObject::AutomationObject(std::string_view typeName)
    : Counted({IID_IDispatch}), members_(membersOf(typeName)) {}

STDMETHODIMP AutomationObject::GetTypeInfoCount(UINT* count) {
  *count = 1;
  return S_OK;
}

STDMETHODIMP AutomationObject::GetTypeInfo(UINT, LCID, ITypeInfo** info) {
  *info = new NamedType(members_.typeName);
  return S_OK;
}

STDMETHODIMP AutomationObject::GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) {
  const std::string name = windows::utf8(names[0]);
  auto& known = members_.names;
  const auto place = std::find(known.begin(), known.end(), name) - known.begin();
  if (static_cast<std::size_t>(place) == known.size()) known.push_back(name);
  ids[0] = members_.first + static_cast<DISPID>(place);
  return S_OK;
}

STDMETHODIMP AutomationObject::Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                                      VARIANT* result, EXCEPINFO* exception, UINT*) {
  const auto place = static_cast<std::size_t>(id - members_.first);
  if (id < members_.first || place >= members_.names.size()) return DISP_E_MEMBERNOTFOUND;
  const std::string& member = members_.names[place];
  Arguments arguments;
  for (UINT i = parameters->cArgs; i > 0; --i) arguments.emplace_back(parameters->rgvarg[i - 1]);
  try {
    if ((flags & DISPATCH_PROPERTYPUT) != 0) {
      put(member, arguments.at(0));
    } else {
      _variant_t value = get(member, arguments);
      if (result != nullptr) *result = value.Detach();
    }
    return S_OK;
  } catch (const Failure& failure) {
    return raise(failure, exception);
  }
}

HRESULT raise(const Failure& failure, EXCEPINFO* exception) {
  if (failure.text.empty()) return failure.code;
  exception->scode = failure.code;
  exception->bstrDescription = windows::bstr(failure.text).Detach();
  return DISP_E_EXCEPTION;
}

void AutomationObject::put(const std::string&, const _variant_t&) {
  noSuchMember();
}

}  // namespace vlout::tests
