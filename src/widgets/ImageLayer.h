// SPDX-License-Identifier: MIT
// Draws the visible part of a picture and the background around it.
#pragma once

#include "widgets/PictureSampler.h"
#include "widgets/PictureShrinker.h"
#include "widgets/SurfaceLayer.h"

#include <Vistrel/ShrinkMode.h>

#include <QtGui/QBrush>
#include <QtGui/QPixmap>

namespace Vistrel {

class ImageLayer : public SurfaceLayer
{
public:
    /// Sets what the next call of `paint` draws: a picture of the geometry's image size, and the background around it,
    /// `Qt::NoBrush` for none. Where the picture is shrunk, the indices are, unless they are null. That call releases
    /// both.
    void setPicture(const QPixmap& picture, const QImage& indices, const QBrush& background);
    void paint(QPainter& painter, const QRegion& area, const SurfaceGeometry& geometry) override;

    ShrinkMode shrinkMode = ShrinkMode::Sample;

private:
    QPixmap m_picture;
    QImage m_indices;
    QBrush m_background;
    PictureSampler m_sampler;
    PictureShrinker m_shrinker;
};

} // namespace Vistrel
