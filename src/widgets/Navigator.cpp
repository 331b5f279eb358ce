// SPDX-License-Identifier: MIT
// Zooms and moves the view of a scroll area, and goes back to where it was.
#include "widgets/Navigator.h"

#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>

#include <QtCore/QPointer>

#include <algorithm>
#include <cmath>
#include <utility>

namespace Vistrel {

Navigator::Navigator(SurfaceScrollArea& area, Surface& surface, std::function<void()> layOutBars)
    : m_area(area), m_surface(surface), m_layOutBars(std::move(layOutBars))
{
}

ViewPlace Navigator::place() const
{
    const SurfaceGeometry geometry = m_surface.viewGeometry();
    return {geometry.scaleToFit(), geometry.scaling(), geometry.keptCentre()};
}

// Remembers the place before the outermost operation.
void Navigator::record(Move move, const std::function<void()>& operation)
{
    if (m_isRecording)
        return operation();
    const QPointer<SurfaceScrollArea> alive(&m_area);
    const ViewPlace before = place();
    m_isRecording = true;
    operation();
    if (!alive)
        return;
    m_isRecording = false;
    if (!before.isSame(place()))
        m_history.add(before, move);
}

// Sets the zoom, and places the image point at a position, or in the view's centre. Returns false when a slot has
// zoomed again or deleted the area.
bool Navigator::show(double scaling, const QPointF& imagePoint, const std::optional<QPointF>& position)
{
    const QPointer<SurfaceScrollArea> alive(&m_area);
    const unsigned mine = ++m_showCount;
    const auto isMine = [&] { return alive && mine == m_showCount; };
    m_surface.setScaling(scaling);
    // Bars that are shown or hidden resize the view, which moves the image.
    if (isMine())
        m_layOutBars();
    if (!isMine())
        return false;
    const SurfaceGeometry geometry = m_surface.viewGeometry();
    m_area.setImageOffset(geometry.offsetPlacing(imagePoint, position.value_or(geometry.viewCentre())));
    return isMine();
}

void Navigator::zoomTo(double scaling, const QPointF& reference, Move move)
{
    const SurfaceGeometry before = m_surface.viewGeometry();
    SurfaceGeometry after = before;
    after.setScaling(scaling);
    if (before.imageSize().isEmpty() || std::isnan(scaling))
        return;
    record(move, [&] {
        const bool isInView = QRectF(QPointF(0, 0), QSizeF(before.viewSize())).contains(reference);
        if (!SurfaceGeometry::isZoom(before.scaling(), after.scaling()))
            m_surface.setScaling(scaling);
        else if (isInView)
            show(scaling, before.imagePoint(reference), reference);
        else
            show(scaling, before.imagePoint(before.viewCentre()), std::nullopt);
    });
}

void Navigator::zoomIn(const QPointF& reference)
{
    zoomTo(m_surface.scaling() * SurfaceGeometry::scalingRatio(), reference, Move::Step);
}

void Navigator::zoomOut(const QPointF& reference)
{
    zoomTo(m_surface.scaling() / SurfaceGeometry::scalingRatio(), reference, Move::Step);
}

void Navigator::pinch(double factor, const QPointF& from, const QPointF& to)
{
    const SurfaceGeometry before = m_surface.viewGeometry();
    const double scaling = before.scaling() * factor;
    if (before.imageSize().isEmpty() || !(factor > 0) || !std::isfinite(scaling))
        return;
    record(Move::Step, [&] { show(scaling, before.imagePoint(from), to); });
}

void Navigator::showPart(const QRectF& part)
{
    const SurfaceGeometry before = m_surface.viewGeometry();
    const QRectF shown = part & before.shownRect();
    if (shown.isEmpty())
        return;
    record(Move::Jump, [&] {
        // A second time in the view that the scroll bars of the first leave.
        const auto fillView = [&] {
            const QSizeF view = m_surface.size();
            const double enlarged = std::min(view.width() / shown.width(), view.height() / shown.height());
            return show(before.scaling() * enlarged, before.imagePoint(shown.center()), std::nullopt);
        };
        if (fillView())
            fillView();
    });
}

void Navigator::setFit(bool enabled)
{
    if (m_surface.viewGeometry().imageSize().isEmpty())
        m_surface.setScaleToFit(enabled);
    else
        record(Move::Jump, [=] { m_surface.setScaleToFit(enabled); });
}

void Navigator::centreOn(const QPointF& imagePoint, bool isJump)
{
    const SurfaceGeometry geometry = m_surface.viewGeometry();
    if (geometry.imageSize().isEmpty())
        return;
    const auto move = [&] { m_area.setImageOffset(geometry.offsetPlacing(imagePoint, geometry.viewCentre())); };
    if (isJump)
        record(Move::Jump, move);
    else
        move();
}

void Navigator::goBack()
{
    if (!canGoBack() || m_surface.viewGeometry().imageSize().isEmpty())
        return;
    const ViewPlace before = place();
    ViewPlace target = m_history.take();
    while (target.isSame(before) && canGoBack())
        target = m_history.take();
    const QPointer<SurfaceScrollArea> alive(&m_area);
    m_isRecording = true;
    if (target.isFit)
        m_surface.setScaleToFit(true);
    else
        show(target.scaling, target.centre, std::nullopt);
    if (alive)
        m_isRecording = false;
}

} // namespace Vistrel
