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
    DetachableThread thread; // joined with no lock held
    end(thread);
}

// True when a fetch or conversion is under way.
bool StreamWorker::end(DetachableThread& thread)
{
    const std::lock_guard<std::mutex> handshake(m_handshakeMutex);
    m_running.store(false);
    m_handshakeCondition.notify_all();
    thread.swap(m_thread);
    return m_isServing;
}

void StreamWorker::detach(std::shared_ptr<StreamWorker> worker, std::shared_ptr<void> keptAlive)
{
    DetachableThread thread;
    // The worker goes before the source, which may be the end of what the frames belong to.
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
    Delivery delivery;
    delivery.fetch = fetch;
    {
        const std::lock_guard<std::mutex> guard(m_imageMutex);
        if (!m_isAccepting)
            return;
        delivery.bitmaps = {std::exchange(m_unlocked, nullptr), m_settings.lockedBitmap};
    }
    if (!m_source ||
        !hostCall("getNextFrame", false, [&] { return m_source->getNextFrame(&delivery.raw, &delivery.lock); })) {
        lookAtPushed();
        return;
    }
    m_framesPushed = framesPushed();
    delivery.lent = m_lender ? m_lender->takeDelivered() : nullptr;
    delivery.memory = lentMemoryAt(delivery.raw.data);
    // A frame that the source was waiting for while it was cleaned up and set up again is shown: what was cleared is
    // looked at from here on.
    {
        const std::lock_guard<std::mutex> guard(m_imageMutex);
        if (!m_isAccepting || !m_running.load())
            return;
        delivery.clearCount = m_clearCount;
    }
    Outcome outcome = convertDelivered(delivery);
    // A bitmap that was locked meanwhile gets the frame, too. Once: what a host locks without pause stops no source.
    if (outcome == Outcome::OtherTarget)
        outcome = convertDelivered(delivery);
    if (outcome == Outcome::Cleared)
        m_converter.releaseMemory(); // taken after everything had been freed
    announce(outcome == Outcome::Front);
}

std::size_t StreamWorker::framesPushed() const
{
    return m_pushSource ? m_pushSource->framesPushed() : 0;
}

// A push source that was given a frame and delivers none may have dropped it.
void StreamWorker::lookAtPushed()
{
    if (!m_pushSource)
        return;
    const std::size_t pushed = framesPushed();
    if (pushed != std::exchange(m_framesPushed, pushed) && !m_pushSource->framesLocked())
        m_refusals.add(
            "A frame that was pushed is dropped, because frames are not locked: call setFramesLocked(true).");
}

StreamWorker::Outcome StreamWorker::convertDelivered(const Delivery& delivery)
{
    ConversionSettings before;
    {
        const std::lock_guard<std::mutex> guard(m_imageMutex);
        m_isConverting = true;
        before = m_settings;
    }
    // Until the front tells what the bitmap holds.
    const std::unique_lock<std::mutex> pixels = lockPixels(before.lockedBitmap);
    std::shared_ptr<DisplayFrame> frame = tryConvert(delivery.raw, delivery.lock.good(), before);
    return frame ? makeFront(std::move(frame), delivery) : Outcome::Dropped;
}

StreamWorker::Outcome StreamWorker::makeFront(std::shared_ptr<DisplayFrame> frame, const Delivery& delivery)
{
    frame->lent = delivery.lent;
    frame->fetch = delivery.fetch;
    DisplayFramePtr previous; // its memory is given back with no lock held
    const std::lock_guard<std::mutex> guard(m_imageMutex);
    if (delivery.clearCount != m_clearCount || !m_running.load())
        return Outcome::Cleared;
    if (delivery.raw.data && m_settings.lockedBitmap && m_settings.lockedBitmap != frame->lockedBitmap)
        return Outcome::OtherTarget;
    m_isConverting = false;
    frame->sequence = m_framesConverted.load() + 1;
    m_framesConverted.store(frame->sequence);
    previous = std::exchange(m_front, std::move(frame));
    return Outcome::Front;
}

// Not once the stream has left: whoever it tells may be gone.
void StreamWorker::announce(bool isFront)
{
    bool isNews = isFront;
    {
        const std::lock_guard<std::mutex> guard(m_imageMutex);
        m_isConverting = false;
        isNews = isNews || m_isChangeOwed;
    }
    const std::lock_guard<std::mutex> handshake(m_handshakeMutex);
    if (isNews && m_running.load())
        m_converted();
}

// The palette is that of the moment when it is applied: what was chosen during the conversion is in the picture.
std::shared_ptr<DisplayFrame> StreamWorker::tryConvert(const RawImage& delivered, bool underLock,
                                                       const ConversionSettings& before)
{
    try {
        std::shared_ptr<DisplayFrame> frame = m_converter.convert(delivered, underLock, before);
        if (frame && m_converter.render(*frame, settings())) {
            m_refusals.clear();
            return frame;
        }
        m_refusals.add(refusalOf(delivered, before.lockedBitmap ? &before.lockedBitmap->description : nullptr));
    } catch (...) {
        m_refusals.add("There is no memory for a frame.");
    }
    return nullptr;
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
    return {m_front, m_settings};
}

