// SPDX-License-Identifier: MIT
// The close button of a window's frame.
#pragma once

class QWidget;

namespace Vistrel {

/// Adds the close button to the window's frame, or removes it; the other buttons stay. The window keeps its position,
/// its state (full screen, maximized, minimized) and its visibility. User-interface thread.
void setCloseButton(QWidget& window, bool hasButton);

} // namespace Vistrel
