// SPDX-License-Identifier: MIT
// Where the toolkit's plug-ins are beside the toolkit itself.
#include "platform/PluginPath.h"

#if defined(_WIN32)
#include <QtCore/QCoreApplication>
#include <QtCore/QFileInfo>
#include <QtCore/QString>

#include <windows.h>
#endif

namespace Vistrel {

void addToolkitPluginPath()
{
#if defined(_WIN32)
    const HMODULE module = GetModuleHandleW(L"Qt5Core.dll");
    if (!module)
        return;
    char fileName[MAX_PATH] = {};
    if (GetModuleFileNameA(module, fileName, MAX_PATH) == 0)
        return;
    QCoreApplication::addLibraryPath(QFileInfo(QString::fromLocal8Bit(fileName)).path());
#endif
}

} // namespace Vistrel
