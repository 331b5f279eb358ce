// SPDX-License-Identifier: MIT
// State of a surface stream.
#pragma once

#include "pipeline/StreamWorker.h"

#include <Vistrel/SurfaceStream.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QMetaObject>
#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtCore/QTimer>

#include <atomic>
#include <cstdint>

namespace Vistrel {

class SurfaceStream::PrivateData : public QObject
{
    Q_OBJECT

public:
    PrivateData(SurfaceStream* owner, Surface* target, AbstractAcquisitionInterface* acquisitionInterface);

    void connectScreen();
    void disconnectScreen();
    void expectFrame(); ///< asks at the full rate again

    SurfaceStream* const stream;
    const QPointer<Surface> surface;
    AbstractAcquisitionInterface* const source;
    QTimer* const refreshTimer;  // the stream's child
    int refreshMs = 16;          // the timer's interval, unless the source is at rest
    QElapsedTimer sinceFrame;    // since a frame was last published, or may be expected
    bool isRefreshWanted = true; // while the source is set up
    bool refreshRateAuto = false;
    QMetaObject::Connection screenRateConnection;
    QMetaObject::Connection primaryScreenConnection;

    std::atomic<bool> publishPending{false}; // a post to publish() is on its way
    std::uint64_t publishedSequence = 0;     // of the picture that the surface shows
    std::uint64_t framesPublished = 0;
    DisplayFramePtr published; // keeps what the surface reads pixel values from, be it a locked bitmap
    bool isSourceSetUp = true; // as it was found last; not known at first

    std::shared_ptr<StreamWorker> worker;
    // What the source lives in. While it is set, the stream's end does not wait for the source: it leaves the worker.
    std::shared_ptr<void> keptAlive;

public Q_SLOTS:
    void applyRefreshRateHz(qreal rateHz);
    void updateStreamStates();
    /// Hands the front picture to the surface, whether it is a new one or not.
    void updateImage();
    /// Asks for a frame and publishes what has been converted; with `getNew` it waits for that frame.
    void getNextFrame(bool getNew = false);
    /// What the worker posts.
    void publish();

private:
    bool asksSetUp() const;
    void post();
    void publishNew();
    void pace();
};

} // namespace Vistrel
