// SPDX-License-Identifier: MIT
// The inner blocks of the row loops, compiled once for each kind of vector unit and chosen at run time.
#include "pipeline/RowKernels.h"

#include "pipeline/PlainKernels.h"

#include <QtCore/QByteArray>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "pipeline/RowKernels.cpp"
#include <hwy/cache_control.h>
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Vistrel::RowKernels {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

using namespace Plain; // no vectors to speak of

#else

namespace hn = hwy::HWY_NAMESPACE;

template <class Words>
HWY_INLINE HWY_ATTR hn::Vec<Words> loadWords(Words words, const std::uint8_t* source)
{
    return hn::BitCast(words, hn::LoadU(hn::Repartition<std::uint8_t, Words>(), source));
}

// The low bytes of two vectors of words, in order.
template <class Bytes, class Words>
HWY_INLINE HWY_ATTR hn::Vec<Bytes> lowBytes(Bytes bytes, Words first, Words second)
{
    return hn::ConcatEven(bytes, hn::BitCast(bytes, second), hn::BitCast(bytes, first));
}

// Streamed vectors lie on boundaries of their own size.
template <Stores stores, class Values, class Value>
HWY_INLINE void store(Value value, Values values, std::uint8_t* target)
{
    auto* const lanes = reinterpret_cast<hn::TFromD<Values>*>(target);
    if constexpr (stores == Stores::Streamed)
        hn::Stream(value, values, lanes);
    else
        hn::StoreU(value, values, lanes);
}

// The processor's own look-ahead keeps within a page; of 4 KiB, mostly.
template <std::size_t bytes>
HWY_INLINE void fetchAhead(const std::uint8_t* source)
{
    for (std::size_t i = 0; i < bytes; i += 64)
        hwy::Prefetch(source + 2048 + i);
}

template <Stores chosen>
using Chosen = std::integral_constant<Stores, chosen>;

// Converts `count` pixels to `pixelBytes` bytes each: `whole(chosen stores, first)` does whole vectors from pixel
// `first` on and returns where it stopped, `rest(first, count)` does the others.
template <class Whole, class Rest>
HWY_INLINE void convert(const std::uint8_t* target, std::size_t count, std::size_t pixelBytes, Stores stores,
                        Whole&& whole, Rest&& rest)
{
    std::size_t first = 0;
    if (stores == Stores::Streamed) {
        constexpr std::size_t boundary = HWY_MAX_BYTES;
        const std::size_t before = (boundary - reinterpret_cast<std::uintptr_t>(target) % boundary) % boundary;
        if (before % pixelBytes != 0) {
            stores = Stores::Cached;
        } else {
            first = std::min(before / pixelBytes, count);
            rest(std::size_t{0}, first);
        }
    }
    first =
        stores == Stores::Streamed ? whole(Chosen<Stores::Streamed>(), first) : whole(Chosen<Stores::Cached>(), first);
    rest(first, count - first);
}

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

void CopyBytes(const std::uint8_t* HWY_RESTRICT source, std::uint8_t* HWY_RESTRICT target, std::size_t count,
               Stores chosen)
{
    const hn::ScalableTag<std::uint8_t> bytes;
    const std::size_t lanes = hn::Lanes(bytes);
    convert(
        target, count, 1, chosen,
        [&](auto stores, std::size_t i) HWY_ATTR {
            for (; i + 4 * lanes <= count; i += 4 * lanes) {
                fetchAhead<4 * hn::MaxLanes(bytes)>(source + i);
                const auto first = hn::LoadU(bytes, source + i);
                const auto second = hn::LoadU(bytes, source + i + lanes);
                const auto third = hn::LoadU(bytes, source + i + 2 * lanes);
                const auto fourth = hn::LoadU(bytes, source + i + 3 * lanes);
                store<stores>(first, bytes, target + i);
                store<stores>(second, bytes, target + i + lanes);
                store<stores>(third, bytes, target + i + 2 * lanes);
                store<stores>(fourth, bytes, target + i + 3 * lanes);
            }
            return i;
        },
        [&](std::size_t i, std::size_t left) { Plain::CopyBytes(source + i, target + i, left); });
}

void ShiftToGray(const std::uint8_t* HWY_RESTRICT source, std::uint8_t* HWY_RESTRICT target, std::size_t count,
                 int shift, Stores chosen)
{
    const hn::ScalableTag<std::uint16_t> words;
    const hn::Repartition<std::uint8_t, decltype(words)> bytes;
    const std::size_t lanes = hn::Lanes(words);
    convert(
        target, count, 1, chosen,
        [&](auto stores, std::size_t i) HWY_ATTR {
            for (; i + 2 * lanes <= count; i += 2 * lanes) {
                fetchAhead<4 * hn::MaxLanes(words)>(source + 2 * i);
                const auto first = hn::ShiftRightSame(loadWords(words, source + 2 * i), shift);
                const auto second = hn::ShiftRightSame(loadWords(words, source + 2 * (i + lanes)), shift);
                store<stores>(lowBytes(bytes, first, second), bytes, target + i);
            }
            return i;
        },
        [&](std::size_t i, std::size_t left) { Plain::ShiftToGray(source + 2 * i, target + i, left, shift); });
}

template <class Bytes, class Channel>
HWY_INLINE void storeColor(Bytes bytes, Channel first, Channel second, Channel third, bool reversed,
                           std::uint8_t* target)
{
    hn::StoreInterleaved3(reversed ? third : first, second, reversed ? first : third, bytes, target);
}

// Two 16-byte halves, or one, that are `apart` bytes from each other.
template <class Bytes>
HWY_INLINE hn::Vec<Bytes> loadHalves(Bytes bytes, const std::uint8_t* source, std::size_t apart)
{
    if constexpr (hn::MaxLanes(bytes) == 32) {
        const hn::Half<decltype(bytes)> half;
        return hn::Combine(bytes, hn::LoadU(half, source + apart), hn::LoadU(half, source));
    } else {
        return hn::LoadU(bytes, source);
    }
}

// Wide enough to be bound by memory, narrow enough for loads of single halves.
constexpr std::size_t halvesWidth = HWY_ARCH_X86 && HWY_MAX_BYTES >= 32 ? 32 : 16;

void Bytes3ToColor(const std::uint8_t* HWY_RESTRICT source, std::uint8_t* HWY_RESTRICT target, std::size_t count,
                   bool reversed, std::size_t pixelBytes, Stores chosen)
{
    const auto rest = [&](std::size_t i, std::size_t left) {
        Plain::Bytes3ToColor(source + 3 * i, target + pixelBytes * i, left, reversed, pixelBytes);
    };
    if (pixelBytes != 4) {
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
    convertToFour<3>(bytes, source, target, count, 2, chosen, color, rest); // a load reads 4 bytes too many
}

void Words3ToColor(const std::uint8_t* HWY_RESTRICT source, std::uint8_t* HWY_RESTRICT target, std::size_t count,
                   int shift, bool reversed, std::size_t pixelBytes, Stores chosen)
{
    const auto rest = [&](std::size_t i, std::size_t left) {
        Plain::Words3ToColor(source + 6 * i, target + pixelBytes * i, left, shift, reversed, pixelBytes);
    };
    if (pixelBytes != 4) {
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
    convertToFour<6>(bytes, source, target, count, 0, chosen, color, rest);
}

void Bytes4ToColor(const std::uint8_t* HWY_RESTRICT source, std::uint8_t* HWY_RESTRICT target, std::size_t count,
                   bool reversed, std::size_t pixelBytes, Stores chosen)
{
    const hn::ScalableTag<std::uint8_t> bytes;
    const auto rest = [&](std::size_t i, std::size_t left) {
        Plain::Bytes4ToColor(source + 4 * i, target + pixelBytes * i, left, reversed, pixelBytes);
    };
    if (pixelBytes != 4) {
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
    convertToFour<4>(bytes, source, target, count, 0, chosen, color, rest);
}

void Fields30ToColor(const std::uint8_t* HWY_RESTRICT source, std::uint8_t* HWY_RESTRICT target, std::size_t count,
                     bool reversed, std::size_t pixelBytes, Stores chosen)
{
    const hn::ScalableTag<std::uint8_t> bytes;
    const auto rest = [&](std::size_t i, std::size_t left) {
        Plain::Fields30ToColor(source + 4 * i, target + pixelBytes * i, left, reversed, pixelBytes);
    };
    if (pixelBytes != 4) {
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
    convertToFour<4>(bytes, source, target, count, 0, chosen, color, rest);
}

// Two groups, eight pixels, in each 16 bytes: every 16-bit lane gets the two bytes that hold its pixel, and the
// multiplication moves the pixel's top bit to the lane's top bit.
template <Stores stores, typename Target>
std::size_t packed10(const std::uint8_t* HWY_RESTRICT source, const std::uint8_t* end, Target* HWY_RESTRICT target,
                     std::size_t count, bool swap, std::size_t ahead)
{
    constexpr std::size_t width = halvesWidth;
    const hn::FixedTag<std::uint8_t, width> bytes;
    const hn::FixedTag<std::uint16_t, width / 2> words;
    alignas(16) static constexpr std::uint8_t swapped[16] = {1, 0, 2, 1, 3, 2, 4, 3, 6, 5, 7, 6, 8, 7, 9, 8};
    alignas(16) static constexpr std::uint8_t native[16] = {6, 7, 5, 6, 4, 5, 3, 4, 11, 12, 10, 11, 9, 10, 8, 9};
    alignas(16) static constexpr std::uint16_t factors[8] = {1, 4, 16, 64, 1, 4, 16, 64};
    const auto order = hn::LoadDup128(bytes, swap ? swapped : native);
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

// Loads of single entries: gathers are slower, on some processors by far.
void LookUp(const std::uint8_t* HWY_RESTRICT source, std::uint32_t* HWY_RESTRICT target, std::size_t count,
            const std::uint32_t* HWY_RESTRICT table, Stores chosen)
{
    const hn::FixedTag<std::uint32_t, 4> pixels;
    const auto four = [&](unsigned indices) HWY_ATTR {
        auto found = hn::Set(pixels, table[indices & 0xFF]);
        found = hn::InsertLane(found, 1, table[(indices >> 8) & 0xFF]);
        found = hn::InsertLane(found, 2, table[(indices >> 16) & 0xFF]);
        return hn::InsertLane(found, 3, table[indices >> 24]);
    };
    auto* const bytes = reinterpret_cast<std::uint8_t*>(target);
    convert(
        bytes, count, 4, chosen,
        [&](auto stores, std::size_t i) HWY_ATTR {
            for (; HWY_TARGET != HWY_SSSE3 && i + 8 <= count; i += 8) { // which has no such instruction
                std::uint64_t eight = 0;
                std::memcpy(&eight, source + i, sizeof eight);
                store<stores>(four(static_cast<std::uint32_t>(eight)), pixels, bytes + 4 * i);
                store<stores>(four(static_cast<std::uint32_t>(eight >> 32)), pixels, bytes + 4 * i + 16);
            }
            return i;
        },
        [&](std::size_t i, std::size_t left) { Plain::LookUp(source + i, target + i, left, table); });
}

// Pixels cannot be split off before a boundary, which groups of four must reach together.
void Packed10ToGray(const std::uint8_t* source, const std::uint8_t* end, std::uint8_t* target, std::size_t count,
                    bool swap, std::size_t ahead, Stores stores)
{
    const bool isAligned = reinterpret_cast<std::uintptr_t>(target) % halvesWidth == 0;
    const std::size_t done = stores == Stores::Streamed && isAligned
                                 ? packed10<Stores::Streamed>(source, end, target, count, swap, ahead)
                                 : packed10<Stores::Cached>(source, end, target, count, swap, ahead);
    Plain::packed10(source + done / 4 * 5, end, target + done, count - done, swap);
}

void Packed10ToWords(const std::uint8_t* source, const std::uint8_t* end, std::uint16_t* target, std::size_t count,
                     bool swap, std::size_t ahead)
{
    const std::size_t done = packed10<Stores::Cached>(source, end, target, count, swap, ahead);
    Plain::packed10(source + done / 4 * 5, end, target + done, count - done, swap);
}

#endif

} // namespace HWY_NAMESPACE
} // namespace Vistrel::RowKernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Vistrel::RowKernels {

HWY_EXPORT(CopyBytes);
HWY_EXPORT(ShiftToGray);
HWY_EXPORT(Bytes3ToColor);
HWY_EXPORT(Bytes4ToColor);
HWY_EXPORT(Words3ToColor);
HWY_EXPORT(Fields30ToColor);
HWY_EXPORT(Packed10ToGray);
HWY_EXPORT(Packed10ToWords);
HWY_EXPORT(LookUp);

#define VISTREL_CHOSEN(Kernel) (areVectorsAllowed() ? HWY_DYNAMIC_DISPATCH(Kernel) : Plain::Kernel)

bool areVectorsAllowed()
{
    static const bool allowed = qgetenv("VISTREL_SIMD") != "scalar";
    return allowed;
}

void copyBytes(const std::uint8_t* source, std::uint8_t* target, std::size_t count, Stores stores)
{
    VISTREL_CHOSEN(CopyBytes)(source, target, count, stores);
}

void shiftToGray(const std::uint8_t* source, std::uint8_t* target, std::size_t count, int shift, Stores stores)
{
    VISTREL_CHOSEN(ShiftToGray)(source, target, count, shift, stores);
}

void bytes3ToColor(const std::uint8_t* source, std::uint8_t* target, std::size_t count, bool reversed,
                   std::size_t pixelBytes, Stores stores)
{
    VISTREL_CHOSEN(Bytes3ToColor)(source, target, count, reversed, pixelBytes, stores);
}

void bytes4ToColor(const std::uint8_t* source, std::uint8_t* target, std::size_t count, bool reversed,
                   std::size_t pixelBytes, Stores stores)
{
    VISTREL_CHOSEN(Bytes4ToColor)(source, target, count, reversed, pixelBytes, stores);
}

void words3ToColor(const std::uint8_t* source, std::uint8_t* target, std::size_t count, int shift, bool reversed,
                   std::size_t pixelBytes, Stores stores)
{
    VISTREL_CHOSEN(Words3ToColor)(source, target, count, shift, reversed, pixelBytes, stores);
}

void fields30ToColor(const std::uint8_t* source, std::uint8_t* target, std::size_t count, bool reversed,
                     std::size_t pixelBytes, Stores stores)
{
    VISTREL_CHOSEN(Fields30ToColor)(source, target, count, reversed, pixelBytes, stores);
}

void packed10ToGray(const std::uint8_t* source, const std::uint8_t* end, std::uint8_t* target, std::size_t count,
                    bool swap, std::size_t ahead, Stores stores)
{
    VISTREL_CHOSEN(Packed10ToGray)(source, end, target, count, swap, ahead, stores);
}

void packed10ToWords(const std::uint8_t* source, const std::uint8_t* end, std::uint16_t* target, std::size_t count,
                     bool swap, std::size_t ahead)
{
    VISTREL_CHOSEN(Packed10ToWords)(source, end, target, count, swap, ahead);
}

void lookUp(const std::uint8_t* source, std::uint32_t* target, std::size_t count, const std::uint32_t* table,
            Stores stores)
{
    VISTREL_CHOSEN(LookUp)(source, target, count, table, stores);
}

} // namespace Vistrel::RowKernels
#endif
