// SPDX-License-Identifier: MIT
// Where the system has no means to keep windows above a parent.
#include "platform/TransientParents.h"

namespace Vistrel {

bool addTransientChild(HWND, HWND)
{
    return false;
}

void removeTransientChild(HWND) {}

bool isTransientChild(HWND)
{
    return false;
}

void removeTransientParents() {}

} // namespace Vistrel
