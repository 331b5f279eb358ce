// SPDX-License-Identifier: MIT
// The main window that shows a source's live images and drives the source.
#include "window/WindowQt_p.h"

#include "base/HostCall.h"
#include "platform/CloseButton.h"
#include "window/ActionIcons.h"
#include "window/SourceKeeper.h"
#include "window/panels/Panels.h"

#include <Vistrel/AbstractFileInterface.h>
#include <Vistrel/AcquisitionSignalHandler.h>
#include <Vistrel/Surface.h>

#include <QtCore/QRegularExpression>
#include <QtCore/QThread>
#include <QtGui/QCloseEvent>
#include <QtGui/QScreen>
#include <QtWidgets/QApplication>

#include <stdexcept>

namespace Vistrel {

namespace {

// Shared with saving, which may outlive the window.
std::shared_ptr<AbstractFileInterface> keepFiles(ScopedFileInterface&& given)
{
    const auto owner = std::make_shared<ScopedFileInterface>(std::move(given));
    return {owner, owner->get()};
}

// Refuses what would make Qt end the process.
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
      form(owner),
      source(keepSource(std::move(acquisitionInterface))),
      files(keepFiles(std::move(fileInterface))),
      stream(form.scrollArea->surface(), source),
      commands(form, &stream, source),
      viewModes(form),
      analysis(form),
      palettes(form, &stream),
      information(form, &stream, source.get(), commands, &viewModes),
      saving(form, commands, &stream, source, files),
      userActions(form, &viewModes),
      features(form, source, &commands, userActions),
      states(form, source.get(), &stream, &commands, features, saving, &palettes, &information),
      aboutBoxes(form)
{
    makePanels({form, &stream, source.get(), &commands, &features, &palettes, &viewModes});
    form.scrollArea->surface()->setAccessibleName(tr("Live Image"));
    // Shortcuts work while the bars are hidden, too.
    window->addActions(window->findChildren<QAction*>(QRegularExpression(QStringLiteral("^action"))));
    connectActions();
    connectParts();
}

void WindowQt::PrivateData::connectActions()
{
    const auto& f = form;
    const std::pair<QAction*, const char*> zooms[] = {
        {f.actionZoom_In, SLOT(doZoomIn())},     {f.actionZoom_Out, SLOT(doZoomOut())},
        {f.actionZoom_25, SLOT(doZoomTo25())},   {f.actionZoom_50, SLOT(doZoomTo50())},
        {f.actionZoom_100, SLOT(doZoomTo100())}, {f.actionZoom_200, SLOT(doZoomTo200())},
        {f.actionZoom_400, SLOT(doZoomTo400())}, {f.actionZoom_800, SLOT(doZoomTo800())},
    };
    for (const auto& [action, slot] : zooms)
        connect(action, SIGNAL(triggered()), f.scrollArea, slot);
    connect(f.actionZoom_Fit, SIGNAL(triggered(bool)), f.scrollArea, SLOT(setZoomToFit(bool)));

    const std::pair<QAction*, const char*> choices[] = {
        {f.actionClose, SLOT(close())},
        {f.actionSave_Image, SLOT(saveCurrentImage())},
        {f.actionCopy_Image, SLOT(copyCurrentImage())},
        {f.actionCopy_Pixel_Value, SLOT(copyCurrentPixelValue())},
        {f.actionCopy_Image_Stats, SLOT(copyCurrentImageStats())},
        {f.actionFull_Screen, SLOT(toggleFullScreen())},
        {f.actionExhibit_View, SLOT(toggleExhibitView())},
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
    connect(&commands, SIGNAL(rested()), this, SLOT(updateAtRest()));
    connect(&features, SIGNAL(updated()), &information, SLOT(updateSwitches()));
    connect(&features, SIGNAL(updated()), &information, SLOT(updateImageStats()));
    Surface* const surface = form.scrollArea->surface();
    surface->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(surface, SIGNAL(customContextMenuRequested(QPoint)), this, SLOT(showSurfaceContextMenu(QPoint)));
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
        states.updateActionStates();
    information.updatePixelValue();
}

// Offers the actions for the image and for the clicked pixel.
void WindowQt::PrivateData::showSurfaceContextMenu(const QPoint& position)
{
    auto* const menu = new QMenu(window);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    information.updatePixelValue();
    menu->addActions({form.actionCopy_Pixel_Value, form.actionCopy_Image, form.actionSave_Image});
    menu->addSeparator();
    menu->addActions({form.actionZoom_In, form.actionZoom_Out, form.actionZoom_Fit, form.actionZoom_100});
    analysis.addZoomTo(menu, position);
    QAction* const back = menu->addAction(tr("Previous View"), form.scrollArea, SLOT(goBack()));
    back->setShortcut(Qt::Key_Backspace); // which is the area's
    back->setEnabled(form.scrollArea->canGoBack());
    menu->addSeparator();
    menu->addMenu(form.menuColor_Palette);
    menu->addAction(form.actionPixel_Crosshair_Visible);
    menu->addSeparator();
    menu->addActions({form.actionExhibit_View, form.actionFull_Screen});
    menu->popup(form.scrollArea->surface()->mapToGlobal(position));
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
    showIcons(*this);
    setColorTableGray();
    m_data->palettes.showRamps();
    setBayerDemosaicEnabled(m_data->form.actionDecode_Bayer_Images->isChecked());
    updateFeatureSet();
    m_data->information.updateZoomStates();
    // Leaves room for the frame on a small screen. Qt places a window at the screen's centre only if it is smaller than
    // eight ninths of the available area.
    resize(size().boundedTo(screen()->availableSize() * 7 / 8));
}

WindowQt::~WindowQt()
{
    Q_EMIT partsGoing();
}

// The system, too, may leave full screen or change the colours.
void WindowQt::changeEvent(QEvent* event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        showIcons(*this);
        m_data->palettes.showRamps();
    }
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
        hide(); // the command may block what follows
    if (m_data->source)
        hostCall("uxClosed", [this] { m_data->source->uxClosed(); });
}

void WindowQt::PrivateData::endWork()
{
    information.end();
    commands.end();
    stream.setRefreshEnabled(false);
    // The source is not called for what it announces from now on.
    stream.ignoreAnnouncements();
    featuresAnnounced.stop();
    stateAnnounced.stop();
    stream.disconnect(&information);
    stream.disconnect(&palettes);
    stream.disconnect(&states);
}

// A host may delete its window in a function that this window has called. Then the window is deleted after that
// function has returned.
void WindowQt::discard()
{
    if (!isInHostCall()) {
        delete this;
        return;
    }
    Q_EMIT partsGoing();
    m_data->endWork();
    if (isVisible())
        close(); // only closing counts as the last window's end
    hide();
    deleteLater();
}

} // namespace Vistrel
