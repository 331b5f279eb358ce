// SPDX-License-Identifier: MIT
// Requests frames, and passes pictures to the surface.
#include "pipeline/stream/SurfaceStream_p.h"

#include "base/HostCall.h"
#include "pipeline/frames/ColorPalette.h"

#include <Vistrel/AcquisitionSignalHandler.h>
#include <Vistrel/Surface.h>

#include <algorithm>
#include <utility>

namespace Vistrel {

namespace {

// Pixel values of a demosaiced frame are read from the picture, all others from the raw frame.
bool isDemosaiced(const DisplayFrame& frame)
{
    return (frame.effective.format & formatPatternMask) != 0;
}

// The indices of a picture in a palette; null for any other, and for one of a locked bitmap, whose pixels change.
QImage indicesOf(const DisplayFrame& frame)
{
    const auto palette = frame.stages.get<ColorPalette>();
    if (frame.lockedBitmap || frame.image.format() != QImage::Format_Indexed8 || !palette || palette->isGray())
        return {};
    QVector<QRgb> colors = palette->entries;
    std::transform(colors.cbegin(), colors.cend(), colors.begin(), [](QRgb color) { return color | 0xFF000000; });
    return indicesOver(frame.block, frame.image.size(), colors);
}

} // namespace

QPixmap pixmapOf(const DisplayFrame& frame)
{
    return QPixmap::fromImage(frame.rendered, Qt::NoFormatConversion);
}

SurfaceStream::PrivateData::PrivateData(SurfaceStream* owner, Surface* target,
                                        AbstractAcquisitionInterface* acquisitionInterface,
                                        std::shared_ptr<AbstractAcquisitionInterface> owned)
    : stream(owner),
      surface(target),
      source(acquisitionInterface),
      clock(new RefreshClock(owner)),
      readout(acquisitionInterface),
      worker(std::make_shared<StreamWorker>(acquisitionInterface, [this] { frameConverted.request(); })),
      pictures(worker->pictures()),
      shared(std::move(owned))
{
    connect(clock, &RefreshClock::ticked, this, [this] { frameWanted.request(); });
    // The source announces frames at any rate.
    connect(clock, &RefreshClock::intervalChanged, this, [this](int milliseconds) {
        frameWanted.setInterval(std::min(milliseconds, PacedCall::defaultIntervalMs));
    });
    frameConverted.setInterval(0);
}

void SurfaceStream::PrivateData::start()
{
    stream->setRefreshRateAuto(true);
    worker->start();
    if (!source)
        return;
    followSource();
    // A source that was set up before may never announce it.
    QMetaObject::invokeMethod(this, "updateStreamStates", Qt::QueuedConnection);
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

void SurfaceStream::PrivateData::updateStreamStates()
{
    hasNewState = !readout.isAskable;
    if (hasNewState)
        return;
    isSetUpKnown = true;
    if (asksSetUp()) {
        showSetUp();
        return;
    }
    if (std::exchange(isSourceSetUp, false)) {
        framesPushedBefore = worker->framesPushed();
        isFrameOwed = frameWanted.drop(); // a request by the clock announces no frame
    }
    clock->setRunning(false);
    pictures.clear();
    updateImage();
}

void SurfaceStream::PrivateData::showSetUp()
{
    if (!std::exchange(isSourceSetUp, true))
        pictures.refusals().clear(); // drops the reason that the source is not set up
    pictures.acceptFrames();
    clock->expectFrame();
    if (isRefreshWanted)
        clock->setRunning(true);
    const bool wasAnnounced = std::exchange(isFrameAnnounced, false);
    if (std::exchange(isFrameOwed, false) || wasAnnounced)
        worker->request();
}

void SurfaceStream::PrivateData::getNextFrame(bool getNew)
{
    // The source may have announced a clean-up before the frame, whose turn comes later.
    const QPointer<PrivateData> alive(this);
    if (stateAnnounced.drop())
        stream->updateAcquisitionState();
    if (!alive)
        return;
    // A source that announces a frame may have been set up without announcing that.
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
    clock->pace();
    publishNew();
}

void SurfaceStream::PrivateData::publishNew()
{
    const StreamWorker::Renewal renewal = worker->renewIfOwed();
    DisplayFramePtr front = pictures.front();
    if (front && front->sequence > publishedSequence) {
        front.reset(); // a kept frame would block its source while a newer one is published
        clock->expectFrame();
        updateImage();
    } else {
        showRenewal(renewal);
    }
}

void SurfaceStream::PrivateData::showRenewal(StreamWorker::Renewal renewal)
{
    if (renewal == StreamWorker::Renewal::None)
        return;
    DisplayFramePtr front = pictures.front();
    // In another palette, a picture has the same pixel values. A new picture has its own.
    const bool isSame = front && front->sequence <= publishedSequence && front->isDrawn;
    if (renewal == StreamWorker::Renewal::Converted || !isSame) {
        front.reset();
        updateImage();
    } else if (surface) {
        surface->setPicture(pixmapOf(*front), indicesOf(*front));
    }
}

void SurfaceStream::PrivateData::updateImage()
{
    const DisplayFramePtr front = pictures.front();
    if (front && front->sequence > publishedSequence) {
        publishedSequence = front->sequence;
        ++framesPublished;
    }
    const QPointer<PrivateData> alive(this); // the slots of the surface may delete the stream, or the surface
    if (surface && front && !front->rendered.isNull()) {
        surface->setPicture(pixmapOf(*front), indicesOf(*front));
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

} // namespace Vistrel
