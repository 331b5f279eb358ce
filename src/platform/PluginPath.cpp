// SPDX-License-Identifier: MIT
// Where the toolkit's plug-ins are beside the toolkit itself.
#include "platform/PluginPath.h"

#if defined(_WIN32)
#include <QtCore/QCoreApplication>
#include <QtCore/QFileInfo>
#include <QtCore/QString>

#include <vector>
#include <windows.h>
#endif

namespace Vistrel {

void addToolkitPluginPath()
{
#if defined(_WIN32)
    const HMODULE module = GetModuleHandleW(L"Qt5Core.dll");
    if (!module)
        return;
    // The wide form: a user's folder may have a name that the system's 8-bit encoding has no letters for.
    std::vector<wchar_t> name(32768); // the longest path that there can be
    const DWORD length = GetModuleFileNameW(module, name.data(), static_cast<DWORD>(name.size()));
    if (length > 0 && length < name.size())
        QCoreApplication::addLibraryPath(QFileInfo(QString::fromWCharArray(name.data(), int(length))).path());
#endif
}

} // namespace Vistrel
