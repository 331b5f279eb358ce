// SPDX-License-Identifier: MIT
// Asks sources for frame locks, at most once on a thread.
#pragma once

#include <Vistrel/AbstractAcquisitionInterface.h>

namespace Vistrel {

/// Asks for the frame's lock. Call it without a mutex held: the source may block or call back. Empty when the source
/// refuses or throws, and when a `HeldFrameLock` of this thread names the source, which might then wait for this
/// thread.
ScopedLock askFrameLock(AbstractAcquisitionInterface* source, const RawImage& frame) noexcept;

/// Marks that this thread holds a lock of the source while it runs code that may ask for another.
class HeldFrameLock
{
public:
    explicit HeldFrameLock(const AbstractAcquisitionInterface* source) noexcept;
    ~HeldFrameLock();
    HeldFrameLock(const HeldFrameLock&) = delete;
    HeldFrameLock& operator=(const HeldFrameLock&) = delete;

    static bool isOf(const AbstractAcquisitionInterface* source) noexcept;

private:
    const AbstractAcquisitionInterface* const m_source;
    const HeldFrameLock* const m_outer;
};

} // namespace Vistrel
