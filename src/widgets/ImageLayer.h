// SPDX-License-Identifier: MIT
// Draws the part of a picture that is in view, and what is seen beside it.
#pragma once

#include "widgets/PictureSampler.h"
#include "widgets/SurfaceLayer.h"

#include <QtGui/QBrush>
#include <QtGui/QPixmap>

namespace Vistrel {

class ImageLayer : public SurfaceLayer
{
public:
    /// Sets what the next painting draws: a picture of the geometry's image size, and the background that it leaves to
    /// be seen, `Qt::NoBrush` for none. The painting lets the picture go.
    void setPicture(const QPixmap& picture, const QBrush& background);
    void paint(QPainter& painter, const QRegion& area, const SurfaceGeometry& geometry) override;

private:
    QPixmap m_picture;
    QBrush m_background;
    PictureSampler m_sampler;
};

} // namespace Vistrel
