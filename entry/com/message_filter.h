// Waits for a busy Outlook during a call from the host; afterwards the host's own message filter is
// restored.
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
