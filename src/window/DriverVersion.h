// SPDX-License-Identifier: MIT
// Which driver is running, and which SDK this library was built with.
#pragma once

#include <QtCore/QString>

#include <cstdint>

namespace Vistrel {

/// Asks the driver's library, which the system finds by its name and which is loaded for the query alone. False when it
/// or its export is missing: then nothing is written.
bool driverVersion(std::uint32_t* majorVersion, std::uint32_t* minorVersion, bool* isDebug);

/// The same as text, such as "6.1f [debug]": the major version in decimal, the minor one in hexadecimal. Empty when
/// the library or its export is missing.
QString driverVersionText();

/// The version of the SDK that this library was built with, written in the same way.
QString sdkVersionText();

} // namespace Vistrel
