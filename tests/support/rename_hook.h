// Other programs that write in the very moment in which names are exchanged, and file systems that
// cannot exchange them.
#pragma once

#include <functional>

namespace vlout::tests {

// Called before each exchange, with how many there were since it was set; false stands for a file
// system without support. Empty for none.
void onExchange(std::function<bool(int)> hook);

}  // namespace vlout::tests
