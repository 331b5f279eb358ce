// SPDX-License-Identifier: MIT
// The main window that shows a source's live images and drives the source.
#include "window/WindowQt_p.h"

#include "base/HostCall.h"
#include "platform/WindowHints.h"
#include "window/SourceKeeper.h"
#include "window/panels/Panels.h"

#include <Vistrel/AbstractFileInterface.h>
#include <Vistrel/AcquisitionSignalHandler.h>
#include <Vistrel/Surface.h>

#include <QtCore/QRegularExpression>
#include <QtCore/QThread>
#include <QtGui/QCloseEvent>
#include <QtWidgets/QApplication>

#include <stdexcept>

namespace Vistrel {

namespace {

// Shared with what is being saved, which may see the window go.
std::shared_ptr<AbstractFileInterface> keepFiles(ScopedFileInterface&& given)
{
    const auto owner = std::make_shared<ScopedFileInterface>(std::move(given));
    return {owner, owner->get()};
}

// The toolkit would end the process.
QWidget* checkedParent(QWidget* parent)
{
    const auto* const application = qobject_cast<QApplication*>(QCoreApplication::instance());
    if (!application)
        throw std::logic_error("Vistrel::Window::Window: There is no application yet. Make a Vistrel::Application.");
    if (QThread::currentThread() != application->thread())
        throw std::logic_error("Vistrel::Window::Window: This is not the thread that made the application.");
    return parent;
}

} // namespace

WindowQt::PrivateData::PrivateData(WindowQt* owner, ScopedAcquisitionInterface&& acquisitionInterface,
                                   ScopedFileInterface&& fileInterface)
    : window(owner),
      source(keepSource(std::move(acquisitionInterface))),
      files(keepFiles(std::move(fileInterface))),
      scrollArea(layOut()),
      stream(scrollArea->surface(), source),
      commands(form.statusBar, &stream, source),
      viewModes(window, form, scrollArea),
      palettes(form, &stream, scrollArea->surface()),
      information(window, form, scrollArea, &stream, source, commands, &viewModes),
      saving(window, commands, &stream, scrollArea->surface(), source, files),
      userActions(window, form, &viewModes),
      features(window, form, source, &commands, userActions),
      states(window, form, source.get(), &stream, scrollArea, &commands, features, saving, &palettes, &information),
      aboutBoxes(window, form)
{
    makePanels({window, form, scrollArea, &stream, source.get(), &commands, &features, &palettes, &viewModes});
    form.menuBar->setAccessibleName(tr("Menus"));
    form.acquisitionToolBar->setAccessibleName(tr("Acquisition Commands"));
    form.statusBar->setAccessibleName(tr("Status and Image Information"));
    scrollArea->setAccessibleName(tr("Image"));
    scrollArea->surface()->setAccessibleName(tr("Live Image"));
    // Shortcuts live while the bars are hidden, too.
    window->addActions(window->findChildren<QAction*>(QRegularExpression(QStringLiteral("^action"))));
    connectActions();
    connectParts();
}

// A call that is under way keeps the source; nothing here waits for it.
WindowQt::PrivateData::~PrivateData() = default;

SurfaceScrollArea* WindowQt::PrivateData::layOut()
{
    form.setupUi(window);
    auto* const area = new SurfaceScrollArea(form.centralwidget);
    form.verticalLayout->addWidget(area);
    return area;
}

void WindowQt::PrivateData::connectActions()
{
    const auto& f = form;
    const std::pair<QAction*, const char*> orders[] = {
        {f.actionSetup, SLOT(setupAsync())},
        {f.actionCleanup, SLOT(cleanupAsync())},
        {f.actionTrigger, SLOT(triggerAsync())},
        {f.actionStart_Single_Reverse, SLOT(startSingleReverseAsync())},
        {f.actionStart_Reverse, SLOT(startReverseAsync())},
        {f.actionStart, SLOT(startAsync())},
        {f.actionStart_Single, SLOT(startSingleAsync())},
        {f.actionPause, SLOT(pauseAsync())},
        {f.actionStop, SLOT(stopAsync())},
    };
    for (const auto& [action, slot] : orders)
        connect(action, SIGNAL(triggered()), this, slot);

    const std::pair<QAction*, const char*> zooms[] = {
        {f.actionZoom_In, SLOT(doZoomIn())},     {f.actionZoom_Out, SLOT(doZoomOut())},
        {f.actionZoom_25, SLOT(doZoomTo25())},   {f.actionZoom_50, SLOT(doZoomTo50())},
        {f.actionZoom_100, SLOT(doZoomTo100())}, {f.actionZoom_200, SLOT(doZoomTo200())},
        {f.actionZoom_400, SLOT(doZoomTo400())}, {f.actionZoom_800, SLOT(doZoomTo800())},
    };
    for (const auto& [action, slot] : zooms)
        connect(action, SIGNAL(triggered()), scrollArea, slot);
    connect(f.actionZoom_Fit, SIGNAL(triggered(bool)), scrollArea, SLOT(setZoomToFit(bool)));

    const std::pair<QAction*, const char*> choices[] = {
        {f.actionClose, SLOT(close())},
        {f.actionSave_Image, SLOT(saveCurrentImage())},
        {f.actionCopy_Image, SLOT(copyCurrentImage())},
        {f.actionCopy_Pixel_Value, SLOT(copyCurrentPixelValue())},
        {f.actionCopy_Image_Stats, SLOT(copyCurrentImageStats())},
        {f.actionFull_Screen, SLOT(toggleFullScreen())},
        {f.actionExhibit_View, SLOT(toggleExhibitView())},
        {f.actionColor_Palette_Gray, SLOT(setColorTableGray())},
        {f.actionColor_Palette_Gray_2x, SLOT(setColorTableGray2x())},
        {f.actionColor_Palette_Gray_Inverse, SLOT(setColorTableGrayInverse())},
        {f.actionColor_Palette_Sine, SLOT(setColorTableSine())},
        {f.actionColor_Palette_Cosine, SLOT(setColorTableCosine())},
        {f.actionColor_Palette_Contours, SLOT(setColorTableContours())},
        {f.actionColor_Palette_Rainbow, SLOT(setColorTableRainbow())},
        {f.actionColor_Palette_Random, SLOT(setColorTableRandom())},
        {f.actionBayer_Filter_Auto, SLOT(setBayerDemosaicFilterAuto())},
        {f.actionBayerRG_Filter, SLOT(setBayerDemosaicFilterRGGB())},
        {f.actionBayerGR_Filter, SLOT(setBayerDemosaicFilterGRBG())},
        {f.actionBayerGB_Filter, SLOT(setBayerDemosaicFilterGBRG())},
        {f.actionBayerBG_Filter, SLOT(setBayerDemosaicFilterBGGR())},
    };
    for (const auto& [action, slot] : choices)
        connect(action, SIGNAL(triggered()), window, slot);
    connect(f.actionDecode_Bayer_Images, SIGNAL(triggered(bool)), window, SLOT(setBayerDemosaicEnabled(bool)));
    connect(f.actionReverse_RGB_Order, SIGNAL(triggered(bool)), window, SLOT(setRgbOrderReversed(bool)));
    connect(f.actionPixel_Crosshair_Visible, SIGNAL(triggered(bool)), window, SLOT(setPixelCrosshairVisible(bool)));
    connect(f.actionKeep_Stats_Visible, SIGNAL(triggered(bool)), window, SLOT(setKeepImageInfoVisible(bool)));
}

void WindowQt::PrivateData::connectParts()
{
    connect(&commands, SIGNAL(shown()), this, SLOT(updateActionStates()));
    connect(&commands, SIGNAL(rested()), this, SLOT(updateAtRest()));
    connect(&commands, SIGNAL(completed(Vistrel::BusyWorkResult)), this,
            SIGNAL(busyWorkComplete(Vistrel::BusyWorkResult)));
    connect(this, SIGNAL(busyWorkComplete(Vistrel::BusyWorkResult)), this,
            SLOT(cleanupBusyWork(Vistrel::BusyWorkResult)));
    connect(&saving, SIGNAL(stateChanged()), this, SLOT(updateActionStates()));
    connect(&features, SIGNAL(updated()), &information, SLOT(updateSwitches()));
    connect(&features, SIGNAL(updated()), this, SLOT(updateImageStats()));
    connect(&features, SIGNAL(updated()), this, SLOT(updateActionStates()));
    connect(&information, SIGNAL(ticked()), &states, SLOT(updateHint()));

    Surface* const surface = scrollArea->surface();
    surface->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(surface, SIGNAL(customContextMenuRequested(QPoint)), this, SLOT(showSurfaceContextMenu(QPoint)));
    connect(surface, SIGNAL(scalingChanged(bool, double)), this, SLOT(updateZoomStates()), Qt::QueuedConnection);
    connect(&stream, SIGNAL(imageUpdated()), this, SLOT(updateActionStates()), Qt::QueuedConnection);
    connect(&stream, SIGNAL(imageUpdated()), &information, SLOT(updateImage()), Qt::QueuedConnection);
    connect(&stream, SIGNAL(bitmapLockChanged(bool)), this, SLOT(updateBitmapLockedStates(bool)));
    if (!source)
        return;
    const AcquisitionSignalHandler* const handler = source->signalHandler();
    featuresAnnounced.follow(handler, &AcquisitionSignalHandler::featureSetChanged);
    stateAnnounced.follow(handler, &AcquisitionSignalHandler::acquisitionStateChanged);
}

void WindowQt::PrivateData::updateAtRest()
{
    if (features.areNew())
        features.update();
    else
        states.update();
    information.updatePixelValue();
}

void WindowQt::PrivateData::updateZoomStates()
{
    form.actionZoom_Fit->setChecked(scrollArea->zoomToFit());
    information.updateZoom();
}

// What can be done with the image, and with the pixel that was clicked.
void WindowQt::PrivateData::showSurfaceContextMenu(const QPoint& position)
{
    auto* const menu = new QMenu(window);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    information.updatePixelValue();
    menu->addActions({form.actionCopy_Pixel_Value, form.actionCopy_Image, form.actionSave_Image});
    menu->addSeparator();
    menu->addActions({form.actionZoom_In, form.actionZoom_Out, form.actionZoom_Fit, form.actionZoom_100});
    menu->addSeparator();
    menu->addMenu(form.menuColor_Palette);
    menu->addAction(form.actionPixel_Crosshair_Visible);
    menu->addSeparator();
    menu->addActions({form.actionExhibit_View, form.actionFull_Screen});
    menu->popup(scrollArea->surface()->mapToGlobal(position));
}

// The window ----------------------------------------------------------------------------------------------------------

WindowQt::WindowQt(ScopedAcquisitionInterface&& acquisitionInterface, QWidget* parent)
    : WindowQt(std::move(acquisitionInterface), ScopedFileInterface(), parent)
{
}

WindowQt::WindowQt(ScopedAcquisitionInterface&& acquisitionInterface, ScopedFileInterface&& fileInterface,
                   QWidget* parent)
    : QMainWindow(checkedParent(parent)),
      m_data(new PrivateData(this, std::move(acquisitionInterface), std::move(fileInterface)))
{
    setColorTableGray();
    m_data->palettes.showRamps();
    setBayerDemosaicEnabled(m_data->form.actionDecode_Bayer_Images->isChecked());
    updateFeatureSet();
    m_data->updateZoomStates();
}

WindowQt::~WindowQt()
{
    Q_EMIT partsGoing();
}

// The system may leave full screen, too, and change its colours.
void WindowQt::changeEvent(QEvent* event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        m_data->palettes.showRamps();
    if (event->type() == QEvent::WindowStateChange)
        m_data->viewModes.followWindowState();
}

void WindowQt::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    m_data->viewModes.followWindowSize();
}

