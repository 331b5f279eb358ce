// SPDX-License-Identifier: MIT
// Brings a source's frames onto a surface.
#pragma once

#include <Vistrel/Export.h>
#include <Vistrel/RawImage.h>
#include <Vistrel/ScopedLock.h>

#include <QtCore/QObject>
#include <QtCore/QSize>
#include <QtCore/QString>
#include <QtCore/QVector>
#include <QtGui/QImage>
#include <QtGui/QPixmap>

#include <memory>

namespace Vistrel {

class AbstractAcquisitionInterface;
class Surface;

/// Fetches frames from a source on a worker thread of its own, converts them on all processors, and publishes the
/// newest on the surface. Frames are asked for at the refresh rate while the source is set up (ten times a second once
/// it has had none for a second), and when the source announces one: at once after a pause, and the newest of those
/// that come faster than 60 times a second. The user-interface thread never waits for the source.
///
/// Bound to the user-interface thread. The surface is not owned, and nor is a source that is given as a pointer: it
/// must outlive the stream, whose destructor waits for a fetch that is under way.
class VISTREL_EXPORT SurfaceStream : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool refreshEnabled READ refreshEnabled WRITE setRefreshEnabled)
    Q_PROPERTY(bool refreshRateAuto READ refreshRateAuto WRITE setRefreshRateAuto)
    Q_PROPERTY(int refreshRate READ refreshRate WRITE setRefreshRate)
    Q_PROPERTY(bool bayerDemosaicEnabled READ bayerDemosaicEnabled WRITE setBayerDemosaicEnabled)
    Q_PROPERTY(bool rgbOrderReversed READ rgbOrderReversed WRITE setRgbOrderReversed)

public:
    /// Throws an exception of the standard library, and leaves nothing behind, when the system has no thread for it.
    SurfaceStream(Surface* const surface, AbstractAcquisitionInterface* const acquisitionInterface);
    /// Shares the ownership of the source. The destructor waits for nothing: a fetch that is under way goes on, keeps
    /// the source, and lets it go on its own thread.
    SurfaceStream(Surface* const surface, std::shared_ptr<AbstractAcquisitionInterface> acquisitionInterface);
    ~SurfaceStream() override;

    Surface* surface();
    const Surface* surface() const;
    AbstractAcquisitionInterface* acquisitionInterface();
    const AbstractAcquisitionInterface* acquisitionInterface() const;

    bool refreshEnabled() const;  ///< whether frames are being asked for at the refresh rate
    int refreshRate() const;      ///< hertz: 1000 divided by the interval in whole milliseconds
    bool refreshRateAuto() const; ///< whether the rate is the primary screen's

    bool bayerDemosaicEnabled() const;
    Format bayerDemosaicFilter() const;
    bool rgbOrderReversed() const;
    QVector<unsigned int> colorPalette() const;

    /// Copies the descriptor of the newest frame as the source delivered it. With `lock` it succeeds only under a lock
    /// that the source granted, and the pixels can be read while it is held; whatever `*lock` held is released first.
    /// False without a frame. The source is asked for the lock on this thread, also while a command of a window's is
    /// under way: a source whose commands hold up `getFrameLock` holds up this call. Let go of the lock before control
    /// returns to the event loop, and before any other call here.
    bool latestImage(RawImage* const image, ScopedLock* const lock) const;
    /// Deep copy of the newest converted image: `Format_Indexed8` without colour table for monochrome frames,
    /// `Format_RGBX8888` for colour. Null without a frame.
    QImage cloneLatestImage() const;
    /// Deep copy of the newest image as it is shown, palette and channel order applied.
    QImage cloneLatestImageForRender() const;
    /// The newest picture, sharing its pixels; it stays as it is whatever comes after.
    QPixmap peekPixmap() const;
    QSize latestImageSize() const;    ///< (0, 0) without a frame
    Format latestImageFormat() const; ///< as converted: without pattern bits when not demosaiced; 0 without a frame
    QImage::Format latestQImageFormat() const; ///< `QImage::Format_Invalid` without a frame

    /// Sets up a bitmap of the stream that frames are copied into, or the host draws into directly; zeroed at first.
    /// `format` is `Mono8`, `RGB8` or `RGBa8`, anything else gives false and changes nothing. Frames of another size or
    /// kind are refused while it is locked.
    bool setBitmapLocked(int width, int height, Format format);
    bool bitmapLocked() const;
    /// Lets the next frame be converted as usual.
    void unlockBitmap();
    /// Describes the locked bitmap; its address is fixed until it is unlocked. False when none is locked. A host that
    /// drew into it delivers this very descriptor as its next frame. Unlocking it, or locking anew, frees its pixels
    /// once no picture in view and no frame that was pushed before lies in them; the host neither draws into it nor
    /// delivers it from then on.
    bool getBitmap(RawImage* const image) const;

    /// Why frames that came are not shown, in a sentence; empty while they are.
    QString refusal() const;

    quint64 framesConverted() const; ///< frames converted since construction, also those replaced before being seen
    quint64 framesPublished() const; ///< frames handed to the surface since construction

public Q_SLOTS:
    /// What is disabled stays so, whatever becomes of the source.
    void setRefreshEnabled(bool enabled);
    /// Turns the automatic rate off. Zero or less changes nothing else.
    void setRefreshRate(int hz);
    void setRefreshRateAuto(bool enabled);

    // Each of these re-converts the picture in view where it changes it, and waits for that: for one conversion at
    // most. While a newer frame is being converted, or a command of the window is under way, the picture follows a
    // moment later. A frame that came without a lock is re-converted only until the source is asked for the next one.
    void setBayerDemosaicEnabled(bool enabled);
    /// The pattern bits of `filter` replace those of the frames; 0 uses the frames' own.
    void setBayerDemosaicFilter(Vistrel::Format filter);
    void setRgbOrderReversed(bool reversed);
    /// 256 entries 0xffRRGGBB, one for each grey level; any other number of entries shows the grey ramp.
    void setColorPalette(const QVector<unsigned int>& palette);

    /// Asks the source whether it is set up, and starts or ends the asking for frames.
    void updateAcquisitionState();
    /// Turn this off while the source is busy with a call on another thread that may hold up whoever asks it anything:
    /// then this thread asks it nothing, and what it announces meanwhile is looked at once this is on again. Frames are
    /// still fetched.
    void setSourceAskable(bool askable);
    /// Passes over what the source announces, and asks it for no frame, from now on: for a stream that is about to end.
    void ignoreAnnouncements();

Q_SIGNALS:
    void imageUpdated(); ///< another image, or none, is on the surface
    void bitmapLockChanged(bool locked);

private:
    class VISTREL_LOCAL PrivateData;
    std::unique_ptr<PrivateData> m_data;
};

} // namespace Vistrel
