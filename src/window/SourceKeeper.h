// SPDX-License-Identifier: MIT
// Keeps the sources of windows alive while anything calls them.
#pragma once

#include <Vistrel/ScopedAcquisitionInterface.h>

#include <memory>

namespace Vistrel {

/// Returns a pointer that shares the source. The source is deleted on the user-interface thread, where its signal
/// handler lives, on whatever thread the last copy of the pointer is destroyed. Bound to the user-interface thread.
std::shared_ptr<AbstractAcquisitionInterface> keepSource(ScopedAcquisitionInterface&& source);

/// Waits up to three seconds for the calls to sources that have not returned, and deletes those sources. Reports each
/// source whose call still runs, and never deletes it. For the end of the application.
void leaveSources();

} // namespace Vistrel
