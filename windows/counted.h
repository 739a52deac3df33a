// The part that every COM object has: counting references and answering for its interfaces.
#pragma once

#include <windows.h>

#include <unknwn.h>
#include <wrl/client.h>

#include <algorithm>
#include <atomic>
#include <utility>
#include <vector>

namespace vlout::windows {

// An object with one interface, known under the identifiers given (and as IUnknown). It begins with
// one reference, and ends with the last.
template <typename Interface>
class Counted : public Interface {
 public:
  STDMETHODIMP QueryInterface(REFIID iid, void** result) override {
    if (result == nullptr) return E_POINTER;
    *result = nullptr;
    const bool known =
        iid == IID_IUnknown || std::any_of(interfaces_.begin(), interfaces_.end(),
                                           [&](const IID& each) { return each == iid; });
    if (!known) return E_NOINTERFACE;
    *result = static_cast<Interface*>(this);
    AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
  STDMETHODIMP_(ULONG) Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

 protected:
  explicit Counted(std::vector<IID> interfaces) : interfaces_(std::move(interfaces)) {}
  virtual ~Counted() = default;

 private:
  std::vector<IID> interfaces_;
  std::atomic<ULONG> references_{1};
};

// Takes over a reference. MinGW's `ComPtr::Attach` adds one of its own, which nobody would release.
template <typename Interface>
[[nodiscard]] Microsoft::WRL::ComPtr<Interface> owned(Interface* object) {
  Microsoft::WRL::ComPtr<Interface> pointer;
  *pointer.GetAddressOf() = object;
  return pointer;
}

// A new object, held by its first reference.
template <typename Object, typename... Arguments>
[[nodiscard]] Microsoft::WRL::ComPtr<Object> makeCounted(Arguments&&... arguments) {
  return owned(new Object(std::forward<Arguments>(arguments)...));  // NOLINT: it ends by itself
}

}  // namespace vlout::windows
