// SPDX-License-Identifier: MIT
// Interpolates the missing colours of a mosaic.
#include "pipeline/pixels/Demosaic.h"

#include "pipeline/pixels/DemosaicKernels.h"

#include <algorithm>
#include <cstdint>

namespace Vistrel {

namespace {

constexpr std::size_t margin = 2; // sites that the interpolation reaches to each side

// Sites on which of the two rows and columns of the pattern are red.
struct RedSite
{
    std::size_t row;
    unsigned column;
};

RedSite redSite(Format format)
{
    switch (format & formatPatternMask) {
    case BayerGB:
        return {1, 0};
    case BayerGR:
        return {0, 1};
    case BayerRG:
        return {0, 0};
    default:
        return {1, 1};
    }
}

// Mirrored without repeating the edge, so that a site keeps its colour.
std::size_t mirrored(std::ptrdiff_t index, std::size_t size)
{
    const auto last = static_cast<std::ptrdiff_t>(size) - 1;
    if (index < 0)
        index = -index;
    return static_cast<std::size_t>(index > last ? 2 * last - index : index);
}

// Holds a range of columns of five neighbouring rows, with a margin on both sides.
class Strip
{
public:
    static constexpr std::size_t columns = 4096; // a multiple of 4

    Strip(const PixelFormat& format, const RawImage& raw, std::size_t column)
        : m_layout(*format.layout), m_raw(raw), m_column(column), m_count(std::min(columns, raw.width - column))
    {
    }

    std::size_t count() const { return m_count; }

    /// Columns -2 to `count()` + 1 of the rows around `row`. Asked for in increasing order.
    DemosaicKernels::Rows around(std::size_t row)
    {
        const std::size_t first = row < margin ? 0 : row - margin;
        const std::size_t last = std::min(row + margin, m_raw.height - 1);
        for (m_next = std::max(m_next, first); m_next <= last; ++m_next)
            load(m_next, m_lines[m_next % 5]);
        DemosaicKernels::Rows rows;
        rows.areNarrow = true;
        for (std::size_t i = 0; i < 5; ++i) {
            Line& line = m_lines[mirrored(static_cast<std::ptrdiff_t>(row + i) - 2, m_raw.height) % 5];
            rows.columns[0][i] = &line.site(0);
            rows.columns[1][i] = &line.site(1);
            rows.areNarrow = rows.areNarrow && line.isNarrow;
        }
        return rows;
    }

private:
    static constexpr std::size_t lead = 4; // columns before the first that are loaded: groups are not torn

    // Longer than a page. Ten of these arrays are read in parallel: a page apart, they would compete for the same cache
    // lines.
    static constexpr std::size_t apart = 208;
    static_assert(apart >= (lead + margin) / 2);

    struct Line
    {
        std::uint16_t& site(std::ptrdiff_t x) { return sites[x & 1][(static_cast<std::ptrdiff_t>(lead) + x) >> 1]; }

        std::uint16_t sites[2][columns / 2 + apart]; // of even columns, of odd columns
        bool isNarrow;
    };

    void load(std::size_t row, Line& line)
    {
        const std::size_t before = std::min(lead, m_column);
        const std::size_t end = std::min(m_count + margin, m_raw.width - m_column);
        const auto start = -static_cast<std::ptrdiff_t>(before);
        split(row, m_column - before, before + end, &line.site(start), &line.site(start + 1), line.isNarrow);

        const auto column = static_cast<std::ptrdiff_t>(m_column);
        const auto mirror = [&](std::ptrdiff_t x) {
            line.site(x) = line.site(static_cast<std::ptrdiff_t>(mirrored(column + x, m_raw.width)) - column);
        };
        for (std::ptrdiff_t x = -2; x < -column; ++x)
            mirror(x);
        for (std::size_t x = end; x < m_count + margin; ++x)
            mirror(static_cast<std::ptrdiff_t>(x));
    }

    // `column` is a multiple of 4.
    void split(std::size_t row, std::size_t column, std::size_t count, std::uint16_t* even, std::uint16_t* odd,
               bool& isNarrow) const
    {
        const std::uint8_t* const source = m_raw.data + row * m_raw.width * m_layout.bytesPerPixel;
        isNarrow = true;
        if (m_layout.bytesPerPixel == 1) {
            DemosaicKernels::splitBytes(source + column, even, odd, count);
        } else if (m_layout.hasSpareBits) {
            std::uint16_t sites[lead + columns + margin];
            m_layout.unpack(m_raw, row, column, count, sites);
            DemosaicKernels::splitWords(reinterpret_cast<const std::uint8_t*>(sites), even, odd, count);
        } else {
            isNarrow =
                DemosaicKernels::splitWords(source + 2 * column, even, odd, count) < DemosaicKernels::narrowSites;
        }
    }

    const PixelLayout& m_layout;
    const RawImage& m_raw;
    const std::size_t m_column;
    const std::size_t m_count;
    std::size_t m_next = 0; // row to be loaded next
    Line m_lines[5];        // row r in line r % 5
};

} // namespace

void interpolateRows(const PixelFormat& format, const RawImage& raw, const PictureTarget& target, std::size_t row,
                     std::size_t end)
{
    const RedSite red = redSite(format.code);
    const int shift = static_cast<int>(format.bits) - 8;
    for (std::size_t column = 0; column < raw.width; column += Strip::columns) {
        Strip strip(format, raw, column);
        for (std::size_t y = row; y < end; ++y) {
            const bool isRedRow = y % 2 == red.row;
            DemosaicKernels::interpolate(strip.around(y), target.bits + 4 * (y * raw.width + column), strip.count(),
                                         {isRedRow ? red.column : 1 - red.column, isRedRow, shift});
        }
    }
}

} // namespace Vistrel
