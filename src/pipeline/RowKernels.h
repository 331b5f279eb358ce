// SPDX-License-Identifier: MIT
// The inner blocks of the row loops, in the widest vectors that the processor has.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Vistrel::RowKernels {

/// False in a process that started with `VISTREL_SIMD=scalar`: then the plain loops do all the work. Otherwise they do
/// what is left beside whole vectors.
bool areVectorsAllowed();

/// Whether what is written stays in the caches or goes past them. Then it need not be read before it is overwritten,
/// but other threads see it only after a fence, such as `CopyPool::runRows` ends with.
enum class Stores : bool { Cached, Streamed };

/// Measured, with what paints the target afterwards: to stream less than 2 MB is slower, up to 5 MB it makes no
/// difference, and more than that is done in three quarters of the time.
constexpr Stores storesFor(std::size_t targetBytes)
{
    return targetBytes < std::size_t{6} << 20 ? Stores::Cached : Stores::Streamed;
}

// Each converts `count` pixels. Sources need no alignment. `reversed` writes the channels of a pixel in the opposite of
// their order in memory. Colour goes to `pixelBytes` bytes a pixel, 3 or 4, the fourth being 0xFF.

/// Bytes as they are. The C library's copy can be several times slower on some processors, where source and target lie
/// unluckily to each other within their pages.
void copyBytes(const std::uint8_t* source, std::uint8_t* target, std::size_t count, Stores stores);

/// 16-bit words to bytes: (value >> shift), upper bits lost.
void shiftToGray(const std::uint8_t* source, std::uint8_t* target, std::size_t count, int shift, Stores stores);

/// Three bytes a pixel; or four, the fourth ignored.
void bytes3ToColor(const std::uint8_t* source, std::uint8_t* target, std::size_t count, bool reversed,
                   std::size_t pixelBytes, Stores stores);
void bytes4ToColor(const std::uint8_t* source, std::uint8_t* target, std::size_t count, bool reversed,
                   std::size_t pixelBytes, Stores stores);

/// Three 16-bit words a pixel: (value >> shift), upper bits lost.
void words3ToColor(const std::uint8_t* source, std::uint8_t* target, std::size_t count, int shift, bool reversed,
                   std::size_t pixelBytes, Stores stores);

/// Three 10-bit fields of a 32-bit word, the top eight bits of each.
void fields30ToColor(const std::uint8_t* source, std::uint8_t* target, std::size_t count, bool reversed,
                     std::size_t pixelBytes, Stores stores);

/// Packed 10-bit groups of five bytes, with the top byte of the first pixel first when `swap`, else as the native load
/// has them (see `Gray10PackedIterator`): the top eight bits of each pixel, or all ten. Bytes from `end` on are not
/// read. The bytes `ahead` of those that are read are fetched into the cache meanwhile.
void packed10ToGray(const std::uint8_t* source, const std::uint8_t* end, std::uint8_t* target, std::size_t count,
                    bool swap, std::size_t ahead, Stores stores);
void packed10ToWords(const std::uint8_t* source, const std::uint8_t* end, std::uint16_t* target, std::size_t count,
                     bool swap, std::size_t ahead);

/// target[i] = table[source[i]], with 256 entries.
void lookUp(const std::uint8_t* source, std::uint32_t* target, std::size_t count, const std::uint32_t* table,
            Stores stores);

} // namespace Vistrel::RowKernels
