// SPDX-License-Identifier: MIT
// The message boxes that other threads wait for.
#pragma once

namespace Vistrel {

/// From now on calls on other threads answer that no button was pressed. For the end of the application, which waits
/// for those threads. User-interface thread.
void endWaitingCalls();

} // namespace Vistrel
