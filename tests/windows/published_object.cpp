#include "tests/windows/published_object.h"

#include <map>

#include "tests/windows/stand_ins.h"

namespace vlout::tests {
namespace {

ITypeLib* library() {
  static const windows::ComPtr<ITypeLib> loaded = [] {
    windows::ComPtr<ITypeLib> found;
    const auto file = folderOfStandIns() / "outlook.tlb";
    _com_util::CheckError(LoadTypeLibEx(file.c_str(), REGKIND_NONE, found.GetAddressOf()));
    return found;
  }();
  return loaded.Get();
}

}  // namespace

ITypeInfo* publishedType(REFIID interfaceId) {
  static std::map<unsigned long, windows::ComPtr<ITypeInfo>> types;
  auto& type = types[interfaceId.Data4[7]];  // in which the library's identifiers differ
  if (!type) {
    _com_util::CheckError(library()->GetTypeInfoOfGuid(interfaceId, type.GetAddressOf()));
  }
  return type.Get();
}

HRESULT leaveError(const Failure& failure) {
  windows::ComPtr<ICreateErrorInfo> made;
  windows::ComPtr<IErrorInfo> error;
  if (SUCCEEDED(CreateErrorInfo(made.GetAddressOf())) && SUCCEEDED(made.As(&error))) {
    made->SetDescription(windows::bstr(failure.text));
    SetErrorInfo(0, error.Get());
  }
  return failure.code;
}

}  // namespace vlout::tests
