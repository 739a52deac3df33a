#include "outlook/normalizer.h"

#include <algorithm>
#include <iterator>

namespace vlout::outlook {

std::string normalize(std::string_view text) {
  constexpr std::string_view kRemoved = " ;,-()";
  std::string result;
  result.reserve(text.size());
  std::copy_if(text.begin(), text.end(), std::back_inserter(result),
               [&](char c) { return kRemoved.find(c) == std::string_view::npos; });
  return result;
}

}  // namespace vlout::outlook
