// SPDX-License-Identifier: MIT
// Three channels into three or four bytes a pixel.
#include "pipeline/pixels/PlainKernels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "pipeline/pixels/ColorKernels.cpp"
#include <hwy/foreach_target.h>

#include "pipeline/pixels/KernelTools-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Vistrel::Kernels {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

using namespace Plain; // there are no vectors

#else

// Converts pixels of `sourceBytes` to four bytes each: `color(i)` is a whole vector of them from pixel i on. `color`
// may read of `spare` pixels more.
template <std::size_t sourceBytes, class Bytes, class Color, class Rest>
HWY_INLINE void convertToFour(Bytes bytes, const std::uint8_t* source, std::uint8_t* target, std::size_t count,
                              std::size_t spare, Stores chosen, Color&& color, Rest&& rest)
{
    const std::size_t pixels = hn::Lanes(bytes) / 4;
    convert(
        target, count, 4, chosen,
        [&](auto stores, std::size_t i) HWY_ATTR {
            for (; i + 2 * pixels + spare <= count; i += 2 * pixels) {
                fetchAhead<hn::MaxLanes(bytes) / 2 * sourceBytes>(source + sourceBytes * i);
                store<stores>(color(i), bytes, target + 4 * i);
                store<stores>(color(i + pixels), bytes, target + 4 * (i + pixels));
            }
            return i;
        },
        rest);
}

template <class Bytes, class Channel>
HWY_INLINE void storeColor(Bytes bytes, Channel first, Channel second, Channel third, bool reversed,
                           std::uint8_t* target)
{
    hn::StoreInterleaved3(reversed ? third : first, second, reversed ? first : third, bytes, target);
}

void Bytes3ToColor(const PixelRun& run)
{
    const std::uint8_t* const HWY_RESTRICT source = run.source;
    std::uint8_t* const HWY_RESTRICT target = run.target;
    const std::size_t count = run.count;
    const bool reversed = run.reversed;
    const auto rest = [&](std::size_t i, std::size_t left) { Plain::Bytes3ToColor(run.part(i, left, 3)); };
    if (run.pixelBytes != 4) {
        const hn::ScalableTag<std::uint8_t> bytes;
        const std::size_t lanes = hn::Lanes(bytes);
        std::size_t i = 0;
        for (; i + lanes <= count; i += lanes) {
            hn::Vec<decltype(bytes)> first, second, third;
            hn::LoadInterleaved3(bytes, source + 3 * i, first, second, third);
            storeColor(bytes, first, second, third, reversed, target + 3 * i);
        }
        rest(i, count - i);
        return;
    }
    const hn::FixedTag<std::uint8_t, halvesWidth> bytes;
    const hn::Repartition<std::uint32_t, decltype(bytes)> pixels;
    alignas(16) static constexpr std::uint8_t inOrder[16] = {0, 1, 2, 0, 3, 4, 5, 0, 6, 7, 8, 0, 9, 10, 11, 0};
    alignas(16) static constexpr std::uint8_t turned[16] = {2, 1, 0, 0, 5, 4, 3, 0, 8, 7, 6, 0, 11, 10, 9, 0};
    const auto order = hn::LoadDup128(bytes, reversed ? turned : inOrder);
    const auto opaque = hn::BitCast(bytes, hn::Set(pixels, 0xFF000000u));
    const auto color = [&](std::size_t i) HWY_ATTR {
        return hn::Or(hn::TableLookupBytes(loadHalves(bytes, source + 3 * i, 12), order), opaque);
    };
    convertToFour<3>(bytes, source, target, count, 2, run.stores, color, rest); // a load reads 4 bytes too many
}

void Words3ToColor(const PixelRun& run)
{
    const std::uint8_t* const HWY_RESTRICT source = run.source;
    std::uint8_t* const HWY_RESTRICT target = run.target;
    const std::size_t count = run.count;
    const int shift = run.shift;
    const bool reversed = run.reversed;
    const auto rest = [&](std::size_t i, std::size_t left) { Plain::Words3ToColor(run.part(i, left, 6)); };
    if (run.pixelBytes != 4) {
        const hn::ScalableTag<std::uint16_t> words;
        const hn::Repartition<std::uint8_t, decltype(words)> bytes;
        const std::size_t lanes = hn::Lanes(words);
        const auto reduced = [&](auto first, auto second) HWY_ATTR {
            return lowBytes(bytes, hn::ShiftRightSame(first, shift), hn::ShiftRightSame(second, shift));
        };
        std::size_t i = 0;
        for (; i + 2 * lanes <= count; i += 2 * lanes) {
            hn::Vec<decltype(words)> a0, a1, a2, b0, b1, b2;
            hn::LoadInterleaved3(words, reinterpret_cast<const std::uint16_t*>(source + 6 * i), a0, a1, a2);
            hn::LoadInterleaved3(words, reinterpret_cast<const std::uint16_t*>(source + 6 * (i + lanes)), b0, b1, b2);
            storeColor(bytes, reduced(a0, b0), reduced(a1, b1), reduced(a2, b2), reversed, target + 3 * i);
        }
        rest(i, count - i);
        return;
    }
    const hn::FixedTag<std::uint8_t, halvesWidth> bytes;
    const hn::Repartition<std::uint16_t, decltype(bytes)> words;
    const hn::Repartition<std::uint32_t, decltype(bytes)> pixels;
    // Of four pixels' 24 bytes the first 16 hold the first two pixels, the last 16 the others. 0x80 gives 0.
    alignas(16) static constexpr std::uint8_t inOrder[2][16] = {
        {0, 2, 4, 0x80, 6, 8, 10, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80},
        {0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 4, 6, 8, 0x80, 10, 12, 14, 0x80}};
    alignas(16) static constexpr std::uint8_t turned[2][16] = {
        {4, 2, 0, 0x80, 10, 8, 6, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80},
        {0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 8, 6, 4, 0x80, 14, 12, 10, 0x80}};
    const auto firstOrder = hn::LoadDup128(bytes, reversed ? turned[0] : inOrder[0]);
    const auto lastOrder = hn::LoadDup128(bytes, reversed ? turned[1] : inOrder[1]);
    const auto opaque = hn::BitCast(bytes, hn::Set(pixels, 0xFF000000u));
    const auto reduced = [&](const std::uint8_t* from) HWY_ATTR {
        return hn::BitCast(bytes, hn::ShiftRightSame(hn::BitCast(words, loadHalves(bytes, from, 24)), shift));
    };
    const auto color = [&](std::size_t i) HWY_ATTR {
        const auto first = hn::TableLookupBytesOr0(reduced(source + 6 * i), firstOrder);
        const auto last = hn::TableLookupBytesOr0(reduced(source + 6 * i + 8), lastOrder);
        return hn::Or(hn::Or(first, last), opaque);
    };
    convertToFour<6>(bytes, source, target, count, 0, run.stores, color, rest);
}

