// SPDX-License-Identifier: MIT
// Which driver is running, and which SDK this library was built with.
#include "window/DriverVersion.h"

#include <QtCore/QLibrary>

namespace Vistrel {

namespace {

constexpr std::uint32_t debugBit = 0x80000000; // of the major word
constexpr std::uint32_t sdkMajor = 6;
constexpr std::uint32_t sdkMinor = 0x300;

using Query = void (*)(std::uint32_t* majorWord, std::uint32_t* minorWord);

QString versionText(std::uint32_t majorVersion, std::uint32_t minorVersion, bool isDebug)
{
    QString text = QString::number(majorVersion) + QLatin1Char('.') + QString::number(minorVersion, 16);
    if (isDebug)
        text += QLatin1String(" [debug]");
    return text;
}

} // namespace

bool driverVersion(std::uint32_t* majorVersion, std::uint32_t* minorVersion, bool* isDebug)
{
    QLibrary library(QStringLiteral("KVD")); // KVD.dll, libKVD.so
    const auto query = reinterpret_cast<Query>(library.resolve("KVDriverVersion"));
    if (query) {
        std::uint32_t majorWord = 0;
        std::uint32_t minorWord = 0;
        query(&majorWord, &minorWord);
        *majorVersion = majorWord & ~debugBit;
        *minorVersion = minorWord;
        *isDebug = (majorWord & debugBit) != 0;
    }
    library.unload();
    return query != nullptr;
}

QString driverVersionText()
{
    std::uint32_t majorVersion = 0;
    std::uint32_t minorVersion = 0;
    bool isDebug = false;
    if (!driverVersion(&majorVersion, &minorVersion, &isDebug))
        return QString();
    return versionText(majorVersion, minorVersion, isDebug);
}

QString sdkVersionText()
{
    return versionText(sdkMajor, sdkMinor, false);
}

} // namespace Vistrel
