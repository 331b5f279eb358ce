// SPDX-License-Identifier: MIT
// A source into which the host pushes its frames.
#include <Vistrel/ImperativeAcquisitionInterface.h>

#include "base/LentMemory.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace Vistrel {

namespace {

// The one lock on all frames of a source. Unlike a mutex it may be released on another thread than it was taken on, and
// it outlives the source while it is held.
class FrameGate
{
public:
    // Between taking the pending frame and holding its lock, all other threads wait: otherwise `framesLocked` could
    // return while a taken frame is about to be read.
    void beginHandOver()
    {
        std::unique_lock<std::mutex> guard(m_mutex);
        m_changed.wait(guard, [this] { return m_handOver == std::thread::id(); });
        m_handOver = std::this_thread::get_id();
    }

    void endHandOver()
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_handOver = std::thread::id();
        m_changed.notify_all();
    }

    // Returns false and acquires nothing while frames are not locked.
    bool acquire()
    {
        std::unique_lock<std::mutex> guard(m_mutex);
        waitUntilFree(guard);
        m_held = m_framesLocked;
        return m_held;
    }

    void release()
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_held = false;
        m_changed.notify_all();
    }

    bool framesLocked()
    {
        std::unique_lock<std::mutex> guard(m_mutex);
        waitUntilFree(guard);
        return m_framesLocked;
    }

    void setFramesLocked(bool locked)
    {
        std::unique_lock<std::mutex> guard(m_mutex);
        waitUntilFree(guard);
        m_framesLocked = locked;
    }

private:
    void waitUntilFree(std::unique_lock<std::mutex>& guard)
    {
        m_changed.wait(guard, [this] {
            return !m_held && (m_handOver == std::thread::id() || m_handOver == std::this_thread::get_id());
        });
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::thread::id m_handOver; // the thread that is taking a frame, or none
    bool m_held = false;
    bool m_framesLocked = false;
};

class HandOver
{
public:
    explicit HandOver(FrameGate& gate) : m_gate(gate) { m_gate.beginHandOver(); }
    ~HandOver() { m_gate.endHandOver(); }
    HandOver(const HandOver&) = delete;
    HandOver& operator=(const HandOver&) = delete;

private:
    FrameGate& m_gate;
};

// A pending frame, and the library's memory that it lies in, if any: a host that drew into a bitmap may unlock it
// before the frame is taken.
struct PushedFrame
{
    RawImage image;
    std::shared_ptr<const void> memory;
};

// A host's lock, together with that memory.
class KeepingLock : public AbstractLock
{
public:
    KeepingLock(ScopedLock lock, std::shared_ptr<const void> memory)
        : m_memory(std::move(memory)), m_lock(std::move(lock))
    {
    }

private:
    const std::shared_ptr<const void> m_memory; // released after the lock
    const ScopedLock m_lock;
};

} // namespace

struct ImperativeAcquisitionInterface::PrivateData
{
    class FramesLockedImageLock : public AbstractLock
    {
    public:
        explicit FramesLockedImageLock(std::shared_ptr<FrameGate> gate) : m_gate(std::move(gate)) {}
        ~FramesLockedImageLock() override
        {
            if (owns)
                m_gate->release();
        }
        bool owns = false;

    private:
        std::shared_ptr<FrameGate> m_gate;
    };

    ~PrivateData() { delete pending.load(); }

    std::unique_ptr<PushedFrame> takePending() { return std::unique_ptr<PushedFrame>(pending.exchange(nullptr)); }

    std::atomic<PushedFrame*> pending{nullptr};
    std::atomic<std::size_t> pushed{0};
    std::shared_ptr<FrameGate> gate = std::make_shared<FrameGate>();
};

ImperativeAcquisitionInterface::ImperativeAcquisitionInterface() : m_imperative(new PrivateData) {}

ImperativeAcquisitionInterface::~ImperativeAcquisitionInterface() = default;

void ImperativeAcquisitionInterface::setNextFrame(const unsigned char* const data, std::size_t width,
                                                  std::size_t height, Format format, void* const userData)
{
    setNextFrame(RawImage{data, width, height, format, userData});
}

void ImperativeAcquisitionInterface::setNextFrame(const RawImage& image)
{
    delete m_imperative->pending.exchange(new PushedFrame{image, lentMemoryAt(image.data)});
    ++m_imperative->pushed;
}

void ImperativeAcquisitionInterface::clearNextFrame()
{
    delete m_imperative->pending.exchange(nullptr);
}

std::size_t ImperativeAcquisitionInterface::framesPushed() const
{
    return m_imperative->pushed.load();
}

bool ImperativeAcquisitionInterface::framesLocked() const
{
    return m_imperative->gate->framesLocked();
}

void ImperativeAcquisitionInterface::setFramesLocked(bool locked)
{
    m_imperative->gate->setFramesLocked(locked);
}

bool ImperativeAcquisitionInterface::getNextFrame(RawImage* const image, ScopedLock* const lock)
{
    readyNextFrame();
    if (!image)
        return false;
    if (!lock) {
        const std::unique_ptr<PushedFrame> frame = m_imperative->takePending();
        if (frame)
            *image = frame->image;
        return frame != nullptr;
    }

    // A caller that still holds the previous frame's lock here would wait for itself.
    lock->reset(nullptr);
    const HandOver handOver(*m_imperative->gate);
    const std::unique_ptr<PushedFrame> frame = m_imperative->takePending();
    if (!frame)
        return false;
    ScopedLock frameLock = getFrameLock(frame->image);
    if (!frameLock)
        return false;
    if (frame->memory)
        frameLock = ScopedLock(new KeepingLock(std::move(frameLock), std::move(frame->memory)));
    lock->take(std::move(frameLock));
    *image = frame->image;
    return true;
}

ScopedLock ImperativeAcquisitionInterface::getFrameLock(const RawImage&)
{
    auto lock = std::make_unique<PrivateData::FramesLockedImageLock>(m_imperative->gate);
    lock->owns = m_imperative->gate->acquire();
    return lock->owns ? ScopedLock(lock.release()) : ScopedLock();
}

void ImperativeAcquisitionInterface::readyNextFrame() {}

} // namespace Vistrel
