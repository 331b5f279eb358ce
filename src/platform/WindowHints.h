// SPDX-License-Identifier: MIT
// What the frame of a window offers.
#pragma once

class QWidget;

namespace Vistrel {

/// Gives the window's frame a close button, or takes it away; the other buttons stay. The window keeps its place, its
/// state (full screen, maximized, minimized) and its visibility. User-interface thread.
void setCloseButton(QWidget& window, bool hasButton);

} // namespace Vistrel
