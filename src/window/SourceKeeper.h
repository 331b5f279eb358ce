// SPDX-License-Identifier: MIT
// Keeps the sources that windows have been given for as long as anything calls them.
#pragma once

#include <Vistrel/ScopedAcquisitionInterface.h>

#include <memory>

namespace Vistrel {

/// The source, for everyone who calls it. It is deleted on the user-interface thread, where its signal handler lives,
/// whoever lets it go last. Bound to the user-interface thread; the pointer may go on any.
std::shared_ptr<AbstractAcquisitionInterface> keepSource(ScopedAcquisitionInterface&& source);

/// Waits a moment for the calls to sources that windows have let go, and leaves alone, with a line for each, those that
/// still do not return. For the end of the application: from then on no source is deleted.
void leaveSources();

} // namespace Vistrel
