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

/// Shows the frames of a source, with actions for all that the source offers and that can be done now. Commands run
/// on a thread of their own, one at a time, in the order in which they were asked for.
///
/// When it is closed it tells the source, hides at once and deletes itself; a source that is still busy outlives it
/// until its call has returned. Bound to the user-interface thread.
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
    Q_PROPERTY(bool pixelCrosshairVisible READ pixelCrosshairVisible WRITE setPixelCrosshairVisible)

public:
    /// Takes the source over; without one, nothing is offered. Not shown yet.
    explicit WindowQt(ScopedAcquisitionInterface&& acquisitionInterface, QWidget* parent = nullptr);
    /// Takes over what the host's own image files are saved by, too.
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

    // Add an action of the host's, which is the window's child and leaves no trace when it is deleted: to the menu of
    // that title, which stands before Help and is there while it has an action, to the tool bar, or to the information
    // bar.
    QAction* addMainMenuAction(const QString& menuTitle, const QString& text);
    QAction* addToolBarAction(const QString& text);
    QAction* addImageStatsAction(const QString& text);

    /// What "About Application..." runs. Not owned; null takes the entry away.
    void setApplicationAbout(QDialog* dialog);

    /// Closes the window without asking, and without `uxClosed()` on the source, and deletes it: at once, or when the
    /// function of the host's has returned that the window has called.
    void discard();

    QMenu* createPopupMenu() override; ///< none: the bars are not the user's to hide

public Q_SLOTS:
    void setCloseable(bool closeable);

    // Brings the source to a state, by a command that runs in its turn. `setConfigured` stops a running source and sets
    // up any other; the other two do nothing when the source is there already.
    void setRunning();
    void setConfigured();
    void setUnconfigured();

    /// Asks the source again what it offers.
    void updateFeatureSet();
    /// Asks the source again what state it is in.
    void updateAcquisitionState();

    /// Shows monochrome images in a palette. An unknown value is reported and changes nothing.
    void setColorTable(Vistrel::ColorTable table);
    void setColorTableGray();
    void setColorTableGray2x();
    void setColorTableGrayInverse();
    void setColorTableSine();
    void setColorTableCosine();
    void setColorTableRainbow(); ///< by the values of the rainbow dock
    void setColorTableRandom();  ///< another one each time
    void setColorTableContours();

    void setBayerDemosaicEnabled(bool enabled);
    void setBayerDemosaicFilterAuto();
    void setBayerDemosaicFilterRGGB();
    void setBayerDemosaicFilterGRBG();
    void setBayerDemosaicFilterGBRG();
    void setBayerDemosaicFilterBGGR();
    void setRgbOrderReversed(bool reversed);
    void setPixelCrosshairVisible(bool visible);

    // In full screen, and in the exhibit view within an ordinary window, the image is alone. The bars come over it when
    // the pointer touches the window's upper or lower edge; the status bar stays when the image information is kept.
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

    /// To a file that the user names. Events go on meanwhile; returns when the file is there, and after every dialog
    /// and every saving that began in the meantime, also another window's.
    void saveCurrentImage();
    void copyCurrentImage();      ///< to the clipboard, as it is shown, in full size
    void copyCurrentPixelValue(); ///< as text, of the pixel under the pointer or clicked last
    void copyCurrentImageStats(); ///< as text, a line for each item of the information bar that has a value

Q_SIGNALS:
    void partsGoing(); ///< at the beginning of the destruction, when everything is still there

protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    class VISTREL_LOCAL PrivateData;
    std::unique_ptr<PrivateData> m_data;
};

} // namespace Vistrel
