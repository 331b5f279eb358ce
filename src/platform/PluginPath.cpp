// SPDX-License-Identifier: MIT
// The folders of Qt's plug-ins.
#include "platform/PluginPath.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QSettings>

#if defined(_WIN32)
#include <vector>
#include <windows.h>
#endif

namespace Vistrel {

namespace {

#if defined(_WIN32)

// The folder of a library; of the program for null.
QString folderOf(HMODULE module)
{
    // In wide characters: the 8-bit encoding may not be able to represent the name of a user's folder.
    std::vector<wchar_t> name(32768); // the longest path
    const DWORD length = GetModuleFileNameW(module, name.data(), static_cast<DWORD>(name.size()));
    if (length == 0 || length >= name.size())
        return {};
    return QFileInfo(QString::fromWCharArray(name.data(), int(length))).path();
}

QString programFolder()
{
    return folderOf(nullptr);
}

#else

QString programFolder()
{
    return QFileInfo(QFileInfo(QStringLiteral("/proc/self/exe")).canonicalFilePath()).path();
}

#endif

} // namespace

void addQtPluginPath()
{
#if defined(_WIN32)
    const HMODULE module = GetModuleHandleW(L"Qt5Core.dll");
    const QString folder = module ? folderOf(module) : QString();
    if (!folder.isEmpty())
        QCoreApplication::addLibraryPath(folder);
#endif
}

QStringList qtPluginPaths()
{
    QStringList paths = QCoreApplication::libraryPaths();
    const QDir program(programFolder());
    paths.append(program.path());
    const QString configuration = program.filePath(QStringLiteral("qt.conf"));
    if (QFileInfo::exists(configuration)) {
        const QSettings settings(configuration, QSettings::IniFormat);
        const auto setting = [&](const char* key, const char* otherwise) {
            return settings.value(QLatin1String(key), QLatin1String(otherwise)).toString();
        };
        const QDir prefix(program.filePath(setting("Paths/Prefix", ".")));
        paths.append(prefix.filePath(setting("Paths/Plugins", "plugins")));
    }
    return paths;
}

} // namespace Vistrel
