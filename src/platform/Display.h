// SPDX-License-Identifier: MIT
// Whether there is a screen to show windows on.
#pragma once

#include <string>
#include <vector>

namespace Vistrel {

/// False when the toolkit's application object, made with these arguments, would find no X server, and end the process.
/// True wherever that is not certain.
bool hasDisplay(const std::vector<std::string>& arguments);

} // namespace Vistrel
