// The widget of one control: shows the control's state, and turns what the user does with it into
// the same changes of state that the form itself makes. FormWindow makes them.
#pragma once

#include <QWidget>

#include "ui/layout.h"

namespace vlout::ui::qt {

// A new widget for the control, which tells it what changes from now on; the parent owns it. Until
// the widget is gone, nothing else may use the control's hooks; `releaseControl` frees them.
[[nodiscard]] QWidget* makeWidget(const Layout& part, QWidget* parent);
void releaseControl(const Layout& part);

}  // namespace vlout::ui::qt
