// SPDX-License-Identifier: MIT
// Lends frame buffers to the library.
#include "RecentFrames.h"

#include <utility>

namespace {

class BufferLock : public Vistrel::AbstractLock
{
public:
    explicit BufferLock(LentBuffer buffer) : m_buffer(std::move(buffer)) {}

private:
    LentBuffer m_buffer;
};

} // namespace

void RecentFrames::deliver(Vistrel::RawImage frame, LentBuffer buffer, Vistrel::RawImage* image,
                           Vistrel::ScopedLock* lock)
{
    LentBuffer outgoing; // returned to its owner after the mutex is released
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        frame.userData = reinterpret_cast<void*>(++m_count);
        m_recent.push_back({frame.userData, buffer});
        if (m_recent.size() > 2) {
            outgoing = std::move(m_recent.front().buffer);
            m_recent.pop_front();
        }
    }
    if (image)
        *image = frame;
    if (lock)
        lock->reset(new BufferLock(std::move(buffer)));
}

Vistrel::ScopedLock RecentFrames::lock(const Vistrel::RawImage& image) const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    for (const Delivered& recent : m_recent) {
        if (recent.number == image.userData)
            return Vistrel::ScopedLock(new BufferLock(recent.buffer));
    }
    return {};
}

std::size_t RecentFrames::delivered() const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_count;
}
