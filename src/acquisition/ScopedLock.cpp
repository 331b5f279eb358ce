// SPDX-License-Identifier: MIT
// The lock handle and its single owner.
#include <Vistrel/ScopedLock.h>

#include <utility>

namespace Vistrel {

AbstractLock::AbstractLock() = default;
AbstractLock::AbstractLock(const AbstractLock&) = default;
AbstractLock& AbstractLock::operator=(const AbstractLock&) = default;
AbstractLock::~AbstractLock() = default;

ScopedLock::ScopedLock() : m_lock(nullptr) {}

ScopedLock::ScopedLock(AbstractLock* const lock) : m_lock(lock) {}

ScopedLock::ScopedLock(ScopedLock&& other) noexcept : m_lock(std::exchange(other.m_lock, nullptr)) {}

ScopedLock::~ScopedLock()
{
    delete m_lock;
}

ScopedLock& ScopedLock::operator=(ScopedLock&& other) noexcept
{
    take(std::move(other));
    return *this;
}

void ScopedLock::take(ScopedLock&& other) noexcept
{
    reset(std::exchange(other.m_lock, nullptr));
}

void ScopedLock::reset(AbstractLock* const lock) noexcept
{
    delete std::exchange(m_lock, nullptr);
    m_lock = lock;
}

} // namespace Vistrel
