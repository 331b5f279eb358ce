// SPDX-License-Identifier: MIT
// Asks sources for frame locks, at most once on a thread.
#include "base/FrameLocking.h"

#include "base/HostCall.h"

namespace Vistrel {

namespace {

thread_local const HeldFrameLock* innermost = nullptr;

} // namespace

ScopedLock askFrameLock(AbstractAcquisitionInterface* source, const RawImage& frame) noexcept
{
    if (HeldFrameLock::isOf(source))
        return {};
    return hostCall("getFrameLock", ScopedLock(), [&] { return source->getFrameLock(frame); });
}

HeldFrameLock::HeldFrameLock(const AbstractAcquisitionInterface* source) noexcept : m_source(source), m_outer(innermost)
{
    innermost = this;
}

HeldFrameLock::~HeldFrameLock()
{
    innermost = m_outer;
}

bool HeldFrameLock::isOf(const AbstractAcquisitionInterface* source) noexcept
{
    const HeldFrameLock* held = innermost;
    while (held && held->m_source != source)
        held = held->m_outer;
    return held != nullptr;
}

} // namespace Vistrel
