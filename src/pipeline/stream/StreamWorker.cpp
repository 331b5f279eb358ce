// SPDX-License-Identifier: MIT
// The thread that fetches a source's frames and converts them.
#include "pipeline/stream/StreamWorker.h"

#include "acquisition/FrameLender.h"
#include "base/FrameLocking.h"
#include "base/HostCall.h"
#include "base/LentMemory.h"

#include <Vistrel/ImperativeAcquisitionInterface.h>

#include <QtCore/QScopeGuard>

#include <cstddef>
#include <utility>

namespace Vistrel {

StreamWorker::StreamWorker(AbstractAcquisitionInterface* source, std::function<void()> converted)
    : m_source(source),
      m_lender(dynamic_cast<FrameLender*>(source)),
      m_pushSource(dynamic_cast<ImperativeAcquisitionInterface*>(source)),
      m_converted(std::move(converted))
{
}

StreamWorker::~StreamWorker()
{
    stop();
}

// The thread ---------------------------------------------------------------------------------------------------------

void StreamWorker::start()
{
    const std::lock_guard<std::mutex> handshake(m_handshakeMutex);
    if (m_running.load())
        return;
    m_thread.start([this] { work(); });
    m_running.store(true);
}

void StreamWorker::stop()
{
    DetachableThread thread; // joined without a lock held
    end(thread);
}

// Returns whether a fetch or conversion is running.
bool StreamWorker::end(DetachableThread& thread)
{
    m_pictures.refuseFrames();
    const std::lock_guard<std::mutex> handshake(m_handshakeMutex);
    m_running.store(false);
    m_handshakeCondition.notify_all();
    thread.swap(m_thread);
    return m_isServing;
}

void StreamWorker::detach(std::shared_ptr<StreamWorker> worker, std::shared_ptr<void> keptAlive)
{
    DetachableThread thread;
    // The worker is released before the source, which may own the frames' memory.
    if (worker->end(thread))
        thread.detach({std::move(keptAlive), worker});
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
    for (;;) {
        m_handshakeCondition.wait(handshake,
                                  [this] { return !m_running.load() || (m_requested != m_served && !m_isPaused); });
        if (!m_running.load())
            return;
        const std::uint64_t serving = m_requested;
        const std::uint64_t fetch = ++m_fetches;
        m_isServing = true;
        handshake.unlock();
        serve(fetch);
        handshake.lock();
        m_isServing = false;
        m_served = serving;
        m_handshakeCondition.notify_all();
    }
}

void StreamWorker::serve(std::uint64_t fetch)
{
    ScopedLock lock; // released after everything that the frame refers to
    Delivery delivery;
    delivery.fetch = fetch;
    if (!m_pictures.beginFetch(delivery))
        return;
    if (!m_source || !hostCall("getNextFrame", false, [&] { return m_source->getNextFrame(&delivery.raw, &lock); })) {
        lookAtPushed();
        return;
    }
    m_framesPushed = framesPushed();
    delivery.underLock = lock.good();
    delivery.lent = m_lender ? m_lender->takeDelivered() : nullptr;
    delivery.memory = lentMemoryAt(delivery.raw.data);
    if (!m_pictures.endFetch(delivery) || !m_pictures.convert(delivery))
        return;
    // Not after the stream has detached the worker: the receiver may be destroyed.
    const std::lock_guard<std::mutex> handshake(m_handshakeMutex);
    if (m_running.load())
        m_converted();
}

std::size_t StreamWorker::framesPushed() const
{
    return m_pushSource ? m_pushSource->framesPushed() : 0;
}

// A push source that has a new frame and delivers none may have dropped it.
void StreamWorker::lookAtPushed()
{
    if (!m_pushSource)
        return;
    const std::size_t pushed = framesPushed();
    if (pushed != std::exchange(m_framesPushed, pushed) && !m_pushSource->framesLocked())
        m_pictures.refusals().add(
            "A frame that was pushed is dropped, because frames are not locked: call setFramesLocked(true).");
}

// Changes of settings ------------------------------------------------------------------------------------------------

StreamWorker::Renewal StreamWorker::setStage(Stage::Place place, std::shared_ptr<const Stage> stage)
{
    return m_pictures.setStage(place, std::move(stage)) ? renewFront() : Renewal::None;
}

StreamWorker::Renewal StreamWorker::renewIfOwed()
{
    return m_pictures.takeOwedChange() ? renewFront() : Renewal::None;
}

StreamWorker::Renewal StreamWorker::renewFront()
{
    const DisplayFramePtr outdated = m_pictures.outdated();
    if (outdated && convertAgain(outdated))
        return Renewal::Converted;
    return m_pictures.renderAgain() ? Renewal::Rendered : Renewal::None;
}

bool StreamWorker::convertAgain(const DisplayFramePtr& shown)
{
    if (!m_source)
        return false;
    if (!m_isSourceAskable) {
        m_pictures.oweChange();
        return false;
    }
    const ScopedLock lock = askFrameLock(m_source, shown->delivered);
    if (lock)
        return m_pictures.convertAgain(shown);
    if (shown->underLock || isColor(shown->delivered.format) || HeldFrameLock::isOf(m_source))
        return false;
    // Pixels without a lock may change as soon as the source is asked for the next frame.
    if (!pauseFetching(shown->fetch))
        return false;
    const auto resume = qScopeGuard([this] { resumeFetching(); });
    return m_pictures.convertAgain(shown);
}

// Returns whether the fetch `sinceFetch` is the last one, has returned, and no other is requested; then none begins
// until `resumeFetching`.
bool StreamWorker::pauseFetching(std::uint64_t sinceFetch)
{
    const std::lock_guard<std::mutex> handshake(m_handshakeMutex);
    m_isPaused = !m_isServing && m_requested == m_served && m_fetches == sinceFetch;
    return m_isPaused;
}

void StreamWorker::resumeFetching()
{
    const std::lock_guard<std::mutex> handshake(m_handshakeMutex);
    m_isPaused = false;
    m_handshakeCondition.notify_all();
}

} // namespace Vistrel
