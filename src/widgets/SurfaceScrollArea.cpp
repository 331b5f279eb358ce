// SPDX-License-Identifier: MIT
// A surface with scroll bars, zoomed and moved by mouse and keys.
#include <Vistrel/SurfaceScrollArea.h>

#include "widgets/Navigator.h"
#include "widgets/RectangleZoom.h"
#include "widgets/SurfaceInput.h"

#include <Vistrel/Surface.h>

#include <QtCore/QPointer>
#include <QtCore/QSignalBlocker>
#include <QtGui/QPalette>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QShortcut>

#include <algorithm>
#include <climits>

namespace Vistrel {

class SurfaceScrollArea::PrivateData : public QObject
{
    Q_OBJECT

public:
    explicit PrivateData(SurfaceScrollArea* owner);

    void setRange(QScrollBar* bar, int imageLength, int viewLength, bool isScrollable);
    void setValues(const QPointF& offset);
    void layOutBars();

    SurfaceScrollArea* const area;
    QGridLayout* const layout;
    Surface* const surface;
    QScrollBar* const horizontal;
    QScrollBar* const vertical;
    Navigator navigator;
    // Destroyed before the surface, which sends a leave event when it is destroyed.
    RectangleZoom rectangle;
    ImageSurfaceEventFilter pointer;
    QPointer<QWidget> corner; // null when there is none or the host has deleted it

public Q_SLOTS:
    void updateScrollRange();
    void updateScrollPos(QPointF offset);
};

SurfaceScrollArea::PrivateData::PrivateData(SurfaceScrollArea* owner)
    : area(owner),
      layout(new QGridLayout(owner)),
      surface(new Surface(owner)),
      horizontal(new QScrollBar(Qt::Horizontal, owner)),
      vertical(new QScrollBar(Qt::Vertical, owner)),
      navigator(*owner, *surface, [this] { layOutBars(); }),
      rectangle(navigator, *surface),
      pointer(*owner, navigator, *surface)
{
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    // A single bar also takes the length of the hidden bar's cell.
    layout->setRowStretch(0, 1);
    layout->setColumnStretch(0, 1);
    layout->addWidget(surface, 0, 0);
    layout->addWidget(horizontal, 1, 0);
    layout->addWidget(vertical, 0, 1);
}

SurfaceScrollArea::SurfaceScrollArea(QWidget* parent) : QWidget(parent), m_data(new PrivateData(this))
{
    setFocusPolicy(Qt::ClickFocus); // a click on the image takes the focus from an editor
    Surface* const surface = m_data->surface;
    QPalette palette = this->palette();
    palette.setBrush(QPalette::Window, QBrush(Qt::darkGray, Qt::SolidPattern));
    surface->setPalette(palette);
    surface->setAutoFillBackground(true);
    surface->setAttribute(Qt::WA_OpaquePaintEvent); // the background is not filled under the image

    const std::pair<QKeySequence, const char*> shortcuts[] = {
        {Qt::Key_Left, SLOT(stepLeft())},
        {Qt::Key_Right, SLOT(stepRight())},
        {Qt::Key_Up, SLOT(stepUp())},
        {Qt::Key_Down, SLOT(stepDown())},
        {int(Qt::CTRL) | int(Qt::Key_Left), SLOT(pageLeft())},
        {int(Qt::CTRL) | int(Qt::Key_Right), SLOT(pageRight())},
        {int(Qt::CTRL) | int(Qt::Key_Up), SLOT(pageUp())},
        {int(Qt::CTRL) | int(Qt::Key_Down), SLOT(pageDown())},
        {Qt::Key_Backspace, SLOT(goBack())},
    };
    for (const auto& [keys, slot] : shortcuts) {
        auto* const shortcut = new QShortcut(keys, this);
        shortcut->setContext(Qt::WindowShortcut);
        connect(shortcut, SIGNAL(activated()), this, slot);
        shortcut->setAutoRepeat(QLatin1String(slot) != QLatin1String(SLOT(goBack())));
    }

    connect(surface, SIGNAL(pixelRangeChanged()), m_data.get(), SLOT(updateScrollRange()), Qt::QueuedConnection);
    connect(surface, SIGNAL(pixelOffsetChanged(QPointF)), m_data.get(), SLOT(updateScrollPos(QPointF)),
            Qt::QueuedConnection);
    connect(m_data->horizontal, SIGNAL(valueChanged(int)), surface, SLOT(setScaledOffsetX(int)));
    connect(m_data->vertical, SIGNAL(valueChanged(int)), surface, SLOT(setScaledOffsetY(int)));
    m_data->horizontal->hide();
    m_data->vertical->hide();
}

SurfaceScrollArea::~SurfaceScrollArea() = default;

Surface* SurfaceScrollArea::surface()
{
    return m_data->surface;
}

const Surface* SurfaceScrollArea::surface() const
{
    return m_data->surface;
}

QScrollBar* SurfaceScrollArea::horizontalScrollBar()
{
    return m_data->horizontal;
}

const QScrollBar* SurfaceScrollArea::horizontalScrollBar() const
{
    return m_data->horizontal;
}

QScrollBar* SurfaceScrollArea::verticalScrollBar()
{
    return m_data->vertical;
}

const QScrollBar* SurfaceScrollArea::verticalScrollBar() const
{
    return m_data->vertical;
}

QWidget* SurfaceScrollArea::cornerWidget()
{
    return m_data->corner;
}

const QWidget* SurfaceScrollArea::cornerWidget() const
{
    return m_data->corner;
}

void SurfaceScrollArea::setCornerWidget(QWidget* const widget)
{
    if (QWidget* const previous = m_data->corner) {
        m_data->layout->removeWidget(previous);
        if (previous->parent() == this && previous != widget)
            delete previous;
    }
    m_data->corner = widget;
    if (widget) {
        widget->setParent(this);
        m_data->layout->addWidget(widget, 1, 1);
    }
    m_data->updateScrollRange();
}

// Scroll bars ---------------------------------------------------------------------------------------------------------

void SurfaceScrollArea::PrivateData::setRange(QScrollBar* bar, int imageLength, int viewLength, bool isScrollable)
{
    const QSignalBlocker blocker(bar);
    bar->setRange(0, std::max(imageLength - viewLength, 0));
    bar->setVisible(isScrollable);
    bar->setEnabled(isScrollable);
    bar->setSingleStep(static_cast<int>(std::max(surface->scaling(), 1.0)));
    bar->setPageStep(viewLength);
}

// Decided by the area without bars, so that no bar is shown only because of the other.
void SurfaceScrollArea::PrivateData::updateScrollRange()
{
    const bool wasHorizontal = area->hBarScrollable();
    const bool wasVertical = area->vBarScrollable();
    const QSize scaled = surface->scaledSize().toSize();
    const bool canScroll = !surface->scaleToFit() && scaled.width() >= 1 && scaled.height() >= 1;
    const int barHeight = horizontal->sizeHint().height();
    const int barWidth = vertical->sizeHint().width();
    QSize view = area->contentsRect().size();
    bool isHorizontal = canScroll && scaled.width() > view.width();
    const bool isVertical = canScroll && scaled.height() > view.height() - (isHorizontal ? barHeight : 0);
    isHorizontal = canScroll && scaled.width() > view.width() - (isVertical ? barWidth : 0);
    view -= QSize(isVertical ? barWidth : 0, isHorizontal ? barHeight : 0);
    setRange(horizontal, scaled.width(), view.width(), isHorizontal);
    setRange(vertical, scaled.height(), view.height(), isVertical);

    if (corner && corner->parentWidget() == area) {
        const int side = std::min(barHeight, barWidth);
        corner->setFixedSize(side, side);
        corner->setVisible(isHorizontal || isVertical);
    }
    if (isHorizontal == wasHorizontal && isVertical == wasVertical)
        return;
    // The surface also takes the cell of a hidden bar.
    layout->removeWidget(surface);
    layout->addWidget(surface, 0, 0, isHorizontal ? 1 : 2, isVertical ? 1 : 2);
    Q_EMIT area->scrollabilityChanged(isHorizontal, isVertical);
}

void SurfaceScrollArea::PrivateData::layOutBars()
{
    const QPointer<PrivateData> alive(this); // a slot may delete the area
    updateScrollRange();
    if (alive)
        layout->activate();
}

// Does not notify the surface, which has the exact offset; the bars show whole pixels.
void SurfaceScrollArea::PrivateData::setValues(const QPointF& offset)
{
    const QSignalBlocker blockHorizontal(horizontal);
    const QSignalBlocker blockVertical(vertical);
    const auto whole = [](double value) { return static_cast<int>(std::min(value, double(INT_MAX))); };
    horizontal->setValue(whole(offset.x()));
    vertical->setValue(whole(offset.y()));
}

void SurfaceScrollArea::PrivateData::updateScrollPos(QPointF offset)
{
    updateScrollRange();
    setValues(offset);
}

QPoint SurfaceScrollArea::imageOffset() const
{
    return {m_data->horizontal->value(), m_data->vertical->value()};
}

bool SurfaceScrollArea::hBarScrollable() const
{
    return m_data->horizontal->isEnabled() && m_data->horizontal->isVisibleTo(this);
}

bool SurfaceScrollArea::vBarScrollable() const
{
    return m_data->vertical->isEnabled() && m_data->vertical->isVisibleTo(this);
}

void SurfaceScrollArea::setImageOffset(const QPointF& offset)
{
    SurfaceGeometry moved = m_data->surface->viewGeometry();
    moved.setOffset(offset);
    m_data->setValues(moved.storedOffset());
    m_data->surface->setScaledOffset(offset);
}

void SurfaceScrollArea::stepLeft()
{
    m_data->horizontal->triggerAction(QAbstractSlider::SliderSingleStepSub);
}

void SurfaceScrollArea::stepRight()
{
    m_data->horizontal->triggerAction(QAbstractSlider::SliderSingleStepAdd);
}

void SurfaceScrollArea::stepUp()
{
    m_data->vertical->triggerAction(QAbstractSlider::SliderSingleStepSub);
}

void SurfaceScrollArea::stepDown()
{
    m_data->vertical->triggerAction(QAbstractSlider::SliderSingleStepAdd);
}

void SurfaceScrollArea::pageLeft()
{
    m_data->horizontal->triggerAction(QAbstractSlider::SliderPageStepSub);
}

void SurfaceScrollArea::pageRight()
{
    m_data->horizontal->triggerAction(QAbstractSlider::SliderPageStepAdd);
}

void SurfaceScrollArea::pageUp()
{
    m_data->vertical->triggerAction(QAbstractSlider::SliderPageStepSub);
}

void SurfaceScrollArea::pageDown()
{
    m_data->vertical->triggerAction(QAbstractSlider::SliderPageStepAdd);
}

// Zoom ----------------------------------------------------------------------------------------------------------------

double SurfaceScrollArea::zoomScaling() const
{
    return m_data->surface->scaling();
}

bool SurfaceScrollArea::zoomToFit() const
{
    return m_data->surface->scaleToFit();
}

void SurfaceScrollArea::setZoomToFit(bool enabled)
{
    m_data->navigator.setFit(enabled);
}

void SurfaceScrollArea::setZoomTo(double scale, const QPoint& centerRef)
{
    m_data->navigator.zoomTo(scale, centerRef);
}

void SurfaceScrollArea::doZoomIn(const QPoint& centerRef)
{
    m_data->navigator.zoomIn(centerRef);
}

void SurfaceScrollArea::doZoomOut(const QPoint& centerRef)
{
    m_data->navigator.zoomOut(centerRef);
}

void SurfaceScrollArea::doZoomTo25()
{
    m_data->navigator.zoomTo(0.25, Navigator::viewCentre);
}

void SurfaceScrollArea::doZoomTo50()
{
    m_data->navigator.zoomTo(0.5, Navigator::viewCentre);
}

void SurfaceScrollArea::doZoomTo100()
{
    m_data->navigator.zoomTo(1.0, Navigator::viewCentre);
}

void SurfaceScrollArea::doZoomTo200()
{
    m_data->navigator.zoomTo(2.0, Navigator::viewCentre);
}

void SurfaceScrollArea::doZoomTo400()
{
    m_data->navigator.zoomTo(4.0, Navigator::viewCentre);
}

void SurfaceScrollArea::doZoomTo800()
{
    m_data->navigator.zoomTo(8.0, Navigator::viewCentre);
}

bool SurfaceScrollArea::canGoBack() const
{
    return m_data->navigator.canGoBack();
}

void SurfaceScrollArea::goBack()
{
    m_data->navigator.goBack();
}

Navigator& SurfaceScrollArea::navigator()
{
    return m_data->navigator;
}

void SurfaceScrollArea::doZoomToPixelValues(const QPoint& centerRef)
{
    const double scale = m_data->surface->pixelValuesScaling();
    if (scale > 0)
        setZoomTo(scale, centerRef);
}

} // namespace Vistrel

#include "SurfaceScrollArea.moc"
