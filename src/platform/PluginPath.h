// SPDX-License-Identifier: MIT
// The folders of Qt's plug-ins.
#pragma once

#include <QtCore/QStringList>

namespace Vistrel {

/// On Windows, adds the folder of Qt's core library to the plug-in paths, if it can be found. Does nothing on Linux,
/// where Qt knows its paths.
void addQtPluginPath();

/// Returns the plug-in paths that Qt will have once its application object exists, which adds the program's.
QStringList qtPluginPaths();

} // namespace Vistrel
