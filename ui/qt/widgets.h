// The widget of a control: shows the control's state, and turns what the user does into the same
// changes of state that the form itself makes. FormWindow makes the widgets.
#pragma once

#include <QWidget>

#include "ui/layout.h"

namespace vlout::ui::qt {

// A new widget that follows the control from now on; the parent owns it. Until the widget is gone,
// nothing else may use the control's hooks; `releaseControl` frees them.
[[nodiscard]] QWidget* makeWidget(const Layout& part, QWidget* parent);
void releaseControl(const Layout& part);

}  // namespace vlout::ui::qt
