// SPDX-License-Identifier: MIT
// Makes calls on the user-interface thread.
#pragma once

#include <functional>
#include <memory>

class QWidget;

namespace Vistrel {

/// Calls `work` on the user-interface thread and blocks until it has returned. `work` gets the widget of `target`, or
/// null. Returns false when `work` throws or is not called: because `target`, which may be null, has been removed, or
/// the event loop or the application ends meanwhile. Thread-safe. On the user-interface thread itself `work` is called
/// at once, and its exceptions leave this function.
bool callOnUserInterface(const void* target, const std::function<void(QWidget*)>& work);

/// `addCallTarget` registers a target, `removeCallTarget` removes it, and `clearCallTarget` removes only its widget.
/// The last two also end the calls that wait for the target. User-interface thread.
void addCallTarget(const void* target, QWidget* widget);
void clearCallTarget(const void* target);
void removeCallTarget(const void* target);

/// Expires when the target is removed; empty when there is no such target. Thread-safe.
std::weak_ptr<const void> callTargetLife(const void* target);

/// Ends the waiting calls, and refuses others, until an event loop runs again. For the end of a loop after which the
/// calling threads are joined. User-interface thread.
void endUserInterfaceCalls();

} // namespace Vistrel
