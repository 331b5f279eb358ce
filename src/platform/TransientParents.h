// SPDX-License-Identifier: MIT
// Keeps windows stacked above windows of another toolkit or thread.
#pragma once

#include <Vistrel/NativeTypes.h>

namespace Vistrel {

/// From now on, whenever `parent` is moved, raised or activated, all windows registered with it are placed directly
/// above it. `parent` stands for the top-level window that it is or lies in, which may belong to any thread of this
/// process. `child` is a top-level window of the calling thread and has one parent, the last one named. The
/// registration ends with the parent and with the window that was named; remove a child before it is destroyed. Returns
/// false and changes nothing for a handle that is no living window of this process, for a window that would have to be
/// above itself, and on systems other than Windows and X11. On X11 the window manager does the stacking, for a parent
/// of any process; a window that is shown again must be registered again.
///
/// Call these functions only on the user-interface thread. It also does the stacking, when it handles its messages:
/// neither it nor the parent's thread waits for the other.
bool addTransientChild(HWND parent, HWND child);

/// Ends the registration of a window, if any.
void removeTransientChild(HWND child);

/// Whether the window is registered and its parent, and the window in it that was named, exist.
bool isTransientChild(HWND child);

/// Ends all registrations and removes every hook.
void removeTransientParents();

} // namespace Vistrel
