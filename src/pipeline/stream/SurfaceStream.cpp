// SPDX-License-Identifier: MIT
// Brings a source's frames onto a surface.
#include "pipeline/stream/SurfaceStream_p.h"

#include "base/FrameLocking.h"
#include "base/Log.h"
#include "pipeline/frames/ChannelOrder.h"
#include "pipeline/frames/ColorPalette.h"
#include "pipeline/frames/Conversion.h"
#include "pipeline/frames/MosaicFilter.h"

#include <Vistrel/AcquisitionSignalHandler.h>
#include <Vistrel/Surface.h>

#include <algorithm>
#include <mutex>
#include <utility>

namespace Vistrel {

namespace {

// A lock on a frame. It also keeps pixels that the library owns.
class PictureLock : public AbstractLock
{
public:
    PictureLock(ScopedLock frameLock, DisplayFramePtr picture)
        : m_picture(std::move(picture)), m_frameLock(std::move(frameLock))
    {
    }

private:
    const DisplayFramePtr m_picture;
    const ScopedLock m_frameLock;
};

bool isBitmapFormat(Format format)
{
    return format == Mono8 || format == RGB8 || format == RGBa8;
}

// A host that draws into a locked bitmap need not set the fourth byte. An image needs it.
QImage opaqueCopy(QImage image, const DisplayFrame& frame)
{
    if (frame.lockedBitmap && image.format() == QImage::Format_RGBX8888)
        makeOpaque(image.bits(), static_cast<std::size_t>(image.sizeInBytes()));
    return image;
}

} // namespace

SurfaceStream::SurfaceStream(Surface* const surface, AbstractAcquisitionInterface* const acquisitionInterface)
    : m_data(new PrivateData(this, surface, acquisitionInterface, nullptr))
{
    m_data->start();
}

SurfaceStream::SurfaceStream(Surface* const surface, std::shared_ptr<AbstractAcquisitionInterface> acquisitionInterface)
    : m_data(new PrivateData(this, surface, acquisitionInterface.get(), acquisitionInterface))
{
    m_data->start();
}

SurfaceStream::~SurfaceStream()
{
    m_data->clock->setRunning(false);
    // The source may be destroyed below, or later, and the surface would still ask it for pixel values.
    if (m_data->surface)
        m_data->surface->clearImageSrc();
    if (m_data->shared)
        StreamWorker::detach(m_data->worker, std::move(m_data->shared));
    else
        m_data->worker->stop();
}

Surface* SurfaceStream::surface()
{
    return m_data->surface;
}

const Surface* SurfaceStream::surface() const
{
    return m_data->surface;
}

AbstractAcquisitionInterface* SurfaceStream::acquisitionInterface()
{
    return m_data->source;
}

const AbstractAcquisitionInterface* SurfaceStream::acquisitionInterface() const
{
    return m_data->source;
}

// Refresh ------------------------------------------------------------------------------------------------------------

bool SurfaceStream::refreshEnabled() const
{
    return m_data->clock->isRunning();
}

void SurfaceStream::setRefreshEnabled(bool enabled)
{
    m_data->isRefreshWanted = enabled;
    m_data->clock->setRunning(enabled);
}

int SurfaceStream::refreshRate() const
{
    return 1000 / m_data->clock->intervalMs();
}

void SurfaceStream::setRefreshRate(int hz)
{
    setRefreshRateAuto(false);
    m_data->clock->setRate(hz);
}

bool SurfaceStream::refreshRateAuto() const
{
    return m_data->clock->isAutomatic();
}

void SurfaceStream::setRefreshRateAuto(bool enabled)
{
    m_data->clock->setAutomatic(enabled);
}

void SurfaceStream::ignoreAnnouncements()
{
    m_data->stateAnnounced.stop();
    m_data->frameWanted.stop();
}

void SurfaceStream::setSourceAskable(bool askable)
{
    m_data->readout.isAskable = askable;
    m_data->worker->setSourceAskable(askable);
    m_data->clock->expectFrame();
    if (!askable)
        return;
    m_data->frameConverted.request(); // a change may be owed
    if (std::exchange(m_data->readout.wasRefused, false) && m_data->surface)
        m_data->surface->update();
    if (m_data->hasNewState)
        updateAcquisitionState();
    else if (m_data->isFrameAnnounced)
        m_data->getNextFrame();
}

QString SurfaceStream::refusal() const
{
    Refusals& refusals = m_data->pictures.refusals();
    if (m_data->isSetUpKnown && !m_data->isSourceSetUp && m_data->readout.isAskable &&
        (m_data->isFrameAnnounced || m_data->worker->framesPushed() != m_data->framesPushedBefore))
        refusals.add("Frames come, but are not shown, because the source is not set up: isSetup() is false.", 0);
    return QString::fromStdString(refusals.text());
}

void SurfaceStream::updateAcquisitionState()
{
    const QPointer<SurfaceStream> alive(this); // a slot may delete the stream
    m_data->updateStreamStates();
    if (alive)
        m_data->updateImage();
}

quint64 SurfaceStream::framesConverted() const
{
    return m_data->pictures.framesConverted();
}

quint64 SurfaceStream::framesPublished() const
{
    return m_data->framesPublished;
}

// Conversion settings ------------------------------------------------------------------------------------------------

bool SurfaceStream::bayerDemosaicEnabled() const
{
    return m_data->pictures.stage<MosaicFilter>()->isEnabled;
}

void SurfaceStream::setBayerDemosaicEnabled(bool enabled)
{
    if (bayerDemosaicEnabled() != enabled)
        m_data->setStage(std::make_shared<const MosaicFilter>(enabled, bayerDemosaicFilter()));
}

Format SurfaceStream::bayerDemosaicFilter() const
{
    return m_data->pictures.stage<MosaicFilter>()->pattern;
}

void SurfaceStream::setBayerDemosaicFilter(Format filter)
{
    const auto pattern = static_cast<Format>(filter & formatPatternMask);
    if (pattern <= BayerBG && bayerDemosaicFilter() != pattern)
        m_data->setStage(std::make_shared<const MosaicFilter>(bayerDemosaicEnabled(), pattern));
}

bool SurfaceStream::rgbOrderReversed() const
{
    return m_data->pictures.stage<ChannelOrder>()->isReversed;
}

void SurfaceStream::setRgbOrderReversed(bool reversed)
{
    if (rgbOrderReversed() != reversed)
        m_data->setStage(std::make_shared<const ChannelOrder>(reversed));
}

QVector<unsigned int> SurfaceStream::colorPalette() const
{
    return m_data->pictures.stage<ColorPalette>()->entries;
}

void SurfaceStream::setColorPalette(const QVector<unsigned int>& palette)
{
    if (colorPalette() != palette)
        m_data->setStage(std::make_shared<const ColorPalette>(palette));
}

// Latest image -------------------------------------------------------------------------------------------------------

bool SurfaceStream::latestImage(RawImage* const image, ScopedLock* const lock) const
{
    if (lock)
        lock->reset(nullptr); // the source may have only one lock for all frames
    for (DisplayFramePtr front = m_data->pictures.front(); image && front && front->delivered.data;) {
        *image = front->delivered;
        if (!lock)
            return true;
        ScopedLock frameLock = askFrameLock(m_data->source, front->delivered);
        if (!frameLock)
            return false;
        lock->reset(new PictureLock(std::move(frameLock), front));
        // While this thread waited for the lock, another frame may have been delivered.
        const DisplayFramePtr newest = m_data->pictures.front();
        if (newest == front)
            return true;
        lock->reset(nullptr);
        front = newest;
    }
    return false;
}

QImage SurfaceStream::cloneLatestImage() const
{
    const DisplayFramePtr front = m_data->pictures.front();
    if (!front)
        return QImage();
    const auto pixels = lockPixels(front->lockedBitmap);
    return opaqueCopy(front->image.copy(), *front);
}

QImage SurfaceStream::cloneLatestImageForRender() const
{
    const DisplayFramePtr front = m_data->pictures.front();
    if (!front)
        return QImage();
    const QVector<unsigned int> palette = colorPalette();
    const auto pixels = lockPixels(front->lockedBitmap);
    return opaqueCopy(imageForRender(front->image, palette, front->swappedShow), *front);
}

QPixmap SurfaceStream::peekPixmap() const
{
    const DisplayFramePtr front = m_data->pictures.front();
    return front ? pixmapOf(*front) : QPixmap();
}

QSize SurfaceStream::latestImageSize() const
{
    const DisplayFramePtr front = m_data->pictures.front();
    return front ? front->image.size() : QSize(0, 0);
}

Format SurfaceStream::latestImageFormat() const
{
    const DisplayFramePtr front = m_data->pictures.front();
    return front && !front->image.isNull() ? front->effective.format : Format(0);
}

QImage::Format SurfaceStream::latestQImageFormat() const
{
    const DisplayFramePtr front = m_data->pictures.front();
    return front ? front->image.format() : QImage::Format_Invalid;
}

// Bitmap lock --------------------------------------------------------------------------------------------------------

bool SurfaceStream::canLockBitmap(int width, int height, Format format)
{
    QImage target;
    PixelBuffer memory;
    return isBitmapFormat(format) && width > 0 && height > 0 && attempt("canLockBitmap", false, [&] {
               return prepareTarget(target, memory, static_cast<std::size_t>(width), static_cast<std::size_t>(height),
                                    static_cast<int>(formatDepth(format)));
           });
}

bool SurfaceStream::setBitmapLocked(int width, int height, Format format)
{
    if (!isBitmapFormat(format))
        return false;
    const bool isLocked = m_data->pictures.lockBitmap(width, height, format);
    Q_EMIT bitmapLockChanged(isLocked);
    return isLocked;
}

bool SurfaceStream::bitmapLocked() const
{
    return m_data->pictures.settings().lockedBitmap != nullptr;
}

void SurfaceStream::unlockBitmap()
{
    if (!bitmapLocked())
        return;
    m_data->pictures.unlockBitmap();
    Q_EMIT bitmapLockChanged(false);
}

bool SurfaceStream::getBitmap(RawImage* const image) const
{
    const std::shared_ptr<LockedBitmap> bitmap = m_data->pictures.settings().lockedBitmap;
    if (!image || !bitmap)
        return false;
    *image = bitmap->description;
    return true;
}

} // namespace Vistrel
