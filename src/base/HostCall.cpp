// SPDX-License-Identifier: MIT
// The guard around calls into the host's code.
#include "base/HostCall.h"

namespace Vistrel {

namespace {

thread_local int hostCallDepth = 0;

} // namespace

bool isInHostCall() noexcept
{
    return hostCallDepth > 0;
}

HostCallScope::HostCallScope() noexcept
{
    ++hostCallDepth;
}

HostCallScope::~HostCallScope()
{
    --hostCallDepth;
}

} // namespace Vistrel
