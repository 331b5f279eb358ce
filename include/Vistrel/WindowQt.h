// SPDX-License-Identifier: MIT
// The main window that shows a source's live images and drives the source.
#pragma once

#include <Vistrel/ColorTable.h>
#include <Vistrel/Export.h>
#include <Vistrel/Format.h>
#include <Vistrel/ScopedAcquisitionInterface.h>
#include <Vistrel/ScopedFileInterface.h>

#include <QtWidgets/QMainWindow>

#include <memory>

class QAction;
class QDialog;

namespace Vistrel {

class SurfaceScrollArea;
class SurfaceStream;

/// Shows the frames of a source, with an action for each command that the source offers, enabled while the command is
/// possible. Commands run on the window's busy-work thread, one at a time, in the order in which they were requested.
///
/// A window that is closed tells the source, hides at once and deletes itself. A source with a running call is
/// destroyed when the call has returned. Bound to the user-interface thread.
class VISTREL_EXPORT WindowQt : public QMainWindow
{
    Q_OBJECT
    Q_PROPERTY(bool closeable READ closeable WRITE setCloseable)
    Q_PROPERTY(bool bayerDemosaicEnabled READ bayerDemosaicEnabled WRITE setBayerDemosaicEnabled)
    Q_PROPERTY(bool rgbOrderReversed READ rgbOrderReversed WRITE setRgbOrderReversed)
    Q_PROPERTY(bool previewSetupMode READ previewSetupMode WRITE setPreviewSetupMode)
    Q_PROPERTY(bool previewFrameRate READ previewFrameRate WRITE setPreviewFrameRate)
    Q_PROPERTY(bool previewBuffersQueued READ previewBuffersQueued WRITE setPreviewBuffersQueued)
    Q_PROPERTY(bool previewBuffersFilled READ previewBuffersFilled WRITE setPreviewBuffersFilled)
    Q_PROPERTY(bool previewBuffersDropped READ previewBuffersDropped WRITE setPreviewBuffersDropped)
    Q_PROPERTY(bool previewBuffersDelivered READ previewBuffersDelivered WRITE setPreviewBuffersDelivered)
    Q_PROPERTY(bool previewImageDimensions READ previewImageDimensions WRITE setPreviewImageDimensions)
    Q_PROPERTY(bool previewImageFormat READ previewImageFormat WRITE setPreviewImageFormat)
    Q_PROPERTY(bool previewZoomLevel READ previewZoomLevel WRITE setPreviewZoomLevel)
    Q_PROPERTY(bool previewPixelValue READ previewPixelValue WRITE setPreviewPixelValue)
    Q_PROPERTY(bool keepImageInfoVisible READ keepImageInfoVisible WRITE setKeepImageInfoVisible)
    Q_PROPERTY(bool fullScreen READ fullScreen WRITE setFullScreen)
    Q_PROPERTY(bool exhibitView READ exhibitView WRITE setExhibitView)
    Q_PROPERTY(bool analyzeMenuVisible READ analyzeMenuVisible WRITE setAnalyzeMenuVisible)
    Q_PROPERTY(bool pixelCrosshairVisible READ pixelCrosshairVisible WRITE setPixelCrosshairVisible)

public:
    /// Takes ownership of the source; without one, no command is offered. The window is not shown yet.
    explicit WindowQt(ScopedAcquisitionInterface&& acquisitionInterface, QWidget* parent = nullptr);
    /// Also takes ownership of the interface that saves the host's own image files.
    WindowQt(ScopedAcquisitionInterface&& acquisitionInterface, ScopedFileInterface&& fileInterface,
             QWidget* parent = nullptr);
    ~WindowQt() override;

    AbstractAcquisitionInterface* acquisitionInterface();
    const AbstractAcquisitionInterface* acquisitionInterface() const;
    AbstractFileInterface* fileInterface();
    const AbstractFileInterface* fileInterface() const;
    SurfaceStream* surfaceStream();
    const SurfaceStream* surfaceStream() const;
    SurfaceScrollArea* surfaceScrollArea();
    const SurfaceScrollArea* surfaceScrollArea() const;

    bool closeable() const; ///< whether the user may close the window
    ColorTable colorTable() const;
    bool bayerDemosaicEnabled() const;
    Format bayerDemosaicFilter() const;
    bool rgbOrderReversed() const;
    bool pixelCrosshairVisible() const;
    bool fullScreen() const;
    bool exhibitView() const;
    bool keepImageInfoVisible() const;
    bool analyzeMenuVisible() const;

