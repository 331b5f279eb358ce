// SPDX-License-Identifier: MIT
// For systems that cannot keep windows above a parent.
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
