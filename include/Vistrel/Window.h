// SPDX-License-Identifier: MIT
// A display window, for hosts without Qt.
#pragma once

#include <Vistrel/ColorTable.h>
#include <Vistrel/Format.h>
#include <Vistrel/NativeTypes.h>
#include <Vistrel/PixelValues.h>
#include <Vistrel/RawImage.h>
#include <Vistrel/ScopedAcquisitionInterface.h>
#include <Vistrel/ScopedActionInterface.h>
#include <Vistrel/ScopedFileInterface.h>
#include <Vistrel/ShrinkMode.h>

#include <cstddef>
#include <memory>

class QWidget;

namespace Vistrel {

class Action;
class SurfaceScrollArea;
class SurfaceStream;

/// A window that shows a source's live images and drives the source.
///
/// Once the user has closed it, or the application is destroyed, `good()` stays false. Other members must not be called
/// then: a debug build stops with a message, any other does nothing and returns false, null or zero.
///
/// Bound to the user-interface thread, the one that made the `Application`, which must exist. A getter of text copies
/// it and a terminating zero into `buffer`. `*size` is the buffer's capacity on entry and the text's length plus one on
/// return. A text that is too long is cut and terminated; a null buffer only measures. It returns false only for a null
/// `size`.
class VISTREL_EXPORT Window : public BaseClass
{
public:
    /// Takes ownership of the source, which may be empty. The window is not shown yet. Throws `std::logic_error`, and
    /// takes nothing, without an `Application` and on any thread but the one that made it.
    explicit Window(ScopedAcquisitionInterface&& acquisitionInterface);
    /// Also takes ownership of the interface that saves the host's own image files.
    Window(ScopedAcquisitionInterface&& acquisitionInterface, ScopedFileInterface&& fileInterface);
    /// Closes the window without asking, and without `uxClosed()` on the source. Destroys the source, at once or after
    /// the last running call to it has returned. A window that is deleted inside a host function that it has called
    /// stops at once, and its parts are destroyed after that function has returned. The source's destructor marks the
    /// end.
    ~Window() override;
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    bool good() const; ///< whether the window exists

    QWidget* qt_handle();
    const QWidget* qt_handle() const;
    HWND native_handle() const; ///< the native window, created if needed; see `NativeTypes.h`

    // The window's parts, owned by it; null without one.
    AbstractAcquisitionInterface* acquisitionInterface();
    const AbstractAcquisitionInterface* acquisitionInterface() const;
    AbstractFileInterface* fileInterface();
    const AbstractFileInterface* fileInterface() const;
    SurfaceStream* surfaceStream();
    const SurfaceStream* surfaceStream() const;
    SurfaceScrollArea* surfaceScrollArea();
    const SurfaceScrollArea* surfaceScrollArea() const;

    // Position and size in logical screen pixels, without the frame except in `move` and `...FrameGeometry`. A side is
    // clamped to 1 to 32,767 device pixels of the screen with the highest scale. A position outside all screens is
    // moved by the least distance that makes them overlap. At first the window has 900 x 700, less on a small screen.
    void move(int x, int y);
    void resize(int width, int height);
    int width() const;
    int height() const;
    void getGeometry(int& x, int& y, int& width, int& height) const;
    void getFrameGeometry(int& x, int& y, int& width, int& height) const;
    void setGeometry(int x, int y, int width, int height);
    /// Gives the frame this position and size. The frame's width is known only once the window has been shown.
    void setFrameGeometry(int x, int y, int width, int height);
    bool saveGeometry(char* const buffer, std::size_t* const size) const; ///< as a text for `restoreGeometry`
    /// Returns false and changes nothing for a text that is not a complete one from `saveGeometry`, or whose rectangles
    /// are out of the bounds above, or when the screen has become much wider or narrower, as by another scale.
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
    void setCloseable(bool closeable); ///< whether the user may close the window; true at first
    bool closeable() const;

    void setTitle(const char* const title); ///< Latin-1, as in `title`
    bool title(char* const buffer, std::size_t* const size) const;

    // Queue a command that brings the source to a state. `setConfigured` stops a running source and sets up any other;
    // the other two do nothing when the source is in that state already.
    void setRunning();
    void setConfigured();
    void setUnconfigured();

    // Which items the image information bar shows, of those that the source has.
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
    /// What is written into the pixels; `WithPosition` at first. An unknown value is reported and changes nothing.
    void setPixelValues(PixelValues values);
    PixelValues pixelValues() const;
    /// How an image with more pixels than the screen has for it is shown; `Sample` at first. An unknown value is
    /// reported and changes nothing.
    void setShrinkMode(ShrinkMode mode);
    ShrinkMode shrinkMode() const;
    /// Whether there is the menu "Analyze"; true at first. The keys of its entries work also while it is hidden.
    void setAnalyzeMenuVisible(bool visible);
    bool analyzeMenuVisible() const;

    void setRefreshEnabled(bool enabled); ///< whether frames are fetched while the source is set up
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

    // For a host that draws the pixels itself; the same as in `SurfaceStream`.
    bool setBitmapLocked(int width, int height, Format format);
    void unlockBitmap();
    bool bitmapLocked() const;
    bool getBitmap(RawImage* const image) const;

    // Add an entry for a host's command: to the menu of that title, which is created if needed, to the tool bar, or to
    // the image information bar. The window owns the action, and the host may delete it. Texts are in the local 8-bit
    // encoding; "&" precedes the mnemonic of a menu or an entry. Null when the window does not exist.
    Action* addMainMenuAction(ScopedActionInterface&& actionInterface, const char* const menuTitle,
                              const char* const actionText);
    Action* addToolBarAction(ScopedActionInterface&& actionInterface, const char* const actionText);
    Action* addImageStatsAction(ScopedActionInterface&& actionInterface, const char* const actionText);

    /// Sets what "About Application..." shows: a heading, a text, and icons in XPM form, all Latin-1 and each optional.
    /// The first icon is the large one above the heading; the other two are for the dialog's window. Without heading,
    /// text and large icon the entry is removed.
    void setApplicationAbout(const char* const title, const char* const description,
                             const char* const* const icon1 = nullptr, const char* const* const icon2 = nullptr,
                             const char* const* const icon3 = nullptr);
#if defined(_WIN32)
    /// The same with icon handles, which the caller keeps.
    void setApplicationAbout(const char* const title, const char* const description, HICON icon1, HICON icon2,
                             HICON icon3);
    /// Without icons; resolves a call that would be ambiguous between the other two.
    void setApplicationAbout(const char* const title, const char* const description, std::nullptr_t, std::nullptr_t,
                             std::nullptr_t)
    {
        setApplicationAbout(title, description);
    }
#endif
    bool applicationAboutTitle(char* const buffer, std::size_t* const size) const;
    bool applicationAboutDescription(char* const buffer, std::size_t* const size) const;

    /// Keeps this window above a top-level window of the host, of any toolkit and thread; null ends that. On X11 the
    /// window manager does it. Does nothing for any other handle.
    void setTransientParent(HWND parent);
    HWND transientParent() const; ///< as it was given; null when there is none, or when it has been destroyed

private:
    class VISTREL_LOCAL PrivateData;
    std::unique_ptr<PrivateData> m_data;
};

} // namespace Vistrel
