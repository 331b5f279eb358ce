// SPDX-License-Identifier: MIT
// Carries calls to the user-interface thread.
#pragma once

#include <functional>
#include <memory>

class QWidget;

namespace Vistrel {

/// Has `work` called on the user-interface thread and waits until it has returned. `work` gets the widget of `target`,
/// or null. False when it is not called or throws: because `target`, which may be null, has been removed, or because
/// the event loop or the application ends meanwhile. Thread-safe. On the user-interface thread itself `work` is called
/// at once, and what it throws leaves this function.
bool callOnUserInterface(const void* target, const std::function<void(QWidget*)>& work);

/// A target is there from the first of these on until the last, which ends the calls that wait for it; so does the
/// other, for a target that stays when its widget goes. User-interface thread.
void addCallTarget(const void* target, QWidget* widget);
void clearCallTarget(const void* target);
void removeCallTarget(const void* target);

/// Expires when the target is removed; empty when there is no such target. Thread-safe.
std::weak_ptr<const void> callTargetLife(const void* target);

/// Ends the calls that wait, and refuses others, until an event loop runs again. For an end of the loop that is
/// followed by a wait for the threads that call. User-interface thread.
void endUserInterfaceCalls();

} // namespace Vistrel
