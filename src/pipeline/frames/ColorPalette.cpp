// SPDX-License-Identifier: MIT
// Shows grey levels in colours.
#include "pipeline/frames/ColorPalette.h"

#include "pipeline/pixels/ColorTables.h"

#include <algorithm>

namespace Vistrel {

ColorPalette::ColorPalette(const QVector<unsigned int>& colors) : entries(colors)
{
    const QVector<unsigned int> gray = grayRamp();
    const QVector<unsigned int>& table = colors.size() == 256 ? colors : gray;
    std::transform(table.begin(), table.end(), m_opaque.begin(), [](auto entry) { return entry | 0xFF000000u; });
    m_isGray = std::equal(m_opaque.begin(), m_opaque.end(), gray.begin());
}

void ColorPalette::lookUp(CopyPool& pool, const QImage& levels, PixelBuffer& shown) const
{
    const auto stores = Kernels::storesFor(shown.size());
    const auto width = static_cast<std::size_t>(levels.width());
    pool.runRows(static_cast<std::size_t>(levels.height()), 5 * width, [&](std::size_t row, std::size_t end) {
        auto* const target = reinterpret_cast<std::uint32_t*>(shown.data()) + row * width;
        Kernels::lookUp(levels.constScanLine(static_cast<int>(row)), target, (end - row) * width, m_opaque.data(),
                        stores);
    });
}

} // namespace Vistrel
