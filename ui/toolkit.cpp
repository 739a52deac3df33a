#include "ui/toolkit.h"

#include <random>

namespace vlout::ui {

Guid Toolkit::newGuid() const {
  std::random_device random;
  Guid guid{};
  for (unsigned char& byte : guid) byte = static_cast<unsigned char>(random() & 0xFFU);
  return guid;
}

}  // namespace vlout::ui