void Bytes4ToColor(const PixelRun& run)
{
    const std::uint8_t* const HWY_RESTRICT source = run.source;
    std::uint8_t* const HWY_RESTRICT target = run.target;
    const std::size_t count = run.count;
    const bool reversed = run.reversed;
    const hn::ScalableTag<std::uint8_t> bytes;
    const auto rest = [&](std::size_t i, std::size_t left) { Plain::Bytes4ToColor(run.part(i, left, 4)); };
    if (run.pixelBytes != 4) {
        const std::size_t lanes = hn::Lanes(bytes);
        std::size_t i = 0;
        for (; i + lanes <= count; i += lanes) {
            hn::Vec<decltype(bytes)> first, second, third, fourth;
            hn::LoadInterleaved4(bytes, source + 4 * i, first, second, third, fourth);
            storeColor(bytes, first, second, third, reversed, target + 3 * i);
        }
        rest(i, count - i);
        return;
    }
    const hn::Repartition<std::uint32_t, decltype(bytes)> pixels;
    alignas(16) static constexpr std::uint8_t inOrder[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    alignas(16) static constexpr std::uint8_t turned[16] = {2, 1, 0, 3, 6, 5, 4, 7, 10, 9, 8, 11, 14, 13, 12, 15};
    const auto order = hn::LoadDup128(bytes, reversed ? turned : inOrder);
    const auto opaque = hn::BitCast(bytes, hn::Set(pixels, 0xFF000000u));
    const auto color = [&](std::size_t i) HWY_ATTR {
        return hn::Or(hn::TableLookupBytes(hn::LoadU(bytes, source + 4 * i), order), opaque);
    };
    convertToFour<4>(bytes, source, target, count, 0, run.stores, color, rest);
}

void Fields30ToColor(const PixelRun& run)
{
    const std::uint8_t* const HWY_RESTRICT source = run.source;
    std::uint8_t* const HWY_RESTRICT target = run.target;
    const std::size_t count = run.count;
    const bool reversed = run.reversed;
    const hn::ScalableTag<std::uint8_t> bytes;
    const auto rest = [&](std::size_t i, std::size_t left) { Plain::Fields30ToColor(run.part(i, left, 4)); };
    if (run.pixelBytes != 4) {
        const std::size_t lanes = hn::Lanes(bytes);
        std::size_t i = 0;
        for (; i + lanes <= count; i += lanes) {
            hn::Vec<decltype(bytes)> b0, b1, b2, b3;
            hn::LoadInterleaved4(bytes, source + 4 * i, b0, b1, b2, b3);
            const auto first = hn::Or(hn::ShiftRight<2>(b0), hn::ShiftLeft<6>(b1));
            const auto second = hn::Or(hn::ShiftRight<4>(b1), hn::ShiftLeft<4>(b2));
            const auto third = hn::Or(hn::ShiftRight<6>(b2), hn::ShiftLeft<2>(b3));
            storeColor(bytes, first, second, third, reversed, target + 3 * i);
        }
        rest(i, count - i);
        return;
    }
    const hn::Repartition<std::uint32_t, decltype(bytes)> pixels;
    const auto low = hn::Set(pixels, 0xFF);
    const auto color = [&](std::size_t i) HWY_ATTR {
        const auto word = hn::BitCast(pixels, hn::LoadU(bytes, source + 4 * i));
        const auto first = hn::And(hn::ShiftRight<2>(word), low);
        const auto second = hn::ShiftLeft<8>(hn::And(hn::ShiftRight<12>(word), low));
        const auto third = hn::And(hn::ShiftRight<22>(word), low);
        const auto pixel = reversed ? hn::Or(third, hn::ShiftLeft<16>(first)) : hn::Or(first, hn::ShiftLeft<16>(third));
        return hn::BitCast(bytes, hn::Or(pixel, hn::Or(second, hn::Set(pixels, 0xFF000000u))));
    };
    convertToFour<4>(bytes, source, target, count, 0, run.stores, color, rest);
}

#endif

} // namespace HWY_NAMESPACE
} // namespace Vistrel::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Vistrel::Kernels {

VISTREL_KERNEL(bytes3ToColor, Bytes3ToColor)
VISTREL_KERNEL(bytes4ToColor, Bytes4ToColor)
VISTREL_KERNEL(words3ToColor, Words3ToColor)
VISTREL_KERNEL(fields30ToColor, Fields30ToColor)

} // namespace Vistrel::Kernels
#endif
