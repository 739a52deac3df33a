// Waits on the component's behalf while Outlook is busy, for the length of one call from the host;
// then the host's own message filter is put back.
#pragma once

#include <windows.h>

#include <objidl.h>

#include "windows/com.h"

namespace vlout::entry::com {

class MessageFilter {
 public:
  MessageFilter();
  ~MessageFilter();
  MessageFilter(const MessageFilter&) = delete;
  MessageFilter& operator=(const MessageFilter&) = delete;

 private:
  windows::ComPtr<IMessageFilter> old_;
  bool registered_;
};

}  // namespace vlout::entry::com
