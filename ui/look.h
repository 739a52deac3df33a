// The stores of a component as they are, for as long as it lives, without anything being written.
#pragma once

#include "ui/component.h"

namespace vlout::ui {

class Look {
 public:
  // Throws DatabaseError.
  explicit Look(Component& component) : component_(component) { component_.beginPreview(); }
  ~Look() { component_.endPreview(); }
  Look(const Look&) = delete;
  Look& operator=(const Look&) = delete;

 private:
  Component& component_;
};

}  // namespace vlout::ui
