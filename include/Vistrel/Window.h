// SPDX-License-Identifier: MIT
// A display window, for hosts that do not use the toolkit.
#pragma once

#include <Vistrel/ColorTable.h>
#include <Vistrel/Format.h>
#include <Vistrel/NativeTypes.h>
#include <Vistrel/RawImage.h>
#include <Vistrel/ScopedAcquisitionInterface.h>
#include <Vistrel/ScopedActionInterface.h>
#include <Vistrel/ScopedFileInterface.h>

#include <cstddef>
#include <memory>

class QWidget;

namespace Vistrel {

class Action;
class SurfaceScrollArea;
class SurfaceStream;

/// A window that shows a source's live images and drives the source.
///
/// The user may close it: then `good()` is false for good, and so it is once the application has gone. Other members
/// must not be called any more; where they are, nothing happens, and false, null or zero is returned (a build for
/// debugging says so and stops).
///
/// Bound to the user-interface thread, the one that made the `Application`, which must exist. A getter of text copies
/// it and a terminating zero into `buffer`, whose capacity `*size` is on entry, and stores the length plus one in
/// `*size`. A text too long arrives cut and terminated; a null buffer only measures; false only for a null `size`.
class VISTREL_EXPORT Window : public BaseClass
{
public:
    /// Takes the source over, which may be none. Not shown yet. Throws `std::logic_error`, and takes nothing over,
    /// before there is an `Application`, and on any thread but the one that made it.
    explicit Window(ScopedAcquisitionInterface&& acquisitionInterface);
    /// Takes over what the host's own image files are saved by, too.
    Window(ScopedAcquisitionInterface&& acquisitionInterface, ScopedFileInterface&& fileInterface);
    /// Closes the window without asking, and without `uxClosed()` on the source. The source goes with it, or later,
    /// when a call to it returns that is under way; a window that is deleted in a function of the host's which it has
    /// called stops at once, and goes when that function has returned. The source's destructor tells when.
    ~Window() override;
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    bool good() const; ///< whether the window is there

    QWidget* qt_handle();
    const QWidget* qt_handle() const;
    HWND native_handle() const; ///< the window system's own, made now if need be; see `NativeTypes.h`

    // The window's parts, which are its own; null without one.
    AbstractAcquisitionInterface* acquisitionInterface();
    const AbstractAcquisitionInterface* acquisitionInterface() const;
    AbstractFileInterface* fileInterface();
    const AbstractFileInterface* fileInterface() const;
    SurfaceStream* surfaceStream();
    const SurfaceStream* surfaceStream() const;
    SurfaceScrollArea* surfaceScrollArea();
    const SurfaceScrollArea* surfaceScrollArea() const;

    // Place and size in logical screen pixels, without the frame but in `move` and where it says so. A side is bounded
    // to 1 to 32,767; a place that meets no screen is moved by as little as makes it meet one.
    void move(int x, int y);
    void resize(int width, int height);
    int width() const;
    int height() const;
    void getGeometry(int& x, int& y, int& width, int& height) const;
    void getFrameGeometry(int& x, int& y, int& width, int& height) const;
    void setGeometry(int x, int y, int width, int height);
    /// So that the frame has this place and size. How wide the frame is, is known once the window has been shown.
    void setFrameGeometry(int x, int y, int width, int height);
    bool saveGeometry(char* const buffer, std::size_t* const size) const; ///< as a text for `restoreGeometry`
    /// False, and the window unchanged, for a text that did not come whole from `saveGeometry`, or whose rectangles are
    /// out of the bounds above.
    bool restoreGeometry(const char* const text);

    void show();
    void hide();
    void setVisible(bool visible);
    bool isVisible() const;
    void raise();
    void minimize();
    void maximize();
    void restore();
    bool isMinimized() const;
    bool isMaximized() const;
    void setFullScreen(bool enabled);
    bool isFullScreen() const;
    void setExhibitView(bool enabled); ///< the image alone, in an ordinary window
    bool isExhibitView() const;
    void setCloseable(bool closeable); ///< whether the user may close the window; at first so
    bool closeable() const;

    void setTitle(const char* const title); ///< Latin-1, as when it is read
    bool title(char* const buffer, std::size_t* const size) const;

    // Bring the source to a state, by a command that runs in its turn. `setConfigured` stops a running source and sets
    // up any other; the other two do nothing when the source is there already.
    void setRunning();
    void setConfigured();
    void setUnconfigured();

