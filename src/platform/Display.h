// SPDX-License-Identifier: MIT
// Whether there is a screen to show windows on, and how Qt scales to it.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace Vistrel {

struct DisplayCheck
{
    std::string refusal;              // a sentence, or empty
    std::shared_ptr<void> connection; // to the X server, or null
    std::string platforms = {};       // for Qt; empty when arguments or environment name some
};

/// Refuses when Qt's application object, made with these arguments, would end the process because none of the platforms
/// that it tries can be used. Chooses the platforms as Qt does, by arguments and environment, and checks of each the
/// plug-in and what that connects to. The plug-ins that it checks stay loaded. Keep the result until the application
/// object exists: an X server may restart, and refuse connections, when its only connection is closed.
DisplayCheck checkDisplay(const std::vector<std::string>& arguments);

/// Makes pictures sharp on every screen and, on Windows, makes Qt count in logical pixels, with the exact scale of each
/// screen. Call it before the application object exists. Qt's environment variables, `Qt::AA_DisableHighDpiScaling` and
/// another rounding policy of the host have priority.
void followScreenScales();

} // namespace Vistrel
