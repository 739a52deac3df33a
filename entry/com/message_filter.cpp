#include "entry/com/message_filter.h"

#include "windows/counted.h"
#include "windows/dispatch.h"

namespace vlout::entry::com {
namespace {

using windows::ComPtr;

class BusyFilter : public windows::Counted<IMessageFilter> {
 public:
  BusyFilter() : Counted({IID_IMessageFilter}) {}

  STDMETHODIMP_(DWORD) HandleInComingCall(DWORD, HTASK, DWORD, LPINTERFACEINFO) override {
    return SERVERCALL_ISHANDLED;
  }
  STDMETHODIMP_(DWORD) RetryRejectedCall(HTASK, DWORD waited, DWORD) override {
    constexpr DWORD kGiveUp = static_cast<DWORD>(-1);
    return windows::BusyPatience::lasts(waited) ? windows::BusyPatience::kPause : kGiveUp;
  }
  STDMETHODIMP_(DWORD) MessagePending(HTASK, DWORD, DWORD) override {
    return PENDINGMSG_WAITDEFPROCESS;
  }
};

}  // namespace

MessageFilter::MessageFilter() {
  const auto filter = windows::makeCounted<BusyFilter>();
  // Outside a single-threaded apartment there are no filters, and none is needed.
  registered_ = SUCCEEDED(CoRegisterMessageFilter(filter.Get(), &old_));
}

MessageFilter::~MessageFilter() {
  ComPtr<IMessageFilter> ours;
  if (registered_) CoRegisterMessageFilter(old_.Get(), &ours);
}

}  // namespace vlout::entry::com
