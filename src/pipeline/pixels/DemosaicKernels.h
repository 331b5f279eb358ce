// SPDX-License-Identifier: MIT
// One row of the demosaic, in the widest vectors that the processor has.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Vistrel::DemosaicKernels {

/// Sums of sites below this fit 16 bits.
constexpr std::uint16_t narrowSites = 1 << 12;

/// Sites of rows -2 to 2 around the one that is interpolated, those of even and those of odd columns apart: column x
/// is `columns[x & 1][row + 2][x >> 1]`.
struct Rows
{
    const std::uint16_t* columns[2][5];
    bool areNarrow; // all sites are below `narrowSites`
};

/// The properties of one row of a mosaic.
struct Kind
{
    unsigned colored; // parity of the columns whose sites are red or blue
    bool isRed;       // those are red
    int shift;        // depth over 8 bits
};

/// Interpolates `count` sites, the first being column 0, into four bytes each; columns -2 to `count` + 1 are read.
void interpolate(const Rows& rows, std::uint8_t* target, std::size_t count, const Kind& kind);

/// Separates the sites of even columns from those of odd columns. `splitWords` returns the bitwise or of all sites.
void splitBytes(const std::uint8_t* source, std::uint16_t* even, std::uint16_t* odd, std::size_t count);
std::uint16_t splitWords(const std::uint8_t* source, std::uint16_t* even, std::uint16_t* odd, std::size_t count);

} // namespace Vistrel::DemosaicKernels
