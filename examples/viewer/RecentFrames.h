// SPDX-License-Identifier: MIT
// Lends frame buffers to the display.
#pragma once

#include <Vistrel/RawImage.h>
#include <Vistrel/ScopedLock.h>

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>

/// A buffer that is in use: its deleter takes it back, on whatever thread the last reference goes, also after the
/// source is gone. What the deleter needs must therefore be owned by it.
using LentBuffer = std::shared_ptr<const void>;

/// Keeps the last two delivered frames readable: the newest, and the one that is still in view while the newest is
/// being converted. Each lock refers to the buffer as well. Thread-safe.
class RecentFrames
{
public:
    /// Stores a frame that lies in `buffer`, and its lock; numbers it in `userData`. Null targets are left out.
    void deliver(Vistrel::RawImage frame, LentBuffer buffer, Vistrel::RawImage* image, Vistrel::ScopedLock* lock);

    /// A lock on a frame delivered before; empty when its buffer may be in use for another frame.
    Vistrel::ScopedLock lock(const Vistrel::RawImage& image) const;

    std::size_t delivered() const;

private:
    struct Delivered
    {
        void* number;
        LentBuffer buffer;
    };

    mutable std::mutex m_mutex;
    std::deque<Delivered> m_recent; // at most two, the newest last
    std::uintptr_t m_count = 0;
};
