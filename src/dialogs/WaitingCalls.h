// SPDX-License-Identifier: MIT
// The message boxes that other threads wait for.
#pragma once

#include <Vistrel/MessageBoxDialog.h>

#include <functional>

namespace Vistrel {

/// Has `show` called on the user-interface thread and waits for its answer: that no button was pressed, too, when the
/// event loop or the application goes meanwhile.
DialogButton answerOnUserInterfaceThread(const std::function<DialogButton()>& show);

/// From now on calls on other threads answer that no button was pressed. For the end of the application, which waits
/// for those threads. User-interface thread.
void endWaitingCalls();

} // namespace Vistrel
