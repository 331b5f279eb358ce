// SPDX-License-Identifier: MIT
// Asks sources for the locks of their frames, none twice on one thread.
#pragma once

#include <Vistrel/AbstractAcquisitionInterface.h>

namespace Vistrel {

/// Asks for the frame's lock, with no mutex held: the source may wait, or call back. Empty when it is refused, when the
/// source throws, or when a `HeldFrameLock` of this thread names the source: the answer might wait for this thread.
ScopedLock askFrameLock(AbstractAcquisitionInterface* source, const RawImage& frame) noexcept;

/// Lives for as long as a lock of the source is held on this thread while code runs that may ask for one.
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
