// SPDX-License-Identifier: MIT
// Zooms and moves the view of a scroll area, and goes back to where it was.
#pragma once

#include "widgets/SurfaceGeometry.h"
#include "widgets/ViewHistory.h"

#include <functional>
#include <optional>

namespace Vistrel {

class Surface;
class SurfaceScrollArea;

/// Points are in the surface's coordinates. Without an image nothing moves. A slot of the surface's signals may zoom
/// again, which takes the place of the zoom under way, or delete the area; but not of those that are emitted while Qt
/// resizes the surface, which scroll bars that come and go do as well.
class Navigator
{
public:
    using Move = ViewHistory::Move;
    /// As the reference of a zoom: like any point outside the view, it means its centre.
    static constexpr QPointF viewCentre{-1, -1};

    /// `layOutBars` shows the scroll bars that the surface's zoom asks for, and resizes the surface.
    Navigator(SurfaceScrollArea& area, Surface& surface, std::function<void()> layOutBars);

    /// Keeps the image point under `reference`, but for changes that are no zoom.
    void zoomTo(double scaling, const QPointF& reference, Move move = Move::Jump);
    void zoomIn(const QPointF& reference);
    void zoomOut(const QPointF& reference);
    /// Zooms by any factor, and moves the image point under `from` to `to`.
    void pinch(double factor, const QPointF& from, const QPointF& to);
    /// Lets a part of the view fill it.
    void showPart(const QRectF& part);
    void setFit(bool enabled);
    /// Moves an image point to the view's centre.
    void centreOn(const QPointF& imagePoint, bool isJump);

    bool canGoBack() const { return !m_history.isEmpty(); }
    void goBack();

private:
    ViewPlace place() const;
    void record(Move move, const std::function<void()>& operation);
    bool show(double scaling, const QPointF& imagePoint, const std::optional<QPointF>& position);

    SurfaceScrollArea& m_area;
    Surface& m_surface;
    const std::function<void()> m_layOutBars;
    ViewHistory m_history;
    bool m_isRecording = false;
    unsigned m_showCount = 0;
};

} // namespace Vistrel
