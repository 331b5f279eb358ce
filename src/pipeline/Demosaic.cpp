// SPDX-License-Identifier: MIT
// Interpolates the missing colours of a mosaic.
#include "pipeline/Demosaic.h"

#include "pipeline/PackedIterators.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <vector>

namespace Vistrel {

namespace {

constexpr int margin = 2; // sites that the interpolation reaches to each side

// Sites on which of the two rows and columns of the pattern are red.
struct RedSite
{
    std::size_t row;
    std::size_t column;
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

// Five rows of sites around the one that is interpolated, each with a margin on both sides.
template <typename Site>
class Window
{
public:
    explicit Window(std::size_t width) : m_width(width), m_stride(width + 2 * margin), m_sites(5 * m_stride) {}

    template <typename Load>
    void fill(std::size_t row, std::size_t height, Load&& load)
    {
        for (std::ptrdiff_t i = -margin; i <= margin; ++i) {
            Site* const sites = line(i);
            load(mirrored(static_cast<std::ptrdiff_t>(row) + i, height), sites);
            for (std::ptrdiff_t x = 1; x <= margin; ++x) {
                sites[-x] = sites[x];
                sites[static_cast<std::ptrdiff_t>(m_width) - 1 + x] =
                    sites[static_cast<std::ptrdiff_t>(m_width) - 1 - x];
            }
        }
    }

