// SPDX-License-Identifier: MIT
// Lends frame buffers to the library.
#pragma once

#include <Vistrel/RawImage.h>
#include <Vistrel/ScopedLock.h>

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>

/// A buffer in use. Its deleter takes it back, on the thread of the last reference, also after the source is destroyed:
/// the deleter must own what it needs.
using LentBuffer = std::shared_ptr<const void>;

/// Keeps the last two delivered frames readable: the newest, and the one that is still in view while the newest is
/// being converted. Each lock refers to the buffer as well. Thread-safe.
class RecentFrames
{
public:
    /// Stores the description of a frame in `buffer`, with a number in `userData`, and its lock. Null targets are
    /// skipped.
    void deliver(Vistrel::RawImage frame, LentBuffer buffer, Vistrel::RawImage* image, Vistrel::ScopedLock* lock);

    /// Returns a lock on a frame delivered before; empty when its buffer may be in use for another frame.
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
