// SPDX-License-Identifier: MIT
// Shows grey levels in colours.
#pragma once

#include "pipeline/frames/CopyPool.h"
#include "pipeline/frames/PixelBlocks.h"
#include "pipeline/frames/Stages.h"

#include <QtCore/QVector>
#include <QtGui/QImage>

#include <array>

namespace Vistrel {

class ColorPalette final : public Stage
{
public:
    static constexpr Place place = Palette;

    /// Shows grey for any other number than 256 entries.
    explicit ColorPalette(const QVector<unsigned int>& colors = {});

    /// Whether the palette is the grey ramp.
    bool isGray() const { return m_isGray; }
    /// Writes the colours of an image of 8-bit levels, 32 opaque bits a pixel, to a block of that size.
    void lookUp(CopyPool& pool, const QImage& levels, PixelBuffer& shown) const;

    const QVector<unsigned int> entries; // as they were given

private:
    std::array<std::uint32_t, 256> m_opaque;
    bool m_isGray;
};

} // namespace Vistrel
