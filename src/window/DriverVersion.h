// SPDX-License-Identifier: MIT
// Which driver is running, and which SDK this library was built with.
#pragma once

#include <QtCore/QString>

#include <cstdint>

namespace Vistrel {

/// Loads the driver's library by its name, asks it, and unloads it. False, and nothing written, when the library or its
/// export is missing.
bool driverVersion(std::uint32_t* majorVersion, std::uint32_t* minorVersion, bool* isDebug);

/// Returns the same as text, such as "6.1f [debug]": major version in decimal, minor version in hexadecimal. Empty when
/// the library or its export is missing.
QString driverVersionText();

/// Returns the version of the SDK that this library was built with, in the same form.
QString sdkVersionText();

} // namespace Vistrel
