// SPDX-License-Identifier: MIT
// Whether there is a screen to show windows on.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace Vistrel {

struct DisplayCheck
{
    std::string refusal;              // a sentence, or empty
    std::shared_ptr<void> connection; // to the X server, if there is one
    std::string platforms = {};       // to be named to the toolkit; empty when arguments or environment name some
};

/// Refuses when the toolkit's application object, made with these arguments, would find none of the platforms that it
/// tries, and end the process. Chooses as the toolkit does, by arguments and environment, or else for it, and asks of
/// each platform for its plug-in and for what that connects to. The plug-ins that it looks at stay loaded. Keep the
/// result until the application object is there: an X server may begin anew, and refuse, when its only connection is
/// closed.
DisplayCheck checkDisplay(const std::vector<std::string>& arguments);

} // namespace Vistrel
