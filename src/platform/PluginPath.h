// SPDX-License-Identifier: MIT
// Where the toolkit's plug-ins are beside the toolkit itself.
#pragma once

namespace Vistrel {

/// Adds the folder of the toolkit's core library to the plug-in paths where the system does not know them otherwise.
/// Failure is no error. Does nothing on Linux, whose toolkit knows its own paths.
void addToolkitPluginPath();

} // namespace Vistrel
