// SPDX-License-Identifier: MIT
// Whether there is a screen to show windows on.
#include "platform/Display.h"

#if defined(VISTREL_HAS_X11)
#include <QtCore/QtGlobal>

#include <algorithm>
#include <xcb/xcb.h>
#endif

namespace Vistrel {

#if defined(VISTREL_HAS_X11)

bool hasDisplay(const std::vector<std::string>& arguments)
{
    const auto choosesAnother = [](const std::string& argument) {
        return argument == "-platform" || argument == "--platform" || argument == "-display" || argument == "--display";
    };
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY") ||
        std::any_of(arguments.begin(), arguments.end(), choosesAnother))
        return true;
    xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
    const bool isConnected = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    return isConnected;
}

#else

bool hasDisplay(const std::vector<std::string>&)
{
    return true;
}

#endif

} // namespace Vistrel