// Closing -------------------------------------------------------------------------------------------------------------

void WindowQt::setCloseable(bool closeable)
{
    if (closeable == this->closeable())
        return;
    m_data->form.actionClose->setEnabled(closeable);
    setCloseButton(*this, closeable);
}

void WindowQt::closeEvent(QCloseEvent* event)
{
    if (!closeable() && !m_data->commands.hasEnded()) {
        event->ignore();
        return;
    }
    event->accept();
    if (m_data->commands.hasEnded())
        return;
    m_data->endWork();
    deleteLater();
    if (m_data->commands.isBusy())
        hide(); // the command may hold up what comes next
    if (m_data->source)
        hostCall("uxClosed", [this] { m_data->source->uxClosed(); });
}

void WindowQt::PrivateData::endWork()
{
    information.end();
    commands.end();
    stream.setRefreshEnabled(false);
    // What the source announces from now on leads to no call of it.
    stream.ignoreAnnouncements();
    featuresAnnounced.stop();
    stateAnnounced.stop();
    stream.disconnect(this);
    stream.disconnect(&information);
}

// A host that deletes its window in one of its own functions, which this window has called, gets that function's caller
// back first.
void WindowQt::discard()
{
    if (!isInHostCall()) {
        delete this;
        return;
    }
    Q_EMIT partsGoing();
    m_data->endWork();
    if (isVisible())
        close(); // hiding alone would not be the last window's closing
    hide();
    deleteLater();
}

} // namespace Vistrel
