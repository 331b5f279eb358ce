// SPDX-License-Identifier: MIT
// The row loops in plain words: they do what is left beside whole vectors, everything where there are none, and say
// what the vectors must give.
#pragma once

#include "pipeline/DemosaicKernels.h"
#include "pipeline/PackedIterators.h"
#include "pipeline/RowKernels.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Vistrel::RowKernels::Plain {

inline std::uint16_t wordAt(const std::uint8_t* bytes)
{
    std::uint16_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

inline void CopyBytes(const std::uint8_t* source, std::uint8_t* target, std::size_t count, Stores = Stores::Cached)
{
    std::memcpy(target, source, count);
}

inline void ShiftToGray(const std::uint8_t* source, std::uint8_t* target, std::size_t count, int shift,
                        Stores = Stores::Cached)
{
    for (std::size_t i = 0; i < count; ++i)
        target[i] = static_cast<std::uint8_t>(wordAt(source + 2 * i) >> shift);
}

inline void storeColor(std::uint32_t first, std::uint32_t second, std::uint32_t third, bool reversed,
                       std::size_t pixelBytes, std::uint8_t* target)
{
    target[0] = static_cast<std::uint8_t>(reversed ? third : first);
    target[1] = static_cast<std::uint8_t>(second);
    target[2] = static_cast<std::uint8_t>(reversed ? first : third);
    if (pixelBytes == 4)
        target[3] = 0xFF;
}

inline void Bytes3ToColor(const std::uint8_t* source, std::uint8_t* target, std::size_t count, bool reversed,
                          std::size_t pixelBytes, Stores = Stores::Cached)
{
    for (; count > 0; --count, source += 3, target += pixelBytes)
        storeColor(source[0], source[1], source[2], reversed, pixelBytes, target);
}

inline void Bytes4ToColor(const std::uint8_t* source, std::uint8_t* target, std::size_t count, bool reversed,
                          std::size_t pixelBytes, Stores = Stores::Cached)
{
    for (; count > 0; --count, source += 4, target += pixelBytes)
        storeColor(source[0], source[1], source[2], reversed, pixelBytes, target);
}

inline void Words3ToColor(const std::uint8_t* source, std::uint8_t* target, std::size_t count, int shift, bool reversed,
                          std::size_t pixelBytes, Stores = Stores::Cached)
{
    for (; count > 0; --count, source += 6, target += pixelBytes)
        storeColor(wordAt(source) >> shift, wordAt(source + 2) >> shift, wordAt(source + 4) >> shift, reversed,
                   pixelBytes, target);
}

inline void Fields30ToColor(const std::uint8_t* source, std::uint8_t* target, std::size_t count, bool reversed,
                            std::size_t pixelBytes, Stores = Stores::Cached)
{
    for (Color30Iterator pixel(source); count > 0; --count, ++pixel, target += pixelBytes)
        storeColor(*pixel >> 2, *pixel >> 12, *pixel >> 22, reversed, pixelBytes, target);
}

template <std::uint32_t swap, typename Target>
inline void unpack10(Gray10PackedIterator<swap> source, Target* target, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i, ++source)
        target[i] = static_cast<Target>(sizeof(Target) == 1 ? *source : source.fullDepth());
}

template <typename Target>
inline void packed10(const std::uint8_t* source, const std::uint8_t* end, Target* target, std::size_t count, bool swap)
{
    if (swap)
        unpack10(Gray10PackedIterator<Packedp>(source, end), target, count);
    else
        unpack10(Gray10PackedIterator<PackedNoSwap>(source, end), target, count);
}

inline void Packed10ToGray(const std::uint8_t* source, const std::uint8_t* end, std::uint8_t* target, std::size_t count,
                           bool swap, std::size_t, Stores = Stores::Cached)
{
    packed10(source, end, target, count, swap);
}

