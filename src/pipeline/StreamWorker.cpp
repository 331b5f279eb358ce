// SPDX-License-Identifier: MIT
// The thread that fetches a source's frames and converts them.
#include "pipeline/StreamWorker.h"

#include "acquisition/FrameLender.h"
#include "base/Report.h"

#include <Vistrel/AbstractAcquisitionInterface.h>

#include <boost/thread/thread.hpp>

#include <utility>

namespace Vistrel {

StreamWorker::StreamWorker(AbstractAcquisitionInterface* source, std::function<void()> converted)
    : m_source(source), m_lender(dynamic_cast<FrameLender*>(source)), m_converted(std::move(converted))
{
}

StreamWorker::~StreamWorker()
{
    stop();
}

// The thread ---------------------------------------------------------------------------------------------------------

void StreamWorker::start()
{
    std::unique_lock<std::mutex> handshake(m_handshakeMutex);
    if (m_running.load())
        return;
    m_running.store(true);
    m_started = false;
    try {
        m_thread = std::make_unique<boost::thread>([this] {
            work();
            std::pair<std::shared_ptr<StreamWorker>, std::shared_ptr<void>> left;
            {
                const std::lock_guard<std::mutex> guard(m_handshakeMutex);
                left.swap(m_left);
            }
            left.first.reset(); // before the source, which may be the end of what the frames belong to
        });
    } catch (...) {
        m_running.store(false);
        throw;
    }
    m_handshakeCondition.wait(handshake, [this] { return m_started; });
}

void StreamWorker::stop()
{
    std::unique_ptr<boost::thread> thread;
    {
        const std::lock_guard<std::mutex> handshake(m_handshakeMutex);
        m_running.store(false);
        m_handshakeCondition.notify_all();
        thread = std::move(m_thread);
    }
    if (thread)
        thread->join();
}

void StreamWorker::leave(std::shared_ptr<StreamWorker> worker, std::shared_ptr<void> keptAlive)
{
    {
        const std::lock_guard<std::mutex> handshake(worker->m_handshakeMutex);
        worker->m_running.store(false);
        worker->m_handshakeCondition.notify_all();
        if (worker->m_isServing) {
            worker->m_thread->detach();
            worker->m_thread.reset();
            worker->m_left = {worker, std::move(keptAlive)};
        }
    }
    worker->stop();
}

void StreamWorker::request()
{
    const std::lock_guard<std::mutex> handshake(m_handshakeMutex);
    ++m_requested;
    m_handshakeCondition.notify_all();
}

void StreamWorker::requestAndWait()
{
    std::unique_lock<std::mutex> handshake(m_handshakeMutex);
    const std::uint64_t ticket = ++m_requested;
    m_handshakeCondition.notify_all();
    m_handshakeCondition.wait(handshake, [&] { return m_served >= ticket || !m_running.load(); });
}

void StreamWorker::work()
{
    std::unique_lock<std::mutex> handshake(m_handshakeMutex);
    m_started = true;
    m_handshakeCondition.notify_all();
    for (;;) {
        m_handshakeCondition.wait(handshake, [this] { return !m_running.load() || m_requested != m_served; });
        if (!m_running.load())
            return;
        const std::uint64_t serving = m_requested;
        m_isServing = true;
        handshake.unlock();
        serve();
        handshake.lock();
        m_isServing = false;
        m_served = serving;
        m_handshakeCondition.notify_all();
    }
}

void StreamWorker::serve()
{
    std::shared_ptr<LockedBitmap> bitmap; // the frame's pixels may lie in it, whatever is locked meanwhile
    {
        const std::lock_guard<std::mutex> guard(m_imageMutex);
        if (!m_isAccepting)
            return;
        bitmap = m_settings.lockedBitmap;
    }
    RawImage delivered;
    ScopedLock lock;
    if (!m_source || !hostCall("getNextFrame", false, [&] { return m_source->getNextFrame(&delivered, &lock); }))
        return;
    const std::shared_ptr<const void> lent = m_lender ? m_lender->takeDelivered() : nullptr;
    // A frame that the source was waiting for while it was cleaned up and set up again is shown: what was cleared is
    // looked at from here on.
    std::uint64_t clearCount = 0;
    {
        const std::lock_guard<std::mutex> guard(m_imageMutex);
        if (!m_isAccepting || !m_running.load())
            return;
        clearCount = m_clearCount;
    }
    convertDelivered(delivered, lent, lock.good(), clearCount, bitmap.get());
}

void StreamWorker::convertDelivered(const RawImage& delivered, const std::shared_ptr<const void>& lent, bool underLock,
                                    std::uint64_t clearCount, const LockedBitmap* bitmap)
{
    for (;;) {
        const Snapshot before = snapshot();
        // Drawn into a bitmap that has been unlocked: its pixels go with the picture in view.
        const LockedBitmap* const shown = before.front ? before.front->lockedBitmap.get() : nullptr;
        for (const LockedBitmap* const one : {bitmap, shown}) {
            if (one && one != before.settings.lockedBitmap.get() && one->description.data == delivered.data)
                return;
        }
        const std::shared_ptr<DisplayFrame> frame = tryConvert(delivered, underLock, before.settings);
        if (!frame)
            return;
        frame->lent = lent;
        DisplayFramePtr previous; // its memory is given back with no lock held
        bool isDropped = false;
        {
            const std::lock_guard<std::mutex> guard(m_imageMutex);
            isDropped = clearCount != m_clearCount || !m_running.load();
            if (!isDropped && before.version != m_settingsVersion)
                continue;
            if (!isDropped) {
                frame->sequence = m_framesConverted.load() + 1;
                previous = std::exchange(m_front, frame);
                m_framesConverted.store(frame->sequence);
            }
        }
        if (isDropped) {
            m_converter.releaseMemory(); // taken after everything had been freed
            return;
        }
        // Not once the stream has left: whoever it tells may be gone.
        const std::lock_guard<std::mutex> handshake(m_handshakeMutex);
        if (m_running.load())
            m_converted();
        return;
    }
}

std::shared_ptr<DisplayFrame> StreamWorker::tryConvert(const RawImage& delivered, bool underLock,
                                                       const ConversionSettings& settings)
{
    return hostCall("conversion", std::shared_ptr<DisplayFrame>(),
                    [&] { return m_converter.convert(delivered, underLock, settings); });
}

// The picture --------------------------------------------------------------------------------------------------------

DisplayFramePtr StreamWorker::front() const
{
    const std::lock_guard<std::mutex> guard(m_imageMutex);
    return m_front;
}

ConversionSettings StreamWorker::settings() const
{
    const std::lock_guard<std::mutex> guard(m_imageMutex);
    return m_settings;
}

StreamWorker::Snapshot StreamWorker::snapshot() const
{
    const std::lock_guard<std::mutex> guard(m_imageMutex);
    return {m_front, m_settings, m_settingsVersion};
}

bool StreamWorker::replaceFront(const Snapshot& before, DisplayFramePtr frame)
{
    const std::lock_guard<std::mutex> guard(m_imageMutex);
    if (m_front != before.front || m_settingsVersion != before.version)
        return false;
    m_front.swap(frame); // `before` still holds the old one: nothing is freed under the lock
    return true;
}

bool StreamWorker::convertFrontAgain(bool lockRequired)
{
    const DisplayFramePtr shown = front();
    if (!shown || !shown->delivered.data || !shown->isDrawn || !m_source)
        return false;
    const ScopedLock lock =
        hostCall("getFrameLock", ScopedLock(), [&] { return m_source->getFrameLock(shown->delivered); });
    if (!lock && (lockRequired || shown->underLock))
        return false;
    // Another frame may have been delivered while this thread waited for the lock. It is shown with the new settings
    // anyway, and the pixels of this one need not be there any more.
    const Snapshot before = snapshot();
    if (before.front != shown)
        return false;
    const std::shared_ptr<DisplayFrame> frame = tryConvert(shown->delivered, shown->underLock, before.settings);
    if (!frame)
        return false;
    frame->sequence = shown->sequence;
    frame->lent = shown->lent;
    return replaceFront(before, frame);
}

bool StreamWorker::renderFrontAgain()
{
    const Snapshot before = snapshot();
    if (!before.front || before.front->rendered.isNull() || before.front->image.format() != QImage::Format_Indexed8)
        return false;
    const auto frame = hostCall("rendering", std::shared_ptr<DisplayFrame>(),
                                [&] { return m_converter.renderAgain(*before.front, before.settings.palette); });
    return frame && replaceFront(before, frame);
}

bool StreamWorker::lockBitmap(int width, int height, Format format)
{
    std::shared_ptr<LockedBitmap> bitmap;
    DisplayFramePtr shown;
    hostCall("setBitmapLocked", false, [&] {
        bitmap = m_converter.makeLockedBitmap(width, height, format);
        const DisplayFramePtr before = front();
        if (bitmap)
            shown = FrameConverter::showLocked(before ? *before : DisplayFrame(), bitmap);
        return true;
    });
    const bool isLocked = shown != nullptr;
    if (!isLocked)
        bitmap = nullptr;
    // What goes is freed after the lock is released.
    const std::lock_guard<std::mutex> guard(m_imageMutex);
    m_settings.lockedBitmap.swap(bitmap);
    ++m_settingsVersion;
    if (isLocked)
        m_front.swap(shown);
    return isLocked;
}

void StreamWorker::clear()
{
    {
        DisplayFramePtr previous;
        const std::lock_guard<std::mutex> guard(m_imageMutex);
        ++m_clearCount;
        m_isAccepting = false;
        previous = std::exchange(m_front, nullptr);
    }
    m_converter.releaseMemory();
}

void StreamWorker::acceptFrames()
{
    const std::lock_guard<std::mutex> guard(m_imageMutex);
    m_isAccepting = true;
}

} // namespace Vistrel
