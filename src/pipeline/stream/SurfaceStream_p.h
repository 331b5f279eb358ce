// SPDX-License-Identifier: MIT
// State of a surface stream.
#pragma once

#include "base/FrameLocking.h"
#include "base/PacedCall.h"
#include "pipeline/stream/RefreshClock.h"
#include "pipeline/stream/StreamWorker.h"

#include <Vistrel/AbstractAcquisitionInterface.h>
#include <Vistrel/SurfaceStream.h>

#include <QtCore/QObject>
#include <QtCore/QPointer>

#include <cstdint>

namespace Vistrel {

/// Replaces the source where the surface reads pixel values. Grants no lock while the source must not be asked.
class ReadoutSource final : public AbstractAcquisitionInterface
{
public:
    explicit ReadoutSource(AbstractAcquisitionInterface* source) : m_source(source) {}

    bool isSetup() const override { return true; }
    bool isRunning() const override { return true; }
    bool getNextFrame(RawImage* const, ScopedLock* const) override { return false; }
    ScopedLock getFrameLock(const RawImage& image) override
    {
        wasRefused = wasRefused || !isAskable;
        return isAskable ? askFrameLock(m_source, image) : ScopedLock();
    }

    // User-interface thread.
    bool isAskable = true;
    bool wasRefused = false; // since it was last askable

private:
    AbstractAcquisitionInterface* const m_source;
};

/// Returns a pixmap that shares the picture's pixels. Pixmaps are made and destroyed only on the user-interface thread.
QPixmap pixmapOf(const DisplayFrame& frame);

class SurfaceStream::PrivateData : public QObject
{
    Q_OBJECT

public:
    PrivateData(SurfaceStream* owner, Surface* target, AbstractAcquisitionInterface* acquisitionInterface,
                std::shared_ptr<AbstractAcquisitionInterface> shared);

    void start();
    void followSource(); ///< connects to the source's announcements
    template <typename T>
    void setStage(std::shared_ptr<const T> stage)
    {
        showRenewal(worker->setStage(std::move(stage)));
    }
    /// Shows the effect of a change of settings on the front.
    void showRenewal(StreamWorker::Renewal renewal);

    SurfaceStream* const stream;
    const QPointer<Surface> surface;
    AbstractAcquisitionInterface* const source;
    RefreshClock* const clock;   // the stream's child
    bool isRefreshWanted = true; // while the source is set up

    // Requests from other threads, at any rate. Frames are fetched and published at most at the refresh rate, whether
    // the source announces them or the clock ticks.
    PacedCall frameWanted{[this] { getNextFrame(); }};
    PacedCall stateAnnounced{[this] { stream->updateAcquisitionState(); }};
    PacedCall frameConverted{[this] { publishNew(); }};

    std::uint64_t publishedSequence = 0; // of the picture that the surface shows
    std::uint64_t framesPublished = 0;
    bool isSetUpKnown = false;          // the source was asked
    bool isSourceSetUp = false;         // by its last answer
    bool isFrameAnnounced = false;      // by a source that was not set up
    bool isFrameOwed = false;           // announced before the clean-up was handled, maybe for the next set-up
    std::size_t framesPushedBefore = 0; // until the source was cleaned up
    ReadoutSource readout;
    bool hasNewState = false; // announced while the source must not be asked

    const std::shared_ptr<StreamWorker> worker;
    PictureStore& pictures;                               // the worker's
    std::shared_ptr<AbstractAcquisitionInterface> shared; // the source, when its ownership is shared

public Q_SLOTS:
    void updateStreamStates();
    /// Passes the front to the surface, whether it is new or not.
    void updateImage();
    /// Requests a frame and publishes the front; with `getNew` it waits for that frame.
    void getNextFrame(bool getNew = false);

private:
    bool asksSetUp() const;
    void showSetUp();
    void publishNew();
};

} // namespace Vistrel
