// SPDX-License-Identifier: MIT
// What the main window says about its image and source: the information bar, its switches, and copies as text.
#include "window/controllers/Information.h"

#include "window/Form.h"
#include "window/InfoBar.h"
#include "window/controllers/Commands.h"
#include "window/controllers/ViewModes.h"

#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>
#include <Vistrel/SurfaceStream.h>

#include <QtCore/QEvent>
#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>

namespace Vistrel {

namespace {

constexpr int messageMs = 2000;
constexpr int statisticsMs = 250;

} // namespace

Information::Information(const Form& form, SurfaceStream* stream, const AbstractAcquisitionInterface* source,
                         const Commands& commands, ViewModes* viewModes)
    : m_form(form), m_stream(stream), m_commands(commands), m_viewModes(viewModes), m_bar(new InfoBar(form.statusBar))
{
    m_state.source = source;
    form.statusBar->addPermanentWidget(m_bar);
    m_statisticsTimer.setInterval(statisticsMs);
    m_statisticsTimer.start();
    m_pixelTimer.setSingleShot(true);
    for (std::size_t i = 0; i < infoItemCount; ++i)
        connect(switchOf(InfoItem(i)), SIGNAL(triggered()), this, SLOT(updateSwitches()));
    connect(form.actionImage_Stats, SIGNAL(triggered()), this, SLOT(showSwitches()));
    connect(form.statusBar, SIGNAL(customContextMenuRequested(QPoint)), this, SLOT(showSwitchesAt(QPoint)));
    connect(&m_statisticsTimer, SIGNAL(timeout()), this, SLOT(updateImageStats()));
    connect(&m_statisticsTimer, SIGNAL(timeout()), this, SIGNAL(ticked()));
    connect(&m_pixelTimer, SIGNAL(timeout()), this, SLOT(updatePixelValue()));
    connect(stream, SIGNAL(imageUpdated()), this, SLOT(updateImage()), Qt::QueuedConnection);
    Surface* const surface = form.scrollArea->surface();
    surface->installEventFilter(this);
    connect(surface, SIGNAL(scalingChanged(bool, double)), this, SLOT(updateZoomStates()), Qt::QueuedConnection);
    connect(surface, SIGNAL(pixelRangeChanged()), &m_pixelTimer, SLOT(start()));
    connect(surface, SIGNAL(pixelOffsetChanged(QPointF)), &m_pixelTimer, SLOT(start()));
}

QAction* Information::switchOf(InfoItem item) const
{
    return m_form.*infoRow(item).action;
}

bool Information::isSwitchedOn(InfoItem item) const
{
    return switchOf(item)->isChecked();
}

void Information::setSwitchedOn(InfoItem item, bool isOn)
{
    switchOf(item)->setChecked(isOn);
    updateSwitches();
}

void Information::updateSwitches()
{
    for (std::size_t i = 0; i < infoItemCount; ++i) {
        const QAction* const action = switchOf(InfoItem(i));
        m_bar->setItemShown(InfoItem(i), action->isChecked() && action->isVisible());
    }
}

void Information::addUserAction(QAction* action)
{
    m_bar->addUserAction(action);
}

void Information::end()
{
    m_statisticsTimer.stop();
}

// Values --------------------------------------------------------------------------------------------------------------

void Information::show(InfoMoment moment)
{
    for (std::size_t i = 0; i < infoItemCount; ++i) {
        const InfoRow& row = infoRow(InfoItem(i));
        if (row.moment != moment)
            continue;
        const bool isOffered = !row.has || (m_state.source && (m_state.source->*row.has)());
        m_bar->setValue(InfoItem(i), isOffered ? row.value(m_state) : QString());
    }
}

void Information::setSetupMode(const QByteArray& name)
{
    m_state.setupMode = name;
    show(InfoMoment::Mode);
}

void Information::updateImageStats()
{
    if (m_commands.isAskable())
        show(InfoMoment::Statistics);
}

void Information::updateZoomStates()
{
    m_form.actionZoom_Fit->setChecked(m_form.scrollArea->zoomToFit());
    m_state.scaling = m_form.scrollArea->zoomScaling();
    show(InfoMoment::Zoom);
}

void Information::updateImage()
{
    RawImage image;
    m_stream->latestImage(&image, nullptr);
    const RawImage& old = m_state.image;
    if (!image.data != !old.data || image.width != old.width || image.height != old.height ||
        image.format != old.format) {
        m_state.image = image;
        show(InfoMoment::Image);
        m_bar->makeRoom(InfoItem::PixelValue, widestPixelText(image));
    }
    updatePixelValue();
}

void Information::updatePixelValue()
{
    Surface* const surface = m_form.scrollArea->surface();
    const QPoint pixel = surface->activePixel();
    PixVal value;
    const bool isInside = QRect({}, surface->pixmap().size()).contains(pixel);
    // The source is asked for a lock only when there is a pixel to read. Within a command's grace the last value stays.
    if (isInside && !m_commands.isAskable() && !m_commands.isShown())
        return;
    const bool isRead = isInside && surface->imageSrcPixVal({pixel.x(), pixel.y()}, value);
    m_state.pixel = isInside ? PixPos{pixel.x(), pixel.y()} : PixPos{-1, -1};
    m_state.value = isRead ? std::optional<PixVal>(value) : std::nullopt;
    show(InfoMoment::Pixel);
}

bool Information::eventFilter(QObject*, QEvent* event)
{
    if (event->type() == QEvent::MouseMove || event->type() == QEvent::Enter || event->type() == QEvent::Leave)
        m_pixelTimer.start(0);
    return false;
}

// Menus and copies ----------------------------------------------------------------------------------------------------

// Above the information bar, also when the bar lies over the image.
void Information::showSwitches()
{
    m_viewModes->showWindowBars();
    QMenu* const menu = makeMenu();
    const QSize size = menu->sizeHint();
    menu->popup(m_bar->mapToGlobal(QPoint(m_bar->width() - size.width(), -size.height())));
}

void Information::showSwitchesAt(const QPoint& position)
{
    makeMenu()->popup(m_form.statusBar->mapToGlobal(position));
}

QMenu* Information::makeMenu()
{
    auto* const menu = new QMenu(m_form.window);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    m_viewModes->followMenu(menu);
    for (std::size_t i = 0; i < infoItemCount; ++i)
        menu->addAction(switchOf(InfoItem(i)));
    menu->addSeparator();
    menu->addActions({m_form.actionKeep_Stats_Visible, m_form.actionCopy_Image_Stats});
    return menu;
}

void Information::copyPixelValue() const
{
    const QPoint pixel = m_form.scrollArea->surface()->activePixel();
    PixVal value;
    if (m_form.scrollArea->surface()->imageSrcPixVal({pixel.x(), pixel.y()}, value))
        QGuiApplication::clipboard()->setText(pixelText({pixel.x(), pixel.y()}, value));
    else
        m_form.statusBar->showMessage(tr("No image pixel under the pointer"), messageMs);
}

void Information::copyReport()
{
    updateImageStats();
    updateImage();
    QGuiApplication::clipboard()->setText(m_bar->report());
}

} // namespace Vistrel
