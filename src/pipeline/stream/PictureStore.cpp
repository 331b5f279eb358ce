// SPDX-License-Identifier: MIT
// Holds the newest picture of a stream, and the settings with which pictures are made.
#include "pipeline/stream/PictureStore.h"

#include "base/Log.h"

namespace Vistrel {

DisplayFramePtr PictureStore::front() const
{
    const std::lock_guard<std::mutex> guard(m_imageMutex);
    return m_front;
}

ConversionSettings PictureStore::settings() const
{
    const std::lock_guard<std::mutex> guard(m_imageMutex);
    return m_settings;
}

std::uint64_t PictureStore::framesConverted() const
{
    const std::lock_guard<std::mutex> guard(m_imageMutex);
    return m_framesConverted;
}

// A frame -------------------------------------------------------------------------------------------------------------

bool PictureStore::beginFetch(Delivery& delivery)
{
    const std::lock_guard<std::mutex> guard(m_imageMutex);
    if (m_isAccepting)
        delivery.bitmaps = {std::exchange(m_unlocked, nullptr), m_settings.lockedBitmap};
    return m_isAccepting;
}

// A fetch may have begun before the source was cleaned up and set up again. Its frame is shown.
bool PictureStore::endFetch(Delivery& delivery)
{
    const std::lock_guard<std::mutex> guard(m_imageMutex);
    delivery.clearCount = m_clearCount;
    return m_isAccepting;
}

bool PictureStore::convert(const Delivery& delivery)
{
    Outcome outcome = tryDelivered(delivery);
    // A bitmap that was locked meanwhile also gets the frame. Only once, so that a host that locks continuously does
    // not stop the source.
    if (outcome == Outcome::OtherTarget)
        outcome = tryDelivered(delivery);
    if (outcome == Outcome::Cleared)
        m_converter.releaseMemory(); // this conversion has allocated since `clear`
    const std::lock_guard<std::mutex> guard(m_imageMutex);
    m_isConverting = false;
    return outcome == Outcome::Front || m_isChangeOwed;
}

PictureStore::Outcome PictureStore::tryDelivered(const Delivery& delivery)
{
    ConversionSettings before;
    {
        const std::lock_guard<std::mutex> guard(m_imageMutex);
        m_isConverting = true;
        before = m_settings;
    }
    // Held until the front describes the bitmap's pixels.
    const std::unique_lock<std::mutex> pixels = lockPixels(before.lockedBitmap);
    std::shared_ptr<DisplayFrame> frame = tryConvert(delivery.raw, delivery.underLock, before);
    return frame ? makeFront(std::move(frame), delivery) : Outcome::Dropped;
}

PictureStore::Outcome PictureStore::makeFront(std::shared_ptr<DisplayFrame> frame, const Delivery& delivery)
{
    frame->lent = delivery.lent;
    frame->fetch = delivery.fetch;
    DisplayFramePtr previous; // released without a lock held
    const std::lock_guard<std::mutex> guard(m_imageMutex);
    if (delivery.clearCount != m_clearCount)
        return Outcome::Cleared;
    if (delivery.raw.data && m_settings.lockedBitmap && m_settings.lockedBitmap != frame->lockedBitmap)
        return Outcome::OtherTarget;
    m_isConverting = false;
    frame->sequence = ++m_framesConverted;
    previous = std::exchange(m_front, std::move(frame));
    return Outcome::Front;
}

// The palette is read when it is applied, so that one set during the conversion is in the picture.
std::shared_ptr<DisplayFrame> PictureStore::tryConvert(const RawImage& delivered, bool underLock,
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

bool PictureStore::replaceFront(const DisplayFramePtr& before, DisplayFramePtr frame)
{
    const std::lock_guard<std::mutex> guard(m_imageMutex);
    if (m_front != before)
        return false;
    m_front.swap(frame); // `before` keeps the old one, so that nothing is freed under the lock
    return true;
}

// A change of settings ------------------------------------------------------------------------------------------------

bool PictureStore::setStage(Stage::Place place, std::shared_ptr<const Stage> stage)
{
    const std::lock_guard<std::mutex> guard(m_imageMutex);
    m_settings.stages.set(place, std::move(stage));
    m_isChangeOwed = m_isChangeOwed || m_isConverting;
    return !m_isConverting;
}

void PictureStore::oweChange()
{
    const std::lock_guard<std::mutex> guard(m_imageMutex);
    m_isChangeOwed = true;
}

bool PictureStore::takeOwedChange()
{
    const std::lock_guard<std::mutex> guard(m_imageMutex);
    return !m_isConverting && std::exchange(m_isChangeOwed, false);
}

DisplayFramePtr PictureStore::outdated() const
{
    const std::lock_guard<std::mutex> guard(m_imageMutex);
    return m_front && needsConversion(*m_front, m_settings) ? m_front : nullptr;
}

bool PictureStore::convertAgain(const DisplayFramePtr& shown)
{
    const ConversionSettings now = settings();
    const std::unique_lock<std::mutex> pixels = lockPixels(now.lockedBitmap);
    // Another frame may have been delivered while the caller waited. It is shown with the new settings, and the pixels
    // of this one may be freed.
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

bool PictureStore::renderAgain()
{
    const DisplayFramePtr shown = front();
    const ConversionSettings now = settings();
    if (!shown || !needsPalette(*shown, now))
        return false;
    const std::unique_lock<std::mutex> pixels = lockPixels(shown->lockedBitmap);
    const auto frame =
        attempt("rendering", std::shared_ptr<DisplayFrame>(), [&] { return m_converter.renderAgain(*shown, now); });
    return frame && replaceFront(shown, frame);
}

// The locked bitmap ---------------------------------------------------------------------------------------------------

bool PictureStore::lockBitmap(int width, int height, Format format)
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
            continue; // a newer frame has arrived and must not be lost
        m_front.swap(shown);
        exchangeBitmap(bitmap); // `bitmap` is then the one to free, without a lock held
        return true;
    }
    unlockBitmap();
    return false;
}

void PictureStore::unlockBitmap()
{
    std::shared_ptr<LockedBitmap> bitmap; // freed without a lock held
    const std::lock_guard<std::mutex> guard(m_imageMutex);
    exchangeBitmap(bitmap);
}

// Under the image mutex. Takes the bitmap to be locked, and returns one that is no longer kept.
void PictureStore::exchangeBitmap(std::shared_ptr<LockedBitmap>& bitmap)
{
    m_settings.lockedBitmap.swap(bitmap);
    if (bitmap)
        m_unlocked.swap(bitmap);
}

// Endings -------------------------------------------------------------------------------------------------------------

void PictureStore::clear()
{
    m_refusals.clear();
    refuseFrames();
    {
        DisplayFramePtr previous;
        std::shared_ptr<LockedBitmap> unlocked;
        const std::lock_guard<std::mutex> guard(m_imageMutex);
        previous.swap(m_front);
        unlocked.swap(m_unlocked);
    }
    m_converter.releaseMemory();
}

void PictureStore::acceptFrames()
{
    const std::lock_guard<std::mutex> guard(m_imageMutex);
    m_isAccepting = true;
}

void PictureStore::refuseFrames()
{
    const std::lock_guard<std::mutex> guard(m_imageMutex);
    ++m_clearCount;
    m_isAccepting = false;
}

} // namespace Vistrel
