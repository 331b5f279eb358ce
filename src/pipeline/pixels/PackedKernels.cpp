// SPDX-License-Identifier: MIT
// Packed pixels of 10 bits into bytes or words.
#include "pipeline/pixels/PlainKernels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "pipeline/pixels/PackedKernels.cpp"
#include <hwy/foreach_target.h>

#include "pipeline/pixels/KernelTools-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Vistrel::Kernels {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

using namespace Plain; // there are no vectors

#else

// Two groups, eight pixels, in each 16 bytes: every 16-bit lane gets the two bytes that hold its pixel, and the
// multiplication moves the pixel's top bit to the lane's top bit.
template <std::uint32_t packing, Stores stores, typename Target>
std::size_t packed10(const PixelRun& run, Target* HWY_RESTRICT target)
{
    const std::uint8_t* HWY_RESTRICT source = run.source;
    const std::uint8_t* const end = run.end;
    const std::size_t count = run.count;
    const std::size_t ahead = run.ahead;
    constexpr std::size_t width = halvesWidth;
    const hn::FixedTag<std::uint8_t, width> bytes;
    const hn::FixedTag<std::uint16_t, width / 2> words;
    alignas(16) static constexpr std::uint8_t swapped[16] = {1, 0, 2, 1, 3, 2, 4, 3, 6, 5, 7, 6, 8, 7, 9, 8};
    alignas(16) static constexpr std::uint8_t native[16] = {6, 7, 5, 6, 4, 5, 3, 4, 11, 12, 10, 11, 9, 10, 8, 9};
    alignas(16) static constexpr std::uint16_t factors[8] = {1, 4, 16, 64, 1, 4, 16, 64};
    const auto order = hn::LoadDup128(bytes, packing == Packedp ? swapped : native);
    const auto factor = hn::LoadDup128(words, factors);
    const auto aligned = [&](const std::uint8_t* groups) HWY_ATTR {
        const auto pairs = hn::TableLookupBytes(loadHalves(bytes, groups, 10), order);
        return hn::Mul(hn::BitCast(words, pairs), factor);
    };
    constexpr std::size_t bytesRead = width / 16 * 20;
    std::size_t i = 0;
    for (; i + width <= count && end - source >= static_cast<std::ptrdiff_t>(bytesRead + 6); i += width) {
        hwy::Prefetch(source + ahead);
        const auto first = aligned(source);
        const auto second = aligned(source + bytesRead / 2);
        if constexpr (sizeof(Target) == 1) {
            store<stores>(lowBytes(bytes, hn::ShiftRight<8>(first), hn::ShiftRight<8>(second)), bytes, target + i);
        } else {
            hn::StoreU(hn::ShiftRight<6>(first), words, target + i);
            hn::StoreU(hn::ShiftRight<6>(second), words, target + i + width / 2);
        }
        source += bytesRead;
    }
    return i;
}

// Pixels cannot be split off before a boundary, which groups of four must reach together.
template <std::uint32_t packing>
void packed10ToGray(const PixelRun& run)
{
    const bool isAligned = reinterpret_cast<std::uintptr_t>(run.target) % halvesWidth == 0;
    const std::size_t done = run.stores == Stores::Streamed && isAligned
                                 ? packed10<packing, Stores::Streamed>(run, run.target)
                                 : packed10<packing, Stores::Cached>(run, run.target);
    Plain::packed10<packing>(run, done, run.target);
}

template <std::uint32_t packing>
void packed10ToWords(const PixelRun& run)
{
    std::uint16_t* const words = Plain::wordsOf(run);
    Plain::packed10<packing>(run, packed10<packing, Stores::Cached>(run, words), words);
}

void Packed10ToGray(const PixelRun& run)
{
    packed10ToGray<Packedp>(run);
}

void Packed10ToWords(const PixelRun& run)
{
    packed10ToWords<Packedp>(run);
}

void Packed10NoSwapToGray(const PixelRun& run)
{
    packed10ToGray<PackedNoSwap>(run);
}

void Packed10NoSwapToWords(const PixelRun& run)
{
    packed10ToWords<PackedNoSwap>(run);
}

#endif

} // namespace HWY_NAMESPACE
} // namespace Vistrel::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Vistrel::Kernels {

VISTREL_KERNEL(packed10ToGray, Packed10ToGray)
VISTREL_KERNEL(packed10ToWords, Packed10ToWords)
VISTREL_KERNEL(packed10NoSwapToGray, Packed10NoSwapToGray)
VISTREL_KERNEL(packed10NoSwapToWords, Packed10NoSwapToWords)

} // namespace Vistrel::Kernels
#endif
