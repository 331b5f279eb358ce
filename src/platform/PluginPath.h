// SPDX-License-Identifier: MIT
// Where the toolkit's plug-ins are.
#pragma once

#include <QtCore/QStringList>

namespace Vistrel {

/// Adds the folder of the toolkit's core library to the plug-in paths where the system does not know them otherwise.
/// Failure is no error. Does nothing on Linux, whose toolkit knows its own paths.
void addToolkitPluginPath();

/// The plug-in paths that the toolkit will have once its application object is there, which adds the program's.
QStringList toolkitPluginPaths();

} // namespace Vistrel
