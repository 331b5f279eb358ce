// SPDX-License-Identifier: MIT
// Keeps windows stacked above windows that another toolkit or thread owns.
#pragma once

#include <Vistrel/NativeTypes.h>

namespace Vistrel {

/// From now on, whenever `parent` is moved, raised or activated, all windows registered with it are put directly above
/// it. `parent` stands for the top-level window that it is or lies in, which may belong to any thread of this process;
/// `child` is a top-level window of the calling thread and has one parent, the last one named. An entry ends with
/// its parent and with the window that was named; a child is to be removed before it goes. Returns false, and changes
/// nothing, for a handle that is no living window of this process, for a window that would have to be above itself, and
/// where the system has no means: everywhere but on Windows and X11. On X11 the window manager does it, for a parent of
/// any process; a window that is shown anew is to be registered again.
///
/// These functions are to be called on one thread, the user-interface thread, which does the stacking, too, as soon as
/// it takes its messages: it never waits for the parent's thread, nor that one for it.
bool addTransientChild(HWND parent, HWND child);

/// Ends the registration of a window, if there is one.
void removeTransientChild(HWND child);

/// Whether the window is registered: its parent, and the window in it that was named, live.
bool isTransientChild(HWND child);

/// Ends all registrations and takes every hook out.
void removeTransientParents();

} // namespace Vistrel