bool StreamWorker::replaceFront(const DisplayFramePtr& before, DisplayFramePtr frame)
{
    const std::lock_guard<std::mutex> guard(m_imageMutex);
    if (m_front != before)
        return false;
    m_front.swap(frame); // `before` still holds the old one: nothing is freed under the lock
    return true;
}

StreamWorker::Renewal StreamWorker::setStage(Stage::Place place, std::shared_ptr<const Stage> stage)
{
    {
        const std::lock_guard<std::mutex> guard(m_imageMutex);
        m_settings.stages.set(place, std::move(stage));
        if (m_isConverting) {
            m_isChangeOwed = true;
            return Renewal::None;
        }
    }
    return renewFront();
}

StreamWorker::Renewal StreamWorker::renewIfOwed()
{
    {
        const std::lock_guard<std::mutex> guard(m_imageMutex);
        if (m_isConverting || !std::exchange(m_isChangeOwed, false))
            return Renewal::None;
    }
    return renewFront();
}

StreamWorker::Renewal StreamWorker::renewFront()
{
    const Snapshot now = snapshot();
    if (now.front && needsConversion(*now.front, now.settings) && convertFrontAgain(now.front))
        return Renewal::Converted;
    return renderFrontAgain() ? Renewal::Rendered : Renewal::None;
}

bool StreamWorker::convertFrontAgain(const DisplayFramePtr& shown)
{
    if (!m_source)
        return false;
    if (!m_isSourceAskable) {
        const std::lock_guard<std::mutex> guard(m_imageMutex);
        m_isChangeOwed = true;
        return false;
    }
    const ScopedLock lock = askFrameLock(m_source, shown->delivered);
    if (!lock && (shown->underLock || isColor(shown->delivered.format) || HeldFrameLock::isOf(m_source)))
        return false;
    // Without a lock the pixels are the source's again as soon as it is asked for the next frame.
    if (!lock && !pauseFetching(shown->fetch))
        return false;
    const auto resume = qScopeGuard([&] {
        if (!lock)
            resumeFetching();
    });
    const ConversionSettings now = settings();
    const std::unique_lock<std::mutex> pixels = lockPixels(now.lockedBitmap);
    // Another frame may have been delivered while this thread waited. It is shown with the new settings anyway, and the
    // pixels of this one need not be there any more.
    if (front() != shown)
        return false;
    const std::shared_ptr<DisplayFrame> frame = tryConvert(shown->delivered, shown->underLock, now);
    if (!frame)
        return false;
    frame->sequence = shown->sequence;
    frame->fetch = shown->fetch;
    frame->lent = shown->lent;
    return replaceFront(shown, frame);
}

bool StreamWorker::renderFrontAgain()
{
    const Snapshot now = snapshot();
    if (!now.front || !needsPalette(*now.front, now.settings))
        return false;
    const std::unique_lock<std::mutex> pixels = lockPixels(now.front->lockedBitmap);
    const auto frame = attempt("rendering", std::shared_ptr<DisplayFrame>(),
                               [&] { return m_converter.renderAgain(*now.front, now.settings); });
    return frame && replaceFront(now.front, frame);
}

// True when the fetch `sinceFetch` is over, and none has begun since or is asked for; none does until fetching is
// resumed.
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

bool StreamWorker::lockBitmap(int width, int height, Format format)
{
    std::shared_ptr<LockedBitmap> bitmap = attempt("setBitmapLocked", std::shared_ptr<LockedBitmap>(),
                                                   [&] { return m_converter.makeLockedBitmap(width, height, format); });
    while (bitmap) {
        const DisplayFramePtr before = front();
        DisplayFramePtr shown = attempt("setBitmapLocked", DisplayFramePtr(), [&]() -> DisplayFramePtr {
            return FrameConverter::showLocked(before ? *before : DisplayFrame(), bitmap);
        });
        if (!shown)
            break;
        const std::lock_guard<std::mutex> guard(m_imageMutex);
        if (m_front != before)
            continue; // a newer frame has come, which must not be lost
        m_front.swap(shown);
        exchangeBitmap(bitmap); // which is then the one that is freed, with no lock held
        return true;
    }
    unlockBitmap();
    return false;
}

void StreamWorker::unlockBitmap()
{
    std::shared_ptr<LockedBitmap> bitmap; // freed with no lock held
    const std::lock_guard<std::mutex> guard(m_imageMutex);
    exchangeBitmap(bitmap);
}

// Under the image mutex. Takes the bitmap to be locked, and returns one that is kept no longer.
void StreamWorker::exchangeBitmap(std::shared_ptr<LockedBitmap>& bitmap)
{
    m_settings.lockedBitmap.swap(bitmap);
    if (bitmap)
        m_unlocked.swap(bitmap);
}

void StreamWorker::clear()
{
    m_refusals.clear();
    {
        DisplayFramePtr previous;
        std::shared_ptr<LockedBitmap> unlocked;
        const std::lock_guard<std::mutex> guard(m_imageMutex);
        ++m_clearCount;
        m_isAccepting = false;
        previous = std::exchange(m_front, nullptr);
        unlocked.swap(m_unlocked);
    }
    m_converter.releaseMemory();
}

void StreamWorker::acceptFrames()
{
    const std::lock_guard<std::mutex> guard(m_imageMutex);
    m_isAccepting = true;
}

} // namespace Vistrel