inline void Packed10ToWords(const std::uint8_t* source, const std::uint8_t* end, std::uint16_t* target,
                            std::size_t count, bool swap, std::size_t)
{
    packed10(source, end, target, count, swap);
}

// Eight at a time, because reading them one by one is what takes longest.
inline void LookUp(const std::uint8_t* source, std::uint32_t* target, std::size_t count, const std::uint32_t* table,
                   Stores = Stores::Cached)
{
    std::size_t i = 0;
    for (; i + 8 <= count; i += 8) {
        std::uint64_t eight = 0;
        std::memcpy(&eight, source + i, sizeof eight);
        for (std::size_t k = 0; k < 8; ++k, eight >>= 8)
            target[i + k] = table[eight & 0xFF];
    }
    for (; i < count; ++i)
        target[i] = table[source[i]];
}

} // namespace Vistrel::RowKernels::Plain

namespace Vistrel::DemosaicKernels::Plain {

inline std::uint8_t level(int sixteenths, int shift)
{
    return static_cast<std::uint8_t>(std::clamp((sixteenths + 8) >> (4 + shift), 0, 255));
}

// From column `first` on, an even one.
inline void interpolateFrom(std::size_t first, const Rows& rows, std::uint8_t* target, std::size_t count,
                            const Kind& kind)
{
    for (const unsigned odd : {0u, 1u}) {
        for (std::size_t x = first + odd; x < count; x += 2) {
            const auto site = [&](int dx, int dy) {
                const auto column = static_cast<std::ptrdiff_t>(x) + dx;
                return int{rows.columns[dx % 2 == 0 ? odd : 1 - odd][2 + dy][column >> 1]};
            };
            const int centre = site(0, 0);
            const int beside = site(-1, 0) + site(1, 0);
            const int above = site(0, -1) + site(0, 1);
            const int diagonal = site(-1, -1) + site(1, -1) + site(-1, 1) + site(1, 1);
            const int farBeside = site(-2, 0) + site(2, 0);
            const int farAbove = site(0, -2) + site(0, 2);
            int rowColor = 16 * centre;
            int green = rowColor;
            int otherColor = 0;
            if (odd == kind.colored) {
                green = 8 * centre + 4 * (beside + above) - 2 * (farBeside + farAbove);
                otherColor = 12 * centre + 4 * diagonal - 3 * (farBeside + farAbove);
            } else {
                rowColor = 10 * centre + 8 * beside - 2 * diagonal - 2 * farBeside + farAbove;
                otherColor = 10 * centre + 8 * above - 2 * diagonal - 2 * farAbove + farBeside;
            }
            target[4 * x + (kind.isRed ? 0 : 2)] = level(rowColor, kind.shift);
            target[4 * x + 1] = level(green, kind.shift);
            target[4 * x + (kind.isRed ? 2 : 0)] = level(otherColor, kind.shift);
            target[4 * x + 3] = 0xFF;
        }
    }
}

inline void Interpolate(const Rows& rows, std::uint8_t* target, std::size_t count, const Kind& kind)
{
    interpolateFrom(0, rows, target, count, kind);
}

inline void SplitBytes(const std::uint8_t* source, std::uint16_t* even, std::uint16_t* odd, std::size_t count)
{
    for (std::size_t x = 0; x < count; x += 2)
        even[x / 2] = source[x];
    for (std::size_t x = 1; x < count; x += 2)
        odd[x / 2] = source[x];
}

inline std::uint16_t SplitWords(const std::uint8_t* source, std::uint16_t* even, std::uint16_t* odd, std::size_t count)
{
    std::uint16_t bits = 0;
    for (std::size_t x = 0; x < count; x += 2)
        bits |= even[x / 2] = RowKernels::Plain::wordAt(source + 2 * x);
    for (std::size_t x = 1; x < count; x += 2)
        bits |= odd[x / 2] = RowKernels::Plain::wordAt(source + 2 * x);
    return bits;
}

} // namespace Vistrel::DemosaicKernels::Plain