    // Row `offset` from the middle one; columns -2 to width + 1 may be read.
    Site* line(std::ptrdiff_t offset)
    {
        return m_sites.data() + static_cast<std::size_t>(offset + margin) * m_stride + margin;
    }

private:
    std::size_t m_width;
    std::size_t m_stride;
    std::vector<Site> m_sites;
};

// Sixteenths of a level. Sum is wide enough for the sums of sixteen sites' values and back.
template <typename Sum>
struct Estimates
{
    Sum own;        // the site's own colour
    Sum green;      // at a red or blue site
    Sum opposite;   // blue at a red site, red at a blue one
    Sum horizontal; // at a green site: the colour of the neighbours left and right
    Sum vertical;   // at a green site: the colour of the neighbours above and below
};

template <typename Sum, typename Site>
inline Estimates<Sum> estimate(const Site* const* rows, std::ptrdiff_t x)
{
    const Site *const n2 = rows[0] + x, *const n = rows[1] + x, *const c = rows[2] + x, *const s = rows[3] + x,
                      *const s2 = rows[4] + x;
    const auto centre = static_cast<Sum>(c[0]);
    const auto beside = static_cast<Sum>(static_cast<Sum>(c[-1]) + static_cast<Sum>(c[1]));
    const auto above = static_cast<Sum>(static_cast<Sum>(n[0]) + static_cast<Sum>(s[0]));
    const auto diagonal = static_cast<Sum>(static_cast<Sum>(n[-1]) + static_cast<Sum>(n[1]) + static_cast<Sum>(s[-1]) +
                                           static_cast<Sum>(s[1]));
    const auto farBeside = static_cast<Sum>(static_cast<Sum>(c[-2]) + static_cast<Sum>(c[2]));
    const auto farAbove = static_cast<Sum>(static_cast<Sum>(n2[0]) + static_cast<Sum>(s2[0]));
    const auto farAll = static_cast<Sum>(farBeside + farAbove);
    return {static_cast<Sum>(16 * centre), static_cast<Sum>(8 * centre + 4 * (beside + above) - 2 * farAll),
            static_cast<Sum>(12 * centre + 4 * diagonal - 3 * farAll),
            static_cast<Sum>(10 * centre + 8 * beside - 2 * diagonal - 2 * farBeside + farAbove),
            static_cast<Sum>(10 * centre + 8 * above - 2 * diagonal - 2 * farAbove + farBeside)};
}

template <typename Sum>
inline std::uint8_t level(Sum sixteenths, int shift)
{
    const int value = ((sixteenths + 8) >> 4) >> shift;
    return static_cast<std::uint8_t>(std::clamp(value, 0, 255));
}

// One row: red or blue sites lie on the columns of parity `colored`, and are red when `isRedRow`.
template <typename Sum, typename Site>
void interpolateRow(Window<Site>& window, std::size_t width, std::size_t colored, bool isRedRow, int shift,
                    std::uint8_t* target)
{
    const Site* const rows[5] = {window.line(-2), window.line(-1), window.line(0), window.line(1), window.line(2)};
    const std::size_t rowColor = isRedRow ? 0 : 2; // byte of the row's own colour
    const std::size_t otherColor = 2 - rowColor;
    const auto coloredSite = [&](std::size_t x) {
        const Estimates<Sum> sites = estimate<Sum>(rows, static_cast<std::ptrdiff_t>(x));
        target[4 * x + rowColor] = level(sites.own, shift);
        target[4 * x + 1] = level(sites.green, shift);
        target[4 * x + otherColor] = level(sites.opposite, shift);
        target[4 * x + 3] = 0xFF;
    };
    const auto greenSite = [&](std::size_t x) {
        const Estimates<Sum> sites = estimate<Sum>(rows, static_cast<std::ptrdiff_t>(x));
        target[4 * x + rowColor] = level(sites.horizontal, shift);
        target[4 * x + 1] = level(sites.own, shift);
        target[4 * x + otherColor] = level(sites.vertical, shift);
        target[4 * x + 3] = 0xFF;
    };
    for (std::size_t x = colored; x < width; x += 2)
        coloredSite(x);
    for (std::size_t x = 1 - colored; x < width; x += 2)
        greenSite(x);
}

template <typename Sum, typename Site, typename Load>
void interpolate(CopyPool& pool, QImage& target, const RawImage& raw, Load&& load)
{
    const RedSite red = redSite(raw.format);
    const int shift = static_cast<int>(formatDepth(raw.format)) - 8;
    std::uint8_t* const bits = target.bits();
    const auto stride = static_cast<std::size_t>(target.bytesPerLine());
    std::atomic<std::size_t> nextRow{0};
    pool.run([&](std::size_t, std::size_t) {
        Window<Site> window(raw.width);
        for (std::size_t row = nextRow.fetch_add(1); row < raw.height; row = nextRow.fetch_add(1)) {
            window.fill(row, raw.height, load);
            const bool isRedRow = row % 2 == red.row;
            const std::size_t colored = isRedRow ? red.column : 1 - red.column;
            interpolateRow<Sum>(window, raw.width, colored, isRedRow, shift, bits + row * stride);
        }
    });
}

template <std::uint32_t swap>
void interpolatePacked(CopyPool& pool, QImage& target, const RawImage& raw)
{
    interpolate<int, std::uint16_t>(pool, target, raw, [&raw](std::size_t row, std::uint16_t* sites) {
        Gray10PackedIterator<swap> source(raw.data + row * raw.width * 2, packedFrameEnd(raw));
        for (std::size_t x = 0; x < raw.width; ++x, ++source)
            sites[x] = source.fullDepth();
    });
}

} // namespace

bool demosaic(CopyPool& pool, QImage& target, const RawImage& raw)
{
    const bool isMosaic = isMonochrome(raw.format) && (raw.format & formatPatternMask) >= BayerGB &&
                          (raw.format & formatPatternMask) <= BayerBG;
    if (!raw.data || !isMosaic || raw.width < smallestMosaic || raw.height < smallestMosaic || target.isNull() ||
        target.format() != QImage::Format_RGBX8888 || static_cast<std::size_t>(target.width()) != raw.width ||
        static_cast<std::size_t>(target.height()) != raw.height ||
        static_cast<std::size_t>(target.bytesPerLine()) != raw.width * 4)
        return false;

    const std::uint32_t packing = raw.format & formatPackingMask;
    if (formatDepth(raw.format) == 8) {
        // Sums of 8-bit sites fit 16 bits, twice as many to a vector.
        interpolate<std::int16_t, std::uint8_t>(pool, target, raw, [&raw](std::size_t row, std::uint8_t* sites) {
            std::memcpy(sites, raw.data + row * raw.width, raw.width);
        });
    } else if (formatDepth(raw.format) == 10 && packing == Packedp) {
        interpolatePacked<Packedp>(pool, target, raw);
    } else if (formatDepth(raw.format) == 10 && packing == PackedNoSwap) {
        interpolatePacked<PackedNoSwap>(pool, target, raw);
    } else {
        interpolate<int, std::uint16_t>(pool, target, raw, [&raw](std::size_t row, std::uint16_t* sites) {
            std::memcpy(sites, raw.data + row * raw.width * 2, raw.width * 2);
        });
    }
    return true;
}

} // namespace Vistrel
