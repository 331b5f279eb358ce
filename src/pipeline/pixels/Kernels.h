// SPDX-License-Identifier: MIT
// The inner loops over pixels, in the widest vectors that the processor has.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Vistrel::Kernels {

/// Returns false in a process that was started with `VISTREL_SIMD=scalar`: then the scalar loops convert every pixel.
/// Otherwise they convert the pixels that do not fill a vector.
bool areVectorsAllowed();

/// Cached stores keep the target in the caches. Streamed stores bypass them: the target is not read before it is
/// overwritten, but other threads see it only after a fence. `CopyPool::runRows` ends with one.
enum class Stores : bool { Cached, Streamed };

/// Chosen by measuring conversion and painting together. Streaming is slower below 2 MB, makes no difference up to 5
/// MB, and takes three quarters of the time above.
constexpr Stores storesFor(std::size_t targetBytes)
{
    return targetBytes < std::size_t{6} << 20 ? Stores::Cached : Stores::Streamed;
}

/// Other threads see what this one has streamed before, once they see what it stores afterwards.
void flushStores();

/// Pixels that follow each other in memory, and where they go.
struct PixelRun
{
    const std::uint8_t* source = nullptr; // needs no alignment
    std::uint8_t* target = nullptr;
    std::size_t count = 0; // pixels
    Stores stores = Stores::Cached;
    int shift = 0;                     // from the depth of a channel to 8 bits
    bool reversed = false;             // writes the channels in the opposite of their order in memory
    std::size_t pixelBytes = 1;        // of a target pixel; the fourth byte becomes 0xFF
    const std::uint8_t* end = nullptr; // packed pixels: bytes from here on are not read, and count as zero
    std::size_t ahead = 0;             // packed pixels: bytes from what is read to what is fetched into the cache

    /// `length` of the pixels, from pixel `first` on.
    PixelRun part(std::size_t first, std::size_t length, std::size_t sourceBytes) const
    {
        PixelRun run = *this;
        run.source += first * sourceBytes;
        run.target += first * pixelBytes;
        run.count = length;
        return run;
    }
};

// Each of these converts one run. Bits above the depth are dropped.

/// Copies bytes. On some processors the C library's copy is several times slower when source and target have an
/// unfavourable offset within their pages.
void copyBytes(const PixelRun& run);
/// Shifts 16-bit words to bytes.
void shiftToGray(const PixelRun& run);

/// Packed 10-bit groups of five bytes, see `Gray10PackedIterator`: the top eight bits of each pixel to a byte, or all
/// ten to a 16-bit word. The first two read the most significant bit first, the others the native load.
void packed10ToGray(const PixelRun& run);
void packed10ToWords(const PixelRun& run);
void packed10NoSwapToGray(const PixelRun& run);
void packed10NoSwapToWords(const PixelRun& run);

/// Three bytes a pixel; or four, the fourth ignored.
void bytes3ToColor(const PixelRun& run);
void bytes4ToColor(const PixelRun& run);
/// Three 16-bit words a pixel.
void words3ToColor(const PixelRun& run);
/// Three 10-bit fields of a 32-bit word, the top eight bits of each.
void fields30ToColor(const PixelRun& run);

/// target[i] = table[source[i]], with 256 entries.
void lookUp(const std::uint8_t* source, std::uint32_t* target, std::size_t count, const std::uint32_t* table,
            Stores stores);

/// line[i] = row[columns[i]] as an opaque 32-bit colour. Fetches the same pixels of the row `next` into the cache.
void sampleGray(const std::uint8_t* row, const std::uint8_t* next, const int* columns, std::size_t count,
                std::uint32_t* line);
void sampleColor(const std::uint32_t* row, const std::uint32_t* next, const int* columns, std::size_t count,
                 std::uint32_t* line);

} // namespace Vistrel::Kernels
