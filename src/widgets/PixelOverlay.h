// SPDX-License-Identifier: MIT
// Writes the coordinates and values of enlarged pixels into their cells.
#pragma once

#include "widgets/PixelLabels.h"
#include "widgets/SurfaceLayer.h"

#include <QtGui/QImage>
#include <QtGui/QPixmap>

#include <vector>

namespace Vistrel {

class SharedPixelSource;
struct PixelSource;

class PixelOverlay : public SurfaceLayer
{
public:
    /// The source must outlive the layer.
    explicit PixelOverlay(SharedPixelSource& source);

    /// Sets what is in view when the layer is painted next. It has the geometry's image size.
    void setPicture(const QPixmap& picture) { m_picture = picture; }
    void paint(QPainter& painter, const QRegion& area, const SurfaceGeometry& geometry) override;

    /// The smallest scaling at which values are shown on the device, in cells of a whole number of the geometry's
    /// device pixels. It may be larger than any zoom. 0 when there are no values to show.
    double smallestScaling(const QPaintDevice& device, const SurfaceGeometry& geometry);

    PixelValues pixelValues = PixelValues::WithPosition;

private:
    bool measure(const PixelSource& source, const QPaintDevice& device, const SurfaceGeometry& geometry);
    bool read(const PixelSource& source, const QRect& pixels);
    void draw(QPainter& painter, const SurfaceGeometry& geometry, const QRect& pixels, const QImage& picture);

    SharedPixelSource& m_source;
    QPixmap m_picture; // null except from `setPicture` to `paint`
    PixelLabels m_labels;
    // Kept for their memory.
    std::vector<PixVal> m_values; // row after row
    QImage m_strip;               // of the labels in a row of cells
};

} // namespace Vistrel
