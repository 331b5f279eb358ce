// SPDX-License-Identifier: MIT
// Writes the coordinates and values of enlarged pixels into their cells.
#pragma once

#include "widgets/SurfaceLayer.h"

#include <Vistrel/PixVal.h>

#include <QtGui/QFont>

#include <vector>

namespace Vistrel {

class SharedPixelSource;

/// Draws the labels if they, as measured last, fit a cell that is an eighth larger.
class PixelOverlay : public SurfaceLayer
{
public:
    /// The source must outlive the layer.
    explicit PixelOverlay(SharedPixelSource& source);

    void paint(QPainter& painter, const QRegion& area, const SurfaceGeometry& geometry) override;

    bool valueOverlayEnabled = true;

private:
    struct Cell
    {
        double x; // column
        double y; // row
        PixVal value;
    };

    void measure(const QPaintDevice* device, const QSize& imageSize, const PixVal& widest, double scaling);
    bool fits(double scaling) const;
    void draw(QPainter& painter, const std::vector<Cell>& cells, const SurfaceGeometry& geometry) const;

    SharedPixelSource& m_source;
    QFont m_font;
    int m_basePointSize;
    // Logical pixels. Zero before the first measurement, and larger than any cell when the zoom is far too small.
    QSizeF m_position;
    QSizeF m_value;
    QSizeF m_box;
};

} // namespace Vistrel
