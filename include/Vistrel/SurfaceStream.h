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

/// Fetches frames from a source on a worker thread, converts them on all processors, and shows the newest picture on
/// the surface. While the source is set up, frames are fetched at the refresh rate, or ten times a second after a
/// second without one. A frame that the source announces is fetched at once after a pause; of frames that come faster
/// than 60 times a second the newest is fetched. The user-interface thread never waits for the source.
///
/// Bound to the user-interface thread. The stream does not own the surface, nor a source that is given as a pointer:
/// the source must outlive the stream, whose destructor waits for a running fetch.
class VISTREL_EXPORT SurfaceStream : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool refreshEnabled READ refreshEnabled WRITE setRefreshEnabled)
    Q_PROPERTY(bool refreshRateAuto READ refreshRateAuto WRITE setRefreshRateAuto)
    Q_PROPERTY(int refreshRate READ refreshRate WRITE setRefreshRate)
    Q_PROPERTY(bool bayerDemosaicEnabled READ bayerDemosaicEnabled WRITE setBayerDemosaicEnabled)
    Q_PROPERTY(bool rgbOrderReversed READ rgbOrderReversed WRITE setRgbOrderReversed)

public:
    /// Throws an exception of the standard library, and releases everything, when no thread can be started.
    SurfaceStream(Surface* const surface, AbstractAcquisitionInterface* const acquisitionInterface);
    /// Shares the ownership of the source. The destructor does not wait: a running fetch keeps the source, and releases
    /// it on its own thread.
    SurfaceStream(Surface* const surface, std::shared_ptr<AbstractAcquisitionInterface> acquisitionInterface);
    ~SurfaceStream() override;

    Surface* surface();
    const Surface* surface() const;
    AbstractAcquisitionInterface* acquisitionInterface();
    const AbstractAcquisitionInterface* acquisitionInterface() const;

    bool refreshEnabled() const;  ///< whether frames are being fetched at the refresh rate
    int refreshRate() const;      ///< hertz: 1000 divided by the interval in whole milliseconds
    bool refreshRateAuto() const; ///< whether the rate is the primary screen's

    bool bayerDemosaicEnabled() const;
    Format bayerDemosaicFilter() const;
    bool rgbOrderReversed() const;
    QVector<unsigned int> colorPalette() const;

    /// Copies the descriptor of the newest frame as the source delivered it. With `lock` it succeeds only under a lock
    /// that the source grants; the pixels can be read while it is held. The lock that `*lock` held before is released
    /// first. Returns false without a frame. The source is asked for the lock on this thread, even while a command
    /// runs: a source whose commands block `getFrameLock` blocks this call. Release the lock before control returns to
    /// the event loop, and before any other call here.
    bool latestImage(RawImage* const image, ScopedLock* const lock) const;
    /// Returns a deep copy of the newest converted image: `Format_Indexed8` without colour table for monochrome frames,
    /// `Format_RGBX8888` for colour. Null without a frame.
    QImage cloneLatestImage() const;
    /// Returns a deep copy of the newest image as it is shown, with palette and channel order applied.
    QImage cloneLatestImageForRender() const;
    /// Returns the newest picture without copying its pixels; later frames do not change it.
    QPixmap peekPixmap() const;
    QSize latestImageSize() const;    ///< (0, 0) without a frame
    Format latestImageFormat() const; ///< as converted: without pattern bits when not demosaiced; 0 without a frame
    QImage::Format latestQImageFormat() const; ///< `QImage::Format_Invalid` without a frame

    /// Makes a bitmap, owned by the stream and zeroed at first, that frames are copied into or the host draws into.
    /// `format` is `Mono8`, `RGB8` or `RGBa8`; any other returns false and changes nothing. While it is locked, frames
    /// of another size or kind are refused.
    bool setBitmapLocked(int width, int height, Format format);
    /// Whether such a bitmap can be made now. Allocates its memory and frees it; changes nothing.
    static bool canLockBitmap(int width, int height, Format format);
    bool bitmapLocked() const;
    /// Later frames are converted as usual.
    void unlockBitmap();
    /// Describes the locked bitmap; its address is fixed until it is unlocked. Returns false when none is locked. A
    /// host that drew into it delivers this same descriptor as its next frame. After it is unlocked or locked anew, the
    /// host neither draws into it nor delivers it; its pixels are freed when no picture in view and no frame that was
    /// pushed before uses them.
    bool getBitmap(RawImage* const image) const;

    /// Why arriving frames are not shown, in a sentence; empty while they are.
    QString refusal() const;

    quint64 framesConverted() const; ///< frames converted since construction, also those never shown
    quint64 framesPublished() const; ///< frames passed to the surface since construction

public Q_SLOTS:
    /// A change of the source's state does not enable it again.
    void setRefreshEnabled(bool enabled);
    /// Turns the automatic rate off. Zero or less changes nothing else.
    void setRefreshRate(int hz);
    void setRefreshRateAuto(bool enabled);

    // Each of these converts the frame in view again if the setting affects it, and blocks for at most one conversion.
    // While a newer frame is being converted, or a command of the window runs, the picture changes a moment later. A
    // frame that was delivered without a lock is converted again only until the next fetch begins.
    void setBayerDemosaicEnabled(bool enabled);
    /// The pattern bits of `filter` replace those of the frames; 0 uses the frames' own.
    void setBayerDemosaicFilter(Vistrel::Format filter);
    void setRgbOrderReversed(bool reversed);
    /// 256 entries 0xffRRGGBB, one for each grey level; any other number of entries shows the grey ramp.
    void setColorPalette(const QVector<unsigned int>& palette);

    /// Asks the source whether it is set up, and starts or stops fetching frames.
    void updateAcquisitionState();
    /// Turn this off while the source runs a call on another thread that may block its queries: then this thread asks
    /// it nothing, and handles what it announces when this is on again. Frames are still fetched.
    void setSourceAskable(bool askable);
    /// From now on ignores what the source announces, and fetches nothing: for a stream that is about to be destroyed.
    void ignoreAnnouncements();

Q_SIGNALS:
    void imageUpdated(); ///< the surface shows another image, or none
    void bitmapLockChanged(bool locked);

private:
    class VISTREL_LOCAL PrivateData;
    std::unique_ptr<PrivateData> m_data;
};

} // namespace Vistrel
