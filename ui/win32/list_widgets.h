// The widgets of report lists and trees.
#pragma once

#include <memory>

#include "ui/win32/widget.h"

namespace vlout::ui::win32 {

[[nodiscard]] std::unique_ptr<Widget> makeListWidget(const WidgetPlace& place);
[[nodiscard]] std::unique_ptr<Widget> makeTreeWidget(const WidgetPlace& place);

}  // namespace vlout::ui::win32
