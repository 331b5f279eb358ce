// SPDX-License-Identifier: MIT
// The single owner of a lock.
#pragma once

#include <Vistrel/AbstractLock.h>

namespace Vistrel {

/// Move-only owner of one `AbstractLock`; destroying it releases the lock. Reentrant.
class VISTREL_EXPORT ScopedLock
{
public:
    ScopedLock();
    /// Takes ownership; null makes an empty holder.
    ScopedLock(AbstractLock* const lock);
    ScopedLock(ScopedLock&& other) noexcept;
    ScopedLock(const ScopedLock&) = delete;
    ~ScopedLock();

    /// Releases the lock held now, then takes the other's and leaves the other empty.
    ScopedLock& operator=(ScopedLock&& other) noexcept;
    ScopedLock& operator=(const ScopedLock&) = delete;
    void take(ScopedLock&& other) noexcept;
    /// Releases the lock held now, then owns `lock`, which may be null.
    void reset(AbstractLock* const lock) noexcept;

    bool good() const { return m_lock != nullptr; }
    bool bad() const { return m_lock == nullptr; }
    explicit operator bool() const { return good(); }
    bool operator!() const { return bad(); }

private:
    AbstractLock* m_lock;
};

} // namespace Vistrel
