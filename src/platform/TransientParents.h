// SPDX-License-Identifier: MIT
// Keeps windows stacked above windows that another toolkit or thread owns.
#pragma once

#include <Vistrel/NativeTypes.h>

namespace Vistrel {

/// From now on, whenever `parent` is moved or raised, all windows registered with it are put directly above it.
/// `parent` may belong to any thread of this process, `child` is a top-level window. Registering a pair again changes
/// nothing. An entry ends with its parent; a child is to be removed before it goes. Returns false, and registers
/// nothing, for a handle that is no living window of this process, for a window that would have to be above itself, and
/// where the system offers no such hook: everywhere but on Windows. Thread-safe.
bool addTransientChild(HWND parent, HWND child);

/// Ends one registration; unknown ones are ignored. Thread-safe.
void removeTransientChild(HWND parent, HWND child);

/// Ends all registrations and takes every hook out. Thread-safe.
void removeTransientParents();

} // namespace Vistrel
