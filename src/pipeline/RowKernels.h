// SPDX-License-Identifier: MIT
// The inner blocks of the row loops, in the widest vectors that the processor has.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Vistrel::RowKernels {

// Each converts `count` pixels. Sources need no alignment. `reversed` writes the channels of a pixel in the opposite of
// their order in memory. Colour goes to four bytes a pixel, the fourth being 0xFF.

/// Bytes as they are. The C library's copy can be several times slower on some processors, where source and target lie
/// unluckily to each other within their pages.
void copyBytes(const std::uint8_t* source, std::uint8_t* target, std::size_t count);

/// 16-bit words to bytes: (value >> shift), upper bits lost.
void shiftToGray(const std::uint8_t* source, std::uint8_t* target, std::size_t count, int shift);

/// Bytes to four bytes a pixel.
void bytes3ToRgbx(const std::uint8_t* source, std::uint8_t* target, std::size_t count, bool reversed);
void bytes4ToRgbx(const std::uint8_t* source, std::uint8_t* target, std::size_t count, bool reversed);

/// Three 16-bit words a pixel: (value >> shift), upper bits lost.
void words3ToRgbx(const std::uint8_t* source, std::uint8_t* target, std::size_t count, int shift, bool reversed);

/// Three 10-bit fields of a 32-bit word, the top eight bits of each.
void fields30ToRgbx(const std::uint8_t* source, std::uint8_t* target, std::size_t count, bool reversed);

/// Packed 10-bit groups of five bytes, the top eight bits of each pixel. Converts as many whole groups as can be read
/// in full vectors before `end`, at most `count` pixels, and returns how many pixels that were, a multiple of 4.
std::size_t packed10ToGray(const std::uint8_t* source, const std::uint8_t* end, std::uint8_t* target, std::size_t count,
                           bool swap);

/// target[i] = table[source[i]], with 256 entries.
void lookUp(const std::uint8_t* source, std::uint32_t* target, std::size_t count, const std::uint32_t* table);

} // namespace Vistrel::RowKernels
