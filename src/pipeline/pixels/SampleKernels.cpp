// SPDX-License-Identifier: MIT
// Single pixels of a row into a line of 32-bit colours.
#include "pipeline/pixels/Kernels.h"

#include <hwy/base.h>
#include <hwy/cache_control.h>

namespace Vistrel::Kernels {

namespace {

std::uint32_t colorOf(std::uint8_t level)
{
    return 0xFF000000u | level * 0x010101u;
}

std::uint32_t colorOf(std::uint32_t color)
{
    return color;
}

// Prefetches, because the processor foresees the next row only within a page.
template <typename Pixel>
void sampleRow(const Pixel* row, const Pixel* next, const int* columns, std::size_t count,
               std::uint32_t* HWY_RESTRICT line)
{
    constexpr std::size_t few = 4; // seldom farther apart than a cache line
    std::size_t x = 0;
    for (; x + few <= count; x += few) {
        hwy::Prefetch(next + columns[x]);
        for (std::size_t i = x; i < x + few; ++i)
            line[i] = colorOf(row[columns[i]]);
    }
    for (; x < count; ++x)
        line[x] = colorOf(row[columns[x]]);
}

} // namespace

void sampleGray(const std::uint8_t* row, const std::uint8_t* next, const int* columns, std::size_t count,
                std::uint32_t* line)
{
    sampleRow(row, next, columns, count, line);
}

void sampleColor(const std::uint32_t* row, const std::uint32_t* next, const int* columns, std::size_t count,
                 std::uint32_t* line)
{
    sampleRow(row, next, columns, count, line);
}

} // namespace Vistrel::Kernels
