// SPDX-License-Identifier: MIT
// The main window that shows a source's live images and drives the source.
#include "window/WindowQt_p.h"

#include "platform/WindowHints.h"
#include "window/SourceKeeper.h"

#include <Vistrel/AbstractFileInterface.h>
#include <Vistrel/AcquisitionSignalHandler.h>
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>
#include <Vistrel/SurfaceStream.h>

#include <QtCore/QRegularExpression>
#include <QtCore/QThread>
#include <QtGui/QCloseEvent>
#include <QtWidgets/QActionGroup>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLabel>
#include <QtWidgets/QMenu>
#include <QtWidgets/QToolButton>
#include <QtWidgets/QVBoxLayout>

#include <stdexcept>

namespace Vistrel {

namespace {

constexpr int barsMs = 800;
constexpr int statisticsMs = 250;

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
      saving(window, commands, &stream, scrollArea->surface(), source, files)
{
    setupModes = new QMenu(window);
    form.actionSetup_Mode->setMenu(setupModes);

    auto* const overImage = new QVBoxLayout(scrollArea->surface());
    hintLabel = new QLabel(scrollArea->surface());
    hintLabel->setAlignment(Qt::AlignCenter);
    hintLabel->setTextFormat(Qt::PlainText);
    hintLabel->setWordWrap(true);
    hintLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    hintLabel->setAttribute(Qt::WA_TransparentForMouseEvents);
    hintLabel->setStyleSheet(QStringLiteral("color: #f0f0f0; font-size: 15pt"));
    overImage->addWidget(hintLabel);

    stateLabel = new QLabel(window);
    stateLabel->setToolTip(tr("State of the acquisition"));
    stateLabel->setAccessibleName(tr("Acquisition State"));
    stateLabel->setContentsMargins(6, 0, 6, 0);
    stateLabel->setMinimumWidth(stateLabel->fontMetrics().horizontalAdvance(tr("Not set up")) + 12);
    form.statusBar->addWidget(stateLabel);
    form.statusBar->setAutoFillBackground(true); // it may lie over the image
    paletteButton = new QToolButton(window);
    paletteButton->setMenu(form.menuColor_Palette);
    paletteButton->setPopupMode(QToolButton::InstantPopup);
    paletteButton->setAutoRaise(true);
    paletteButton->setFocusPolicy(Qt::NoFocus);
    form.statusBar->addPermanentWidget(paletteButton);

    infoBar = new InfoBar(form.statusBar);
    form.statusBar->addPermanentWidget(infoBar);
    statisticsTimer.setInterval(statisticsMs);
    statisticsTimer.start();
    pixelTimer.setSingleShot(true);

    for (QMenu* const menu : {form.menuColor_Palette, form.menuBayer_Filter}) {
        auto* const group = new QActionGroup(menu);
        for (QAction* const action : menu->actions())
            group->addAction(action);
    }
    leaveAction = new QAction(window);
    leaveAction->setShortcut(Qt::Key_Escape);
    leaveAction->setEnabled(false);
    window->addAction(leaveAction);
    barsTimer.setSingleShot(true);
    barsTimer.setInterval(barsMs);
    scrollArea->surface()->installEventFilter(this);
    form.rainbowRulesDockWidget->installEventFilter(this);
    nameForAssistance();
    // Shortcuts live while the bars are hidden, too.
    window->addActions(window->findChildren<QAction*>(QRegularExpression(QStringLiteral("^action"))));
}

void WindowQt::PrivateData::nameForAssistance()
{
    form.menuBar->setAccessibleName(tr("Menus"));
    form.acquisitionToolBar->setAccessibleName(tr("Acquisition Commands"));
    form.statusBar->setAccessibleName(tr("Status and Image Information"));
    scrollArea->setAccessibleName(tr("Image"));
    scrollArea->surface()->setAccessibleName(tr("Live Image"));
    paletteButton->setAccessibleName(tr("Color Palette"));
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

    connect(f.actionFull_Screen, SIGNAL(triggered()), window, SLOT(toggleFullScreen()));
    connect(f.actionExhibit_View, SIGNAL(triggered()), window, SLOT(toggleExhibitView()));
    connect(f.actionKeep_Stats_Visible, SIGNAL(triggered(bool)), window, SLOT(setKeepImageInfoVisible(bool)));
    connect(leaveAction, SIGNAL(triggered()), this, SLOT(leaveViewMode()));
    connect(&barsTimer, SIGNAL(timeout()), this, SLOT(hideWindowBars()));
    for (const QAction* const entry : f.menuBar->actions())
        connectMenu(entry->menu());

    connect(f.rainbow_generatePushButton, SIGNAL(clicked()), window, SLOT(setColorTableRainbow()));
    for (const QDoubleSpinBox* const box : f.rainbowRulesContentsWidget->findChildren<QDoubleSpinBox*>())
        connect(box, SIGNAL(valueChanged(double)), this, SLOT(updateRainbow()));

    for (std::size_t i = 0; i < infoItemCount; ++i)
        connect(infoSwitch(static_cast<InfoItem>(i)), SIGNAL(triggered()), this, SLOT(updateInfoSwitches()));
    connect(f.actionImage_Stats, SIGNAL(triggered()), this, SLOT(showInfoSwitches()));
    connect(f.actionSave_Image, SIGNAL(triggered()), window, SLOT(saveCurrentImage()));
    connect(f.actionCopy_Image, SIGNAL(triggered()), window, SLOT(copyCurrentImage()));
    connect(f.actionAbout_Vistrel, SIGNAL(triggered()), this, SLOT(showAboutVistrel()));
    connect(f.actionAbout_Qt, SIGNAL(triggered()), this, SLOT(showAboutQt()));
    connect(f.actionQt_LGPL_Licensing, SIGNAL(triggered()), this, SLOT(showLicensing()));
    connect(f.actionAbout_Application, SIGNAL(triggered()), this, SLOT(showApplicationAbout()));
    connect(f.actionCopy_Pixel_Value, SIGNAL(triggered()), window, SLOT(copyCurrentPixelValue()));
    connect(f.actionCopy_Image_Stats, SIGNAL(triggered()), window, SLOT(copyCurrentImageStats()));
    connect(&statisticsTimer, SIGNAL(timeout()), this, SLOT(updateImageStats()));
    connect(&statisticsTimer, SIGNAL(timeout()), this, SLOT(updateHint()));
    connect(&pixelTimer, SIGNAL(timeout()), this, SLOT(updatePixelValue()));
    f.statusBar->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(f.statusBar, SIGNAL(customContextMenuRequested(QPoint)), this, SLOT(showInfoSwitchesAt(QPoint)));
    scrollArea->surface()->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(scrollArea->surface(), SIGNAL(customContextMenuRequested(QPoint)), this,
            SLOT(showSurfaceContextMenu(QPoint)));

    connect(&commands, SIGNAL(shown()), this, SLOT(updateActionStates()));
    connect(&commands, SIGNAL(rested()), this, SLOT(updateAtRest()));
    connect(&saving, SIGNAL(stateChanged()), this, SLOT(updateActionStates()));
    connect(&commands, SIGNAL(completed(Vistrel::BusyWorkResult)), this,
            SIGNAL(busyWorkComplete(Vistrel::BusyWorkResult)));
    connect(this, SIGNAL(busyWorkComplete(Vistrel::BusyWorkResult)), this,
            SLOT(cleanupBusyWork(Vistrel::BusyWorkResult)));
    connect(scrollArea->surface(), SIGNAL(scalingChanged(bool, double)), this, SLOT(updateZoomStates()),
            Qt::QueuedConnection);
    connect(scrollArea->surface(), SIGNAL(pixelRangeChanged()), &pixelTimer, SLOT(start()));
    connect(scrollArea->surface(), SIGNAL(pixelOffsetChanged(QPointF)), &pixelTimer, SLOT(start()));
    connect(&stream, SIGNAL(imageUpdated()), this, SLOT(updateActionStates()), Qt::QueuedConnection);
    connect(&stream, SIGNAL(imageUpdated()), this, SLOT(updateImageInfo()), Qt::QueuedConnection);
    connect(&stream, SIGNAL(bitmapLockChanged(bool)), this, SLOT(updateBitmapLockedStates(bool)));
    if (!source)
        return;
    const AcquisitionSignalHandler* const handler = source->signalHandler();
    featuresAnnounced.follow(handler, &AcquisitionSignalHandler::featureSetChanged);
    stateAnnounced.follow(handler, &AcquisitionSignalHandler::acquisitionStateChanged);
}

// Bars over the image stay while a menu is open.
void WindowQt::PrivateData::connectMenu(const QMenu* menu)
{
    connect(menu, SIGNAL(aboutToShow()), this, SLOT(showWindowBars()));
    connect(menu, SIGNAL(aboutToHide()), &barsTimer, SLOT(start()));
}

WindowQt::WindowQt(ScopedAcquisitionInterface&& acquisitionInterface, QWidget* parent)
    : WindowQt(std::move(acquisitionInterface), ScopedFileInterface(), parent)
{
}

WindowQt::WindowQt(ScopedAcquisitionInterface&& acquisitionInterface, ScopedFileInterface&& fileInterface,
                   QWidget* parent)
    : QMainWindow(checkedParent(parent)),
      m_data(new PrivateData(this, std::move(acquisitionInterface), std::move(fileInterface)))
{
    m_data->makeEditors();
    m_data->connectActions();
    setColorTableGray();
    m_data->showRamps();
    setApplicationAbout(nullptr);
    setBayerDemosaicEnabled(m_data->form.actionDecode_Bayer_Images->isChecked());
    updateFeatureSet();
    m_data->updateZoomStates();
}

WindowQt::~WindowQt()
{
    Q_EMIT partsGoing();
}

AbstractAcquisitionInterface* WindowQt::acquisitionInterface()
{
    return m_data->source.get();
}

const AbstractAcquisitionInterface* WindowQt::acquisitionInterface() const
{
    return m_data->source.get();
}

AbstractFileInterface* WindowQt::fileInterface()
{
    return m_data->files.get();
}

const AbstractFileInterface* WindowQt::fileInterface() const
{
    return m_data->files.get();
}

SurfaceStream* WindowQt::surfaceStream()
{
    return &m_data->stream;
}

const SurfaceStream* WindowQt::surfaceStream() const
{
    return &m_data->stream;
}

SurfaceScrollArea* WindowQt::surfaceScrollArea()
{
    return m_data->scrollArea;
}

const SurfaceScrollArea* WindowQt::surfaceScrollArea() const
{
    return m_data->scrollArea;
}

QMenu* WindowQt::createPopupMenu()
{
    return nullptr;
}

void WindowQt::setRunning()
{
    m_data->commands.setRunning();
}

void WindowQt::setConfigured()
{
    m_data->commands.setConfigured();
}

void WindowQt::setUnconfigured()
{
    m_data->commands.setUnconfigured();
}

void WindowQt::saveCurrentImage()
{
    m_data->saving.save();
}

void WindowQt::copyCurrentImage()
{
    m_data->saving.copy();
    m_data->updateActionStates();
}

// Closing -------------------------------------------------------------------------------------------------------------

bool WindowQt::closeable() const
{
    return m_data->form.actionClose->isEnabled();
}

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
        hostCall("uxClosed", false, [this] { return m_data->source->uxClosed(), true; });
}

void WindowQt::PrivateData::endWork()
{
    statisticsTimer.stop();
    commands.end();
    stream.setRefreshEnabled(false);
    // What the source announces from now on leads to no call of it.
    stream.ignoreAnnouncements();
    featuresAnnounced.stop();
    stateAnnounced.stop();
    stream.disconnect(this);
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
