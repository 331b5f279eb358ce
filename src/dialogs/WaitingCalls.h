// SPDX-License-Identifier: MIT
// The message boxes that other threads wait for.
#pragma once

#include <Vistrel/MessageBoxDialog.h>

#include <functional>

namespace Vistrel {

/// Has `show` called on the user-interface thread and waits for its answer: that no button was pressed, too, when the
/// event loop or the application goes meanwhile. `show` is not called, and no button was pressed, when `window`, which
/// may be null, has been deleted or goes before.
DialogButton answerOnUserInterfaceThread(const Window* window, const std::function<DialogButton()>& show);

/// A window is there from the first of these on until the second, which ends the calls that wait for it.
/// User-interface thread.
void addCallableWindow(const Window* window);
void removeCallableWindow(const Window* window);

/// Until an event loop runs again, calls on other threads answer that no button was pressed. For an end of the loop
/// that is followed by a wait for those threads. User-interface thread.
void endWaitingCalls();
/// For the end of what `window` shows: calls that wait for it now answer that no button was pressed. User-interface
/// thread.
void endWaitingCalls(const Window* window);

} // namespace Vistrel
