// SPDX-License-Identifier: MIT
// Whether there is a screen to show windows on, and how Qt scales to it.
#include "platform/Display.h"

#include "platform/PluginPath.h"

#include <QtCore/QByteArrayList>
#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QLibrary>
#include <QtCore/QPluginLoader>
#include <QtGui/QGuiApplication>

#if defined(Q_OS_UNIX)
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#endif
#if defined(VISTREL_HAS_X11)
#include <xcb/xcb.h>
#endif

#include <algorithm>

namespace Vistrel {

namespace {

/// The choice that arguments and environment make.
struct Choice
{
    QByteArray platforms; // names with their arguments, in the order in which they are tried
    QString pluginFolder; // searched before others, or empty
    QByteArray display;   // the X server's name, or empty for the one in DISPLAY
    bool isNamed = false; // by arguments or environment
};

// Which of these Qt tries by default depends on its version and patches.
QByteArray defaultPlatforms()
{
#if defined(Q_OS_WIN)
    return "windows";
#elif defined(Q_OS_MACOS)
    return "cocoa";
#else
    if (qgetenv("XDG_SESSION_TYPE") == "wayland")
        return "wayland;xcb";
    return qEnvironmentVariableIsSet("WAYLAND_DISPLAY") ? "xcb;wayland" : "xcb";
#endif
}

Choice choose(const std::vector<std::string>& arguments)
{
    Choice choice{qgetenv("QT_QPA_PLATFORM"), qEnvironmentVariable("QT_QPA_PLATFORM_PLUGIN_PATH"), {}};
    choice.isNamed = !choice.platforms.isEmpty();
    for (std::size_t i = 1; i + 1 < arguments.size(); ++i) {
        const std::string option = arguments[i].substr(arguments[i].rfind("--", 0) == 0 ? 1 : 0);
        const char* const value = arguments[i + 1].c_str();
        if (option == "-platform")
            choice.platforms = value, choice.isNamed = true, ++i;
        else if (option == "-platformpluginpath")
            choice.pluginFolder = QString::fromLocal8Bit(value), ++i;
        else if (option == "-display")
            choice.display = value, ++i;
        else if (option == "-platformtheme" || option.rfind("-qwindow", 0) == 0)
            ++i; // the value, which may look like an option
    }
    if (!choice.isNamed)
        choice.platforms = defaultPlatforms();
    return choice;
}

// Plug-ins ------------------------------------------------------------------------------------------------------------

bool isPluginOf(const QString& platform, const QJsonObject& description)
{
    constexpr unsigned major = 0xff0000;
    constexpr unsigned minor = 0x00ff00;
    const auto version = static_cast<unsigned>(description.value(QLatin1String("version")).toInt());
    if ((version & major) != (QT_VERSION & major) || (version & minor) > (QT_VERSION & minor) ||
        !description.value(QLatin1String("IID")).toString().contains(QLatin1String("QPlatformIntegrationFactory")))
        return false;
    const QJsonArray names =
        description.value(QLatin1String("MetaData")).toObject().value(QLatin1String("Keys")).toArray();
    return std::any_of(names.begin(), names.end(), [&](const QJsonValue& name) {
        return name.toString().compare(platform, Qt::CaseInsensitive) == 0;
    });
}

// Qt takes the first one with the platform's name, whether it can be loaded or not.
QString pluginOf(const QString& platform, const QString& folder)
{
    const QStringList names = QDir(folder).entryList(QDir::Files);
    for (const QString& name : names) {
        const QString file = QDir(folder).filePath(name);
        if (QLibrary::isLibrary(name) && isPluginOf(platform, QPluginLoader(file).metaData()))
            return file;
    }
    return {};
}

// Empty when a plug-in is loaded.
QString whyNoPlugin(const QString& platform, const Choice& choice)
{
    QStringList folders = qtPluginPaths();
    if (!choice.pluginFolder.isEmpty())
        folders.prepend(choice.pluginFolder);
    QString reason = QStringLiteral("There is no platform plug-in \"%1\".").arg(platform);
    for (const QString& subfolder : {QString(), QStringLiteral("/platforms")}) {
        if (subfolder.isEmpty() && choice.pluginFolder.isEmpty())
            continue; // Qt looks outside "platforms" only when a folder is named
        for (const QString& folder : qAsConst(folders)) {
            const QString file = pluginOf(platform, folder + subfolder);
            if (file.isEmpty())
                continue;
            QPluginLoader plugin(file);
            if (plugin.load())
                return {};
            reason =
                QStringLiteral("The platform plug-in \"%1\" cannot be loaded: %2").arg(platform, plugin.errorString());
            break;
        }
    }
    return reason;
}

// What plug-ins connect to --------------------------------------------------------------------------------------------

#if defined(VISTREL_HAS_X11)

DisplayCheck checkServer(QByteArray display)
{
    if (display.isEmpty())
        display = qgetenv("DISPLAY");
    if (display.isEmpty())
        return {"No X server is named: DISPLAY is not set.", nullptr};
    int screen = 0;
    const std::shared_ptr<xcb_connection_t> connection(xcb_connect(display.constData(), &screen), &xcb_disconnect);
    if (xcb_connection_has_error(connection.get()))
        return {"The X server \"" + display.toStdString() + "\" cannot be reached.", nullptr};
    if (screen >= xcb_setup_roots_length(xcb_get_setup(connection.get())))
        return {"The X server has no such screen: \"" + display.toStdString() + "\".", nullptr};
    return {{}, connection};
}

#endif

#if defined(Q_OS_UNIX)

DisplayCheck checkCompositor()
{
    if (qEnvironmentVariableIsSet("WAYLAND_SOCKET")) // an open connection, inherited
        return {};
    QByteArray name = qgetenv("WAYLAND_DISPLAY");
    if (name.isEmpty())
        name = "wayland-0";
    if (!name.startsWith('/'))
        name.prepend(qgetenv("XDG_RUNTIME_DIR") + '/');
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    bool isReached = false;
    const int connection = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (connection >= 0 && static_cast<std::size_t>(name.size()) < sizeof address.sun_path) {
        std::copy(name.begin(), name.end(), address.sun_path);
        isReached = connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }
    if (connection >= 0)
        close(connection);
    if (isReached)
        return {};
    return {"The Wayland compositor \"" + name.toStdString() + "\" cannot be reached.", nullptr};
}

#endif

// Plug-ins that draw without a window system end the process when they find no device.
bool endsTheProcess(const QString& platform)
{
#if defined(Q_OS_UNIX)
    if (platform != QLatin1String("eglfs") && platform != QLatin1String("minimalegl"))
        return false;
    QByteArrayList files{qgetenv("QT_QPA_EGLFS_FB"), "/dev/fb0"};
    for (int i = 0; i < 8; ++i)
        files.append("/dev/dri/card" + QByteArray::number(i));
    return std::none_of(files.begin(), files.end(),
                        [](const QByteArray& file) { return access(file.constData(), R_OK | W_OK) == 0; });
#else
    static_cast<void>(platform);
    return false;
#endif
}

DisplayCheck checkPlatform(const QString& platform, const Choice& choice)
{
    const QString noPlugin = whyNoPlugin(platform, choice);
    if (!noPlugin.isEmpty())
        return {noPlugin.toStdString(), nullptr};
#if defined(VISTREL_HAS_X11)
    if (platform == QLatin1String("xcb"))
        return checkServer(choice.display);
#endif
#if defined(Q_OS_UNIX)
    if (platform.startsWith(QLatin1String("wayland")))
        return checkCompositor();
#endif
    return {};
}

} // namespace

DisplayCheck checkDisplay(const std::vector<std::string>& arguments)
{
#if defined(Q_OS_UNIX)
    if (geteuid() != getuid() && !QCoreApplication::isSetuidAllowed())
        return {"The program runs with another user's rights.", nullptr};
#endif
    const Choice choice = choose(arguments);
    DisplayCheck all;
    QByteArrayList entries = choice.platforms.split(';');
    for (; !entries.isEmpty(); entries.removeFirst()) {
        const QString platform = QString::fromLocal8Bit(entries.first().split(':').first()).toLower();
        DisplayCheck check = checkPlatform(platform, choice);
        if (check.refusal.empty() && endsTheProcess(platform))
            return {"The platform \"" + platform.toStdString() + "\" finds no graphics device.", nullptr};
        if (check.refusal.empty()) {
            if (!choice.isNamed)
                check.platforms = entries.join(';').toStdString();
            return check;
        }
        all.refusal += (all.refusal.empty() ? "" : " ") + check.refusal;
    }
    return all;
}

void followScreenScales()
{
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
#if defined(Q_OS_WIN)
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    using Policy = Qt::HighDpiScaleFactorRoundingPolicy;
    if (QGuiApplication::highDpiScaleFactorRoundingPolicy() == Policy::Round) // Qt's default
        QGuiApplication::setHighDpiScaleFactorRoundingPolicy(Policy::PassThrough);
#endif
}

} // namespace Vistrel
