// SPDX-License-Identifier: MIT
// The scalar forms of the kernels. They define the results of the vector forms, convert the pixels that do not fill a
// vector, and convert all pixels where there are no vectors.
#pragma once

#include "pipeline/pixels/DemosaicKernels.h"
#include "pipeline/pixels/Kernels.h"
#include "pipeline/pixels/PackedIterators.h"
#include "pipeline/pixels/ShrinkKernels.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Vistrel::Kernels::Plain {

inline std::uint16_t wordAt(const std::uint8_t* bytes)
{
    std::uint16_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

inline void CopyBytes(const PixelRun& run)
{
    std::memcpy(run.target, run.source, run.count);
}

inline void ShiftToGray(const PixelRun& run)
{
    for (std::size_t i = 0; i < run.count; ++i)
        run.target[i] = static_cast<std::uint8_t>(wordAt(run.source + 2 * i) >> run.shift);
}

// `channels(source)` gives the first, second and third channel of a pixel of `sourceBytes`, the top eight bits lowest.
template <std::size_t sourceBytes, typename Channels>
inline void toColor(const PixelRun& run, Channels&& channels)
{
    const std::uint8_t* source = run.source;
    std::uint8_t* target = run.target;
    for (std::size_t i = 0; i < run.count; ++i, source += sourceBytes, target += run.pixelBytes) {
        const std::array<std::uint32_t, 3> color = channels(source);
        target[0] = static_cast<std::uint8_t>(color[run.reversed ? 2 : 0]);
        target[1] = static_cast<std::uint8_t>(color[1]);
        target[2] = static_cast<std::uint8_t>(color[run.reversed ? 0 : 2]);
        if (run.pixelBytes == 4)
            target[3] = 0xFF;
    }
}

using Channels = std::array<std::uint32_t, 3>;

inline void Bytes3ToColor(const PixelRun& run)
{
    toColor<3>(run, [](const std::uint8_t* source) { return Channels{source[0], source[1], source[2]}; });
}

inline void Bytes4ToColor(const PixelRun& run)
{
    toColor<4>(run, [](const std::uint8_t* source) { return Channels{source[0], source[1], source[2]}; });
}

inline void Words3ToColor(const PixelRun& run)
{
    toColor<6>(run, [shift = run.shift](const std::uint8_t* source) {
        const auto channel = [&](std::size_t i) { return std::uint32_t{wordAt(source + 2 * i)} >> shift; };
        return Channels{channel(0), channel(1), channel(2)};
    });
}

inline void Fields30ToColor(const PixelRun& run)
{
    toColor<4>(run, [](const std::uint8_t* source) {
        const std::uint32_t word = *Color30Iterator(source);
        return Channels{word >> 2, word >> 12, word >> 22};
    });
}

// From pixel `first` on, a multiple of 4: the top eight bits to bytes, or all ten to words.
template <std::uint32_t packing, typename Target>
inline void packed10(const PixelRun& run, std::size_t first, Target* target)
{
    Gray10PackedIterator<packing> pixel(run.source + first / 4 * 5, run.end);
    for (std::size_t i = first; i < run.count; ++i, ++pixel)
        target[i] = static_cast<Target>(sizeof(Target) == 1 ? *pixel : pixel.fullDepth());
}

inline std::uint16_t* wordsOf(const PixelRun& run)
{
    return reinterpret_cast<std::uint16_t*>(run.target);
}

inline void Packed10ToGray(const PixelRun& run)
{
    packed10<Packedp>(run, 0, run.target);
}

inline void Packed10ToWords(const PixelRun& run)
{
    packed10<Packedp>(run, 0, wordsOf(run));
}

inline void Packed10NoSwapToGray(const PixelRun& run)
{
    packed10<PackedNoSwap>(run, 0, run.target);
}

inline void Packed10NoSwapToWords(const PixelRun& run)
{
    packed10<PackedNoSwap>(run, 0, wordsOf(run));
}

// Reads eight indices at once: single loads take most of the time.
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

} // namespace Vistrel::Kernels::Plain

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
        bits |= even[x / 2] = Kernels::Plain::wordAt(source + 2 * x);
    for (std::size_t x = 1; x < count; x += 2)
        bits |= odd[x / 2] = Kernels::Plain::wordAt(source + 2 * x);
    return bits;
}

} // namespace Vistrel::DemosaicKernels::Plain