    // Which items the image information bar shows, of those that the source has.
    bool previewSetupMode() const;
    bool previewFrameRate() const;
    bool previewBuffersQueued() const;
    bool previewBuffersFilled() const;
    bool previewBuffersDropped() const;
    bool previewBuffersDelivered() const;
    bool previewImageDimensions() const;
    bool previewImageFormat() const;
    bool previewZoomLevel() const;
    bool previewPixelValue() const;

    // Add an action for the host: to the menu of that title, which stands before Help and exists while it has an
    // action, to the tool bar, or to the image information bar. The action is the window's child; the host may delete
    // it.
    QAction* addMainMenuAction(const QString& menuTitle, const QString& text);
    QAction* addToolBarAction(const QString& text);
    QAction* addImageStatsAction(const QString& text);

    /// Sets the dialog that "About Application..." runs. Not owned; null removes the entry.
    void setApplicationAbout(QDialog* dialog);

    /// Closes the window without asking, and without `uxClosed()` on the source, and deletes it: at once, or after the
    /// host function has returned from which this is called.
    void discard();

    QMenu* createPopupMenu() override; ///< none: the user cannot hide the bars

public Q_SLOTS:
    void setCloseable(bool closeable);

    // Queue a command that brings the source to a state. `setConfigured` stops a running source and sets up any other;
    // the other two do nothing when the source is in that state already.
    void setRunning();
    void setConfigured();
    void setUnconfigured();

    /// Asks the source which commands it offers.
    void updateFeatureSet();
    /// Asks the source for its state.
    void updateAcquisitionState();

    /// Selects the palette of monochrome images. An unknown value is reported and changes nothing.
    void setColorTable(Vistrel::ColorTable table);
    void setColorTableGray();
    void setColorTableGray2x();
    void setColorTableGrayInverse();
    void setColorTableSine();
    void setColorTableCosine();
    void setColorTableRainbow(); ///< with the values of the rainbow dock
    void setColorTableRandom();  ///< a new one each time
    void setColorTableContours();

    void setBayerDemosaicEnabled(bool enabled);
    void setBayerDemosaicFilterAuto();
    void setBayerDemosaicFilterRGGB();
    void setBayerDemosaicFilterGRBG();
    void setBayerDemosaicFilterGBRG();
    void setBayerDemosaicFilterBGGR();
    void setRgbOrderReversed(bool reversed);
    void setPixelCrosshairVisible(bool visible);
    /// Shows or hides the menu "Analyze". The keys of its entries work also while it is hidden. True at first.
    void setAnalyzeMenuVisible(bool visible);

    // Full screen, and the exhibit view in an ordinary window, show only the image. The bars are shown over it when the
    // pointer touches the window's upper or lower edge. `keepImageInfoVisible` keeps the status bar visible.
    void setFullScreen(bool enabled);
    void toggleFullScreen();
    void setExhibitView(bool enabled);
    void toggleExhibitView();
    void setKeepImageInfoVisible(bool visible);

    void setPreviewSetupMode(bool enabled);
    void setPreviewFrameRate(bool enabled);
    void setPreviewBuffersQueued(bool enabled);
    void setPreviewBuffersFilled(bool enabled);
    void setPreviewBuffersDropped(bool enabled);
    void setPreviewBuffersDelivered(bool enabled);
    void setPreviewImageDimensions(bool enabled);
    void setPreviewImageFormat(bool enabled);
    void setPreviewZoomLevel(bool enabled);
    void setPreviewPixelValue(bool enabled);

    /// Saves to a file that the user names. Events are handled meanwhile; returns when the file is written, and after
    /// every dialog and every saving that began in the meantime, in any window.
    void saveCurrentImage();
    void copyCurrentImage();      ///< to the clipboard, as shown, at full size
    void copyCurrentPixelValue(); ///< as text: the pixel under the pointer, or clicked last
    void copyCurrentImageStats(); ///< as text: a line for each item of the information bar with a value

Q_SIGNALS:
    void partsGoing(); ///< at the beginning of the destruction, while all parts exist

protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    class VISTREL_LOCAL PrivateData;
    std::unique_ptr<PrivateData> m_data;
};

} // namespace Vistrel
