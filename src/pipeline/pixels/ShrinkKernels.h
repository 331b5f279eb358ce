// SPDX-License-Identifier: MIT
// Many pixels into one: their largest values, or their sums and means.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Vistrel::ShrinkKernels {

/// Rows of bytes, the channels of their pixels side by side.
struct Rows
{
    const std::uint8_t* first = nullptr;
    std::size_t stride = 0; // bytes from a row to the next
    std::size_t count = 0;
    std::size_t bytes = 0; // of a row
};

constexpr std::size_t mostSummed = 256; // bytes, whose sum fits a word even when half of their number is added

/// line[i] = the largest value of the rows' bytes i, and of line[i] itself if `isBegun`.
void maximumOfRows(const Rows& rows, bool isBegun, std::uint8_t* line);
/// The sum of these bytes, at most `mostSummed` in all.
void sumOfRows(const Rows& rows, bool isBegun, std::uint16_t* line);

// From here on, a pixel has four channels. Those that have fewer lie in groups of four. Channels are combined by their
// maximum where they are bytes, else by their sum. `slack` bytes behind inputs and outputs may be accessed.
constexpr std::size_t slack = 256;

/// pixels[4 * i + k] = lines[k][i]
void group(const std::uint8_t* const* lines, std::size_t count, std::uint8_t* pixels);
void group(const std::uint16_t* const* lines, std::size_t count, std::uint16_t* pixels);

/// Which pixels of a line are combined into one.
struct Columns
{
    std::size_t count = 0;       // of the line
    std::size_t pitch = 0;       // pixels from a run to the next
    std::size_t runs = 1;        // run k + 1 combines the pixels i and i + 2^k of run k; run 0 is the line
    std::size_t pieces = 1;      // of each combined pixel
    const int* places = nullptr; // of the pieces in all runs: those of piece k from k * combined on
    std::size_t combined = 0;    // pixels
    Rows next;                   // are fetched into the cache meanwhile
};

/// Makes the other runs of `pixels`, and from all of them the combined pixels.
void combine(const Columns& columns, std::uint8_t* pixels, std::uint8_t* combined);
void combine(const Columns& columns, std::uint16_t* pixels, std::uint16_t* combined);
void combine(const Columns& columns, std::uint32_t* pixels, std::uint32_t* combined);

/// How many values each channel of a combined pixel is the sum of: `few`, or `few + more` in a wide one.
template <typename Value>
struct Numbers
{
    Value few[4];
    Value more[4];
};

/// means[i] = sums[i] / number, rounded half up; `wide[i]` is 0xFFFF for a channel of a wide pixel, else 0. The numbers
/// of 16 bits are at most `mostSummed`.
void divide(const std::uint16_t* sums, const Numbers<std::uint16_t>& numbers, const std::uint16_t* wide,
            std::size_t count, std::uint8_t* means);
void divide(const std::uint32_t* sums, const Numbers<std::uint32_t>& numbers, const std::uint16_t* wide,
            std::size_t count, std::uint8_t* means);

/// line[i] = the channel of pixel i as an opaque grey.
void spreadGray(const std::uint8_t* pixels, std::size_t channel, std::size_t count, std::uint32_t* line);

} // namespace Vistrel::ShrinkKernels
