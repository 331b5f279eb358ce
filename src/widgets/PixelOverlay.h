// SPDX-License-Identifier: MIT
// The coordinates and values written into the cells of enlarged pixels.
#pragma once

#include <Vistrel/PixVal.h>

#include <QtCore/QRectF>
#include <QtCore/QSize>
#include <QtCore/QSizeF>
#include <QtGui/QFont>

#include <vector>

class QPaintDevice;
class QPainter;

namespace Vistrel {

class SurfaceGeometry;

/// Lays out and draws the labels. Bound to the user-interface thread.
class PixelOverlay
{
public:
    struct Cell
    {
        double x; // column
        double y; // row
        PixVal value;
    };

    PixelOverlay();

    /// Finds the largest font in which the labels of any pixel of such an image fit a cell at the largest zoom.
    /// `widest` is a value as wide as any, `device` what the labels are drawn on.
    void measure(const QPaintDevice* device, const QSize& imageSize, const PixVal& widest, double scaling);

    /// Whether the labels, as measured last, fit a cell at this zoom with an eighth to spare.
    bool fits(double scaling) const;

    void draw(QPainter& painter, const std::vector<Cell>& cells, const SurfaceGeometry& geometry) const;

private:
    QFont m_font;
    int m_basePointSize;
    // Logical pixels; zero before the first measurement, too large for any cell when the zoom is far from large enough.
    QSizeF m_position;
    QSizeF m_value;
    QSizeF m_box;
};

} // namespace Vistrel