    // What the image information bar shows, of what the source has.
    void setPreviewFrameRate(bool enabled);
    bool previewFrameRate() const;
    void setPreviewBuffersQueued(bool enabled);
    bool previewBuffersQueued() const;
    void setPreviewBuffersFilled(bool enabled);
    bool previewBuffersFilled() const;
    void setPreviewBuffersDropped(bool enabled);
    bool previewBuffersDropped() const;
    void setPreviewBuffersDelivered(bool enabled);
    bool previewBuffersDelivered() const;
    void setPreviewImageDimensions(bool enabled);
    bool previewImageDimensions() const;
    void setPreviewImageFormat(bool enabled);
    bool previewImageFormat() const;
    void setPreviewPixelValue(bool enabled);
    bool previewPixelValue() const;
    void setPreviewZoomLevel(bool enabled);
    bool previewZoomLevel() const;
    void setPreviewSetupMode(bool enabled);
    bool previewSetupMode() const;
    void setKeepImageInfoVisible(bool visible); ///< also in full screen and exhibit view
    bool keepImageInfoVisible() const;

    /// The palette of monochrome images. An unknown value is reported and changes nothing.
    void setColorTable(ColorTable table);
    ColorTable colorTable() const;
    void setBayerDemosaicEnabled(bool enabled);
    bool bayerDemosaicEnabled() const;
    /// One of the four mosaics, for all one-channel images, or 0: each image's own. Any other value is reported and
    /// changes nothing.
    void setBayerFilterOverride(Format filter);
    Format bayerFilterOverride() const;
    void setRgbOrderReversed(bool reversed);
    bool rgbOrderReversed() const;
    void setPixelCrosshairVisible(bool visible);
    bool pixelCrosshairVisible() const;

    void setRefreshEnabled(bool enabled); ///< whether frames are asked for while the source is set up
    bool refreshEnabled() const;
    void setRefreshRate(int rate); ///< images a second, at most
    int refreshRate() const;
    void setRefreshRateAuto(bool enabled); ///< the primary screen's rate
    bool refreshRateAuto() const;

    void setZoomLevel(double zoom); ///< logical screen pixels an image pixel, about the centre
    double zoomLevel() const;
    void setZoomToFit(bool enabled);
    bool zoomToFit() const;
    void setImageOffset(int x, int y); ///< of the view in the scaled image, in logical pixels
    int imageOffsetX() const;
    int imageOffsetY() const;

    // Shows pixels that the host draws itself; see `SurfaceStream`, where the four are the same.
    bool setBitmapLocked(int width, int height, Format format);
    void unlockBitmap();
    bool bitmapLocked() const;
    bool getBitmap(RawImage* const image) const;

    // Add an entry for a host's command to a menu of that title, which is made when it is the first, to the tool bar,
    // or to the image information bar. The window owns the action, and the host may delete it. Texts are in the local
    // 8-bit encoding; "&" stands before a menu's or an entry's key. Null when the window is not there.
    Action* addMainMenuAction(ScopedActionInterface&& actionInterface, const char* const menuTitle,
                              const char* const actionText);
    Action* addToolBarAction(ScopedActionInterface&& actionInterface, const char* const actionText);
    Action* addImageStatsAction(ScopedActionInterface&& actionInterface, const char* const actionText);

    /// What "About Application..." shows: a heading, text, and icons in XPM form, all Latin-1 and each optional: a
    /// large one, which stands above the heading, and two more sizes for the dialog's own window. Nothing at all, but
    /// for the smaller icons, takes the entry away.
    void setApplicationAbout(const char* const title, const char* const description,
                             const char* const* const icon1 = nullptr, const char* const* const icon2 = nullptr,
                             const char* const* const icon3 = nullptr);
#if defined(_WIN32)
    /// The same with icon handles, which stay the caller's.
    void setApplicationAbout(const char* const title, const char* const description, HICON icon1, HICON icon2,
                             HICON icon3);
    /// Without icons, where neither of the others would be the closer one.
    void setApplicationAbout(const char* const title, const char* const description, std::nullptr_t, std::nullptr_t,
                             std::nullptr_t)
    {
        setApplicationAbout(title, description);
    }
#endif
    bool applicationAboutTitle(char* const buffer, std::size_t* const size) const;
    bool applicationAboutDescription(char* const buffer, std::size_t* const size) const;

    /// Keeps this window above a top-level window of the host, of whatever toolkit and thread; null ends that. On X11
    /// that is the window manager's to do. Without effect for what is no such window.
    void setTransientParent(HWND parent);
    HWND transientParent() const; ///< as it was given; null when there is none, and from the moment that it has gone

private:
    class VISTREL_LOCAL PrivateData;
    std::unique_ptr<PrivateData> m_data;
};

} // namespace Vistrel