namespace Vistrel::ShrinkKernels::Plain {

// From byte `first` of each row on.
inline void maximumFrom(std::size_t first, const Rows& rows, bool isBegun, std::uint8_t* line)
{
    for (std::size_t row = 0; row < rows.count; ++row) {
        const std::uint8_t* const source = rows.first + row * rows.stride;
        const bool isFirst = row == 0 && !isBegun;
        for (std::size_t i = first; i < rows.bytes; ++i)
            line[i] = isFirst ? source[i] : std::max(line[i], source[i]);
    }
}

inline void sumFrom(std::size_t first, const Rows& rows, bool isBegun, std::uint16_t* line)
{
    for (std::size_t row = 0; row < rows.count; ++row) {
        const std::uint8_t* const source = rows.first + row * rows.stride;
        const bool isFirst = row == 0 && !isBegun;
        for (std::size_t i = first; i < rows.bytes; ++i)
            line[i] = static_cast<std::uint16_t>(isFirst ? source[i] : line[i] + source[i]);
    }
}

inline void MaximumOfRows(const Rows& rows, bool isBegun, std::uint8_t* line)
{
    maximumFrom(0, rows, isBegun, line);
}

inline void SumOfRows(const Rows& rows, bool isBegun, std::uint16_t* line)
{
    sumFrom(0, rows, isBegun, line);
}

template <typename Value>
inline void groupLines(const Value* const* lines, std::size_t count, Value* pixels)
{
    for (std::size_t i = 0; i < 4 * count; ++i)
        pixels[i] = lines[i % 4][i / 4];
}

template <typename Value>
inline Value combined(Value a, Value b)
{
    return sizeof(Value) == 1 ? std::max(a, b) : static_cast<Value>(a + b);
}

template <typename Value>
inline void combineLine(const Columns& columns, Value* pixels, Value* target)
{
    for (std::size_t run = 1; run < columns.runs; ++run) {
        const Value* const single = pixels + 4 * (run - 1) * columns.pitch;
        Value* const pairs = pixels + 4 * run * columns.pitch;
        const std::size_t apart = std::size_t{1} << (run - 1);
        for (std::size_t i = 0; i + 4 * apart < 4 * columns.count; ++i)
            pairs[i] = combined(single[i], single[i + 4 * apart]);
    }
    for (std::size_t i = 0; i < 4 * columns.combined; ++i) {
        const int* const places = columns.places + i / 4;
        Value value = 0;
        for (std::size_t piece = 0; piece < columns.pieces; ++piece)
            value = combined(value, pixels[4 * std::size_t(places[piece * columns.combined]) + i % 4]);
        target[i] = value;
    }
}

inline void GroupBytes(const std::uint8_t* const* lines, std::size_t count, std::uint8_t* pixels)
{
    groupLines(lines, count, pixels);
}

inline void GroupWords(const std::uint16_t* const* lines, std::size_t count, std::uint16_t* pixels)
{
    groupLines(lines, count, pixels);
}

inline void CombineBytes(const Columns& columns, std::uint8_t* pixels, std::uint8_t* target)
{
    combineLine(columns, pixels, target);
}

inline void CombineWords(const Columns& columns, std::uint16_t* pixels, std::uint16_t* target)
{
    combineLine(columns, pixels, target);
}

// A product with it is the quotient's whole part, or one less: the factor is too small by less than 1, so that the
// product, which is divided by 65,536, falls short by less than 1 as long as the other factor is a word.
inline std::uint16_t inverse(std::uint16_t number)
{
    return static_cast<std::uint16_t>(number > 1 ? 65536 / number : 65535);
}

template <typename Value>
inline void divideEach(const Value* sums, const Numbers<Value>& numbers, const std::uint16_t* wide, std::size_t count,
                       std::uint8_t* means)
{
    for (std::size_t i = 0; i < 4 * count; ++i) {
        const std::uint32_t number = numbers.few[i % 4] + (wide[i] != 0 ? numbers.more[i % 4] : 0u);
        means[i] = static_cast<std::uint8_t>((sums[i] + number / 2) / number);
    }
}

inline void Divide(const std::uint16_t* sums, const Numbers<std::uint16_t>& numbers, const std::uint16_t* wide,
                   std::size_t count, std::uint8_t* means)
{
    divideEach(sums, numbers, wide, count, means);
}

inline void SpreadGray(const std::uint8_t* pixels, std::size_t channel, std::size_t count, std::uint32_t* line)
{
    for (std::size_t i = 0; i < count; ++i)
        line[i] = 0xFF000000u | pixels[4 * i + channel] * 0x010101u;
}

} // namespace Vistrel::ShrinkKernels::Plain
