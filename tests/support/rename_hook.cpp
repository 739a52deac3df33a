#include "tests/support/rename_hook.h"

#include <cerrno>
#include <cstdio>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace vlout::tests {
namespace {

std::function<bool(int)> hook;
int exchanges = 0;

}  // namespace

void onExchange(std::function<bool(int)> newHook) {
  hook = std::move(newHook);
  exchanges = 0;
}

}  // namespace vlout::tests

// Stands before the C library's.
extern "C" int renameat2(int oldFolder, const char* oldName, int newFolder, const char* newName,
                         unsigned flags) noexcept {
  if (flags == RENAME_EXCHANGE && vlout::tests::hook &&
      !vlout::tests::hook(vlout::tests::exchanges++)) {
    errno = EINVAL;
    return -1;
  }
  return static_cast<int>(syscall(SYS_renameat2, oldFolder, oldName, newFolder, newName, flags));
}
