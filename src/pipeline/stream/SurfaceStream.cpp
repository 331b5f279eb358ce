// SPDX-License-Identifier: MIT
// Brings a source's frames onto a surface.
#include "pipeline/stream/SurfaceStream_p.h"

#include "base/FrameLocking.h"
#include "base/Report.h"
#include "pipeline/frames/Conversion.h"

#include <Vistrel/AcquisitionSignalHandler.h>
#include <Vistrel/Surface.h>

#include <QtGui/QGuiApplication>
#include <QtGui/QScreen>

#include <algorithm>
#include <limits>
#include <mutex>
#include <utility>

namespace Vistrel {

namespace {

// A source that had no frame for the first of these is asked at the second of these intervals: waking two threads at
// the screen's rate for nothing would cost half a percent of a processor.
constexpr int restAfterMs = 1000;
constexpr int restIntervalMs = 100;

// Pixel values of a demosaiced frame are read from its colours, all others from the raw frame.
bool isDemosaiced(const DisplayFrame& frame)
{
    return (frame.effective.format & formatPatternMask) != 0;
}

// A lock on a frame that keeps its pixels from going, too, where they are not the source's.
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

// Shares the pixels: neither pass nor copy. Pixmaps are made and destroyed on this thread alone.
QPixmap pixmapOf(const DisplayFrame& frame)
{
    return QPixmap::fromImage(frame.rendered, Qt::NoFormatConversion);
}

// A host that draws into a locked bitmap need not care for the fourth byte; who gets an image does.
QImage opaqueCopy(QImage image, const DisplayFrame& frame)
{
    if (frame.lockedBitmap && image.format() == QImage::Format_RGBX8888)
        makeOpaque(image.bits(), static_cast<std::size_t>(image.sizeInBytes()));
    return image;
}

} // namespace

SurfaceStream::PrivateData::PrivateData(SurfaceStream* owner, Surface* target,
                                        AbstractAcquisitionInterface* acquisitionInterface,
                                        std::shared_ptr<AbstractAcquisitionInterface> owned)
    : stream(owner),
      surface(target),
      source(acquisitionInterface),
      refreshTimer(new QTimer(owner)),
      readout(acquisitionInterface),
      worker(std::make_shared<StreamWorker>(acquisitionInterface, [this] { frameConverted.request(); })),
      shared(std::move(owned))
{
    refreshTimer->setTimerType(Qt::PreciseTimer);
    refreshTimer->setInterval(refreshMs);
    sinceFrame.start();
    frameWanted.follow(refreshTimer, &QTimer::timeout);
    frameConverted.setInterval(0);
}

void SurfaceStream::PrivateData::start()
{
    stream->setRefreshRateAuto(true);
    worker->start();
    if (!source)
        return;
    followSource();
    // A source that is set up already may never announce it.
    QMetaObject::invokeMethod(this, "updateStreamStates", Qt::QueuedConnection);
}

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
    m_data->refreshTimer->stop();
    if (m_data->shared)
        StreamWorker::leave(m_data->worker, std::move(m_data->shared));
    else
        m_data->worker->stop();
    // The source may go any time after this, and the surface would still ask it for pixel values.
    if (m_data->surface)
        m_data->surface->clearImageSrc();
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

void SurfaceStream::PrivateData::applyRefreshRateHz(qreal rateHz)
{
    if (!(rateHz > 0))
        return;
    const double longest = std::numeric_limits<int>::max();
    refreshMs = static_cast<int>(std::clamp(1000.0 / rateHz, 1.0, longest));
    frameWanted.setInterval(std::min(refreshMs, PacedCall::defaultIntervalMs)); // what is announced comes at any rate
    expectFrame();
}

void SurfaceStream::PrivateData::expectFrame()
{
    sinceFrame.restart();
    pace();
}

void SurfaceStream::PrivateData::pace()
{
    const int interval = sinceFrame.hasExpired(restAfterMs) ? std::max(refreshMs, restIntervalMs) : refreshMs;
    if (interval != refreshTimer->interval())
        refreshTimer->setInterval(interval);
}

void SurfaceStream::PrivateData::connectScreen()
{
    disconnect(screenRateConnection);
    const QScreen* const screen = QGuiApplication::primaryScreen();
    if (!screen)
        return;
    applyRefreshRateHz(screen->refreshRate());
    screenRateConnection = connect(screen, SIGNAL(refreshRateChanged(qreal)), this, SLOT(applyRefreshRateHz(qreal)));
}

void SurfaceStream::PrivateData::disconnectScreen()
{
    disconnect(screenRateConnection);
    disconnect(primaryScreenConnection);
}

bool SurfaceStream::refreshEnabled() const
{
    return m_data->refreshTimer->isActive();
}

void SurfaceStream::setRefreshEnabled(bool enabled)
{
    m_data->isRefreshWanted = enabled;
    if (enabled && !refreshEnabled())
        m_data->refreshTimer->start();
    else if (!enabled)
        m_data->refreshTimer->stop();
}

int SurfaceStream::refreshRate() const
{
    return 1000 / m_data->refreshMs;
}

void SurfaceStream::setRefreshRate(int hz)
{
    setRefreshRateAuto(false);
    m_data->applyRefreshRateHz(hz);
}

bool SurfaceStream::refreshRateAuto() const
{
    return m_data->refreshRateAuto;
}

void SurfaceStream::setRefreshRateAuto(bool enabled)
{
    const bool wasAuto = m_data->refreshRateAuto;
    m_data->refreshRateAuto = enabled && QGuiApplication::primaryScreen();
    if (!m_data->refreshRateAuto) {
        m_data->disconnectScreen();
        return;
    }
    m_data->connectScreen();
    if (!wasAuto)
        m_data->primaryScreenConnection = connect(qApp, &QGuiApplication::primaryScreenChanged, m_data.get(),
                                                  [data = m_data.get()] { data->connectScreen(); });
}

bool SurfaceStream::PrivateData::asksSetUp() const
{
    return source && hostCall("isSetup", false, [this] { return source->isSetup(); });
}

void SurfaceStream::PrivateData::followSource()
{
    const AcquisitionSignalHandler* const handler = source->signalHandler();
    stateAnnounced.follow(handler, &AcquisitionSignalHandler::acquisitionStateChanged);
    frameWanted.follow(handler, &AcquisitionSignalHandler::getFrameNow);
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
    m_data->expectFrame();
    if (!askable)
        return;
    m_data->frameConverted.request(); // a change may have been left to be done
    if (std::exchange(m_data->readout.wasRefused, false) && m_data->surface)
        m_data->surface->update();
    if (m_data->hasNewState)
        updateAcquisitionState();
    else if (m_data->isFrameAnnounced)
        m_data->getNextFrame();
}

QString SurfaceStream::refusal() const
{
    Refusals& refusals = m_data->worker->refusals();
    if (!m_data->isSourceSetUp && m_data->readout.isAskable &&
        (m_data->isFrameAnnounced || m_data->worker->hasPushedFrames()))
        refusals.add("Frames come, but are not shown, because the source is not set up: isSetup() is false.", 0);
    return QString::fromStdString(refusals.text());
}

void SurfaceStream::PrivateData::updateStreamStates()
{
    hasNewState = !readout.isAskable;
    if (hasNewState)
        return;
    if (asksSetUp()) {
        showSetUp();
        return;
    }
    isSourceSetUp = false;
    refreshTimer->stop();
    worker->clear();
    updateImage();
}

void SurfaceStream::PrivateData::showSetUp()
{
    isSourceSetUp = true;
    worker->acceptFrames();
    expectFrame();
    if (isRefreshWanted && !refreshTimer->isActive())
        refreshTimer->start();
    if (std::exchange(isFrameAnnounced, false))
        worker->request();
}

void SurfaceStream::updateAcquisitionState()
{
    const QPointer<SurfaceStream> alive(this); // a slot may delete the stream
    m_data->updateStreamStates();
    if (alive)
        m_data->updateImage();
}

// Publishing ---------------------------------------------------------------------------------------------------------

void SurfaceStream::PrivateData::getNextFrame(bool getNew)
{
    // A source that has a frame ready may have been set up without a word about it.
    if (!isSourceSetUp && readout.isAskable && asksSetUp())
        showSetUp();
    if (!isSourceSetUp) {
        isFrameAnnounced = true; // the frame is fetched when it can be shown
        return;
    }
    if (getNew)
        worker->requestAndWait();
    else
        worker->request();
    pace();
    publishNew();
}

void SurfaceStream::PrivateData::publishNew()
{
    const StreamWorker::Renewal renewal = worker->renewIfOwed();
    DisplayFramePtr front = worker->front();
    if (front && front->sequence > publishedSequence) {
        front.reset(); // its source waits for it while a newer one is published
        expectFrame();
        updateImage();
    } else {
        showRenewal(renewal);
    }
}

void SurfaceStream::PrivateData::showRenewal(StreamWorker::Renewal renewal)
{
    if (renewal == StreamWorker::Renewal::None)
        return;
    DisplayFramePtr front = worker->front();
    // In another palette alone, a picture has the same pixel values. One that is new comes with its own.
    const bool isSame = front && front->sequence <= publishedSequence && front->isDrawn;
    if (renewal == StreamWorker::Renewal::Converted || !isSame) {
        front.reset();
        updateImage();
    } else if (surface) {
        surface->setPixmap(pixmapOf(*front));
    }
}

void SurfaceStream::PrivateData::updateImage()
{
    const DisplayFramePtr front = worker->front();
    if (front && front->sequence > publishedSequence) {
        publishedSequence = front->sequence;
        ++framesPublished;
    }
    const QPointer<PrivateData> alive(this); // the slots of the surface may delete the stream, or the surface
    if (surface && front && !front->rendered.isNull()) {
        surface->setPixmap(pixmapOf(*front));
        if (!alive)
            return;
        if (surface && isDemosaiced(*front))
            surface->setImageSrc(front->image);
        else if (surface)
            surface->setImageSrc(source ? &readout : nullptr, front->effective, front);
    } else if (surface && !surface->pixmap().isNull()) {
        surface->setPixmap(QPixmap());
        if (!alive)
            return;
        if (surface)
            surface->clearImageSrc();
    }
    if (!alive)
        return;
    Q_EMIT stream->imageUpdated();
}

quint64 SurfaceStream::framesConverted() const
{
    return m_data->worker->framesConverted();
}

quint64 SurfaceStream::framesPublished() const
{
    return m_data->framesPublished;
}

// Conversion settings ------------------------------------------------------------------------------------------------

bool SurfaceStream::bayerDemosaicEnabled() const
{
    return m_data->worker->settings().demosaicEnabled;
}

void SurfaceStream::setBayerDemosaicEnabled(bool enabled)
{
    if (bayerDemosaicEnabled() != enabled)
        m_data->showRenewal(m_data->worker->changeSettings(
            &StageVersions::demosaic, [enabled](ConversionSettings& settings) { settings.demosaicEnabled = enabled; }));
}

Format SurfaceStream::bayerDemosaicFilter() const
{
    return m_data->worker->settings().filterOverride;
}

void SurfaceStream::setBayerDemosaicFilter(Format filter)
{
    const auto pattern = static_cast<Format>(filter & formatPatternMask);
    if (pattern <= BayerBG && bayerDemosaicFilter() != pattern)
        m_data->showRenewal(m_data->worker->changeSettings(
            &StageVersions::demosaic, [pattern](ConversionSettings& settings) { settings.filterOverride = pattern; }));
}

bool SurfaceStream::rgbOrderReversed() const
{
    return m_data->worker->settings().rgbOrderReversed;
}

void SurfaceStream::setRgbOrderReversed(bool reversed)
{
    if (rgbOrderReversed() != reversed)
        m_data->showRenewal(
            m_data->worker->changeSettings(&StageVersions::unpack, [reversed](ConversionSettings& settings) {
                settings.rgbOrderReversed = reversed;
            }));
}

QVector<unsigned int> SurfaceStream::colorPalette() const
{
    return m_data->worker->settings().palette;
}

void SurfaceStream::setColorPalette(const QVector<unsigned int>& palette)
{
    if (colorPalette() != palette)
        m_data->showRenewal(m_data->worker->changeSettings(
            &StageVersions::palette, [&palette](ConversionSettings& settings) { settings.palette = palette; }));
}

// Latest image -------------------------------------------------------------------------------------------------------

bool SurfaceStream::latestImage(RawImage* const image, ScopedLock* const lock) const
{
    if (lock)
        lock->reset(nullptr); // the source may have but one lock for all its frames
    for (DisplayFramePtr front = m_data->worker->front(); image && front && front->delivered.data;) {
        *image = front->delivered;
        if (!lock)
            return true;
        ScopedLock frameLock = askFrameLock(m_data->source, front->delivered);
        if (!frameLock)
            return false;
        lock->reset(new PictureLock(std::move(frameLock), front));
        // While this thread waited for the lock, another frame may have been delivered.
        const DisplayFramePtr newest = m_data->worker->front();
        if (newest == front)
            return true;
        lock->reset(nullptr);
        front = newest;
    }
    return false;
}

QImage SurfaceStream::cloneLatestImage() const
{
    const DisplayFramePtr front = m_data->worker->front();
    if (!front)
        return QImage();
    const auto pixels = lockPixels(front->lockedBitmap);
    return opaqueCopy(front->image.copy(), *front);
}

QImage SurfaceStream::cloneLatestImageForRender() const
{
    const DisplayFramePtr front = m_data->worker->front();
    if (!front)
        return QImage();
    const QVector<unsigned int> palette = colorPalette();
    const auto pixels = lockPixels(front->lockedBitmap);
    return opaqueCopy(imageForRender(front->image, palette, front->swappedShow), *front);
}

QPixmap SurfaceStream::peekPixmap() const
{
    const DisplayFramePtr front = m_data->worker->front();
    return front ? pixmapOf(*front) : QPixmap();
}

QSize SurfaceStream::latestImageSize() const
{
    const DisplayFramePtr front = m_data->worker->front();
    return front ? front->image.size() : QSize(0, 0);
}

Format SurfaceStream::latestImageFormat() const
{
    const DisplayFramePtr front = m_data->worker->front();
    return front && !front->image.isNull() ? front->effective.format : Format(0);
}

QImage::Format SurfaceStream::latestQImageFormat() const
{
    const DisplayFramePtr front = m_data->worker->front();
    return front ? front->image.format() : QImage::Format_Invalid;
}

// Bitmap lock --------------------------------------------------------------------------------------------------------

bool SurfaceStream::setBitmapLocked(int width, int height, Format format)
{
    if (format != Mono8 && format != RGB8 && format != RGBa8)
        return false;
    const bool isLocked = m_data->worker->lockBitmap(width, height, format);
    Q_EMIT bitmapLockChanged(isLocked);
    return isLocked;
}

bool SurfaceStream::bitmapLocked() const
{
    return m_data->worker->settings().lockedBitmap != nullptr;
}

void SurfaceStream::unlockBitmap()
{
    if (!bitmapLocked())
        return;
    m_data->worker->unlockBitmap();
    Q_EMIT bitmapLockChanged(false);
}

bool SurfaceStream::getBitmap(RawImage* const image) const
{
    const std::shared_ptr<LockedBitmap> bitmap = m_data->worker->settings().lockedBitmap;
    if (!image || !bitmap)
        return false;
    *image = bitmap->description;
    return true;
}

} // namespace Vistrel
