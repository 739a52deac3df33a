// Imitates other programs that write at the very moment when names are exchanged, and file systems
// that cannot exchange names.
#pragma once

#include <functional>

namespace vlout::tests {

// Sets what is called before each exchange, with the number of exchanges since it was set; if it
// returns false, the file system cannot exchange names. Empty for nothing.
void onExchange(std::function<bool(int)> hook);

}  // namespace vlout::tests
