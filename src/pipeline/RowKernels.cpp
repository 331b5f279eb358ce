// SPDX-License-Identifier: MIT
// The inner blocks of the row loops, compiled once for each kind of vector unit and chosen at run time.
#include "pipeline/RowKernels.h"

#include "pipeline/PlainKernels.h"

#include <QtCore/QByteArray>

#include <cstring>

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

void CopyBytes(const std::uint8_t* HWY_RESTRICT source, std::uint8_t* HWY_RESTRICT target, std::size_t count)
{
    const hn::ScalableTag<std::uint8_t> bytes;
    const std::size_t lanes = hn::Lanes(bytes);
    std::size_t i = 0;
    for (; i + 4 * lanes <= count; i += 4 * lanes) {
        const auto first = hn::LoadU(bytes, source + i);
        const auto second = hn::LoadU(bytes, source + i + lanes);
        const auto third = hn::LoadU(bytes, source + i + 2 * lanes);
        const auto fourth = hn::LoadU(bytes, source + i + 3 * lanes);
        hn::StoreU(first, bytes, target + i);
        hn::StoreU(second, bytes, target + i + lanes);
        hn::StoreU(third, bytes, target + i + 2 * lanes);
        hn::StoreU(fourth, bytes, target + i + 3 * lanes);
    }
    Plain::CopyBytes(source + i, target + i, count - i);
}

void ShiftToGray(const std::uint8_t* HWY_RESTRICT source, std::uint8_t* HWY_RESTRICT target, std::size_t count,
                 int shift)
{
    const hn::ScalableTag<std::uint16_t> words;
    const hn::Repartition<std::uint8_t, decltype(words)> bytes;
    const std::size_t lanes = hn::Lanes(words);
    std::size_t i = 0;
    for (; i + 2 * lanes <= count; i += 2 * lanes) {
        const auto first = hn::ShiftRightSame(loadWords(words, source + 2 * i), shift);
        const auto second = hn::ShiftRightSame(loadWords(words, source + 2 * (i + lanes)), shift);
        hn::StoreU(lowBytes(bytes, first, second), bytes, target + i);
    }
    Plain::ShiftToGray(source + 2 * i, target + i, count - i, shift);
}

template <class Bytes, class Channel>
HWY_INLINE void storeColor(Bytes bytes, Channel first, Channel second, Channel third, bool reversed,
                           std::size_t pixelBytes, std::uint8_t* target)
{
    const auto a = reversed ? third : first;
    const auto c = reversed ? first : third;
    if (pixelBytes == 4)
        hn::StoreInterleaved4(a, second, c, hn::Set(bytes, 0xFF), bytes, target);
    else
        hn::StoreInterleaved3(a, second, c, bytes, target);
}

void Bytes3ToColor(const std::uint8_t* HWY_RESTRICT source, std::uint8_t* HWY_RESTRICT target, std::size_t count,
                   bool reversed, std::size_t pixelBytes)
{
    const hn::ScalableTag<std::uint8_t> bytes;
    const std::size_t lanes = hn::Lanes(bytes);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        hn::Vec<decltype(bytes)> first, second, third;
        hn::LoadInterleaved3(bytes, source + 3 * i, first, second, third);
        storeColor(bytes, first, second, third, reversed, pixelBytes, target + pixelBytes * i);
    }
    Plain::Bytes3ToColor(source + 3 * i, target + pixelBytes * i, count - i, reversed, pixelBytes);
}

void Words3ToColor(const std::uint8_t* HWY_RESTRICT source, std::uint8_t* HWY_RESTRICT target, std::size_t count,
                   int shift, bool reversed, std::size_t pixelBytes)
{
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
        storeColor(bytes, reduced(a0, b0), reduced(a1, b1), reduced(a2, b2), reversed, pixelBytes,
                   target + pixelBytes * i);
    }
    Plain::Words3ToColor(source + 6 * i, target + pixelBytes * i, count - i, shift, reversed, pixelBytes);
}

void Bytes4ToColor(const std::uint8_t* HWY_RESTRICT source, std::uint8_t* HWY_RESTRICT target, std::size_t count,
                   bool reversed, std::size_t pixelBytes)
{
    const hn::ScalableTag<std::uint8_t> bytes;
    const hn::Repartition<std::uint32_t, decltype(bytes)> pixels;
    std::size_t i = 0;
    if (pixelBytes == 4) {
        const std::size_t lanes = hn::Lanes(pixels);
        const auto low = hn::Set(pixels, 0xFF);
        for (; i + lanes <= count; i += lanes) {
            auto pixel = hn::BitCast(pixels, hn::LoadU(bytes, source + 4 * i));
            if (reversed) {
                const auto red = hn::And(hn::ShiftRight<16>(pixel), low);
                const auto blue = hn::ShiftLeft<16>(hn::And(pixel, low));
                pixel = hn::Or(hn::Or(red, blue), hn::And(pixel, hn::Set(pixels, 0xFF00)));
            }
            hn::StoreU(hn::BitCast(bytes, hn::Or(pixel, hn::Set(pixels, 0xFF000000u))), bytes, target + 4 * i);
        }
    } else {
        const std::size_t lanes = hn::Lanes(bytes);
        for (; i + lanes <= count; i += lanes) {
            hn::Vec<decltype(bytes)> first, second, third, fourth;
            hn::LoadInterleaved4(bytes, source + 4 * i, first, second, third, fourth);
            storeColor(bytes, first, second, third, reversed, pixelBytes, target + pixelBytes * i);
        }
    }
    Plain::Bytes4ToColor(source + 4 * i, target + pixelBytes * i, count - i, reversed, pixelBytes);
}

void Fields30ToColor(const std::uint8_t* HWY_RESTRICT source, std::uint8_t* HWY_RESTRICT target, std::size_t count,
                     bool reversed, std::size_t pixelBytes)
{
    const hn::ScalableTag<std::uint8_t> bytes;
    const hn::Repartition<std::uint32_t, decltype(bytes)> pixels;
    std::size_t i = 0;
    if (pixelBytes == 4) {
        const std::size_t lanes = hn::Lanes(pixels);
        const auto low = hn::Set(pixels, 0xFF);
        for (; i + lanes <= count; i += lanes) {
            const auto word = hn::BitCast(pixels, hn::LoadU(bytes, source + 4 * i));
            const auto first = hn::And(hn::ShiftRight<2>(word), low);
            const auto second = hn::ShiftLeft<8>(hn::And(hn::ShiftRight<12>(word), low));
            const auto third = hn::And(hn::ShiftRight<22>(word), low);
            const auto pixel =
                reversed ? hn::Or(third, hn::ShiftLeft<16>(first)) : hn::Or(first, hn::ShiftLeft<16>(third));
            const auto opaque = hn::Or(second, hn::Set(pixels, 0xFF000000u));
            hn::StoreU(hn::BitCast(bytes, hn::Or(pixel, opaque)), bytes, target + 4 * i);
        }
    } else {
        const std::size_t lanes = hn::Lanes(bytes);
        for (; i + lanes <= count; i += lanes) {
            hn::Vec<decltype(bytes)> b0, b1, b2, b3;
            hn::LoadInterleaved4(bytes, source + 4 * i, b0, b1, b2, b3);
            const auto first = hn::Or(hn::ShiftRight<2>(b0), hn::ShiftLeft<6>(b1));
            const auto second = hn::Or(hn::ShiftRight<4>(b1), hn::ShiftLeft<4>(b2));
            const auto third = hn::Or(hn::ShiftRight<6>(b2), hn::ShiftLeft<2>(b3));
            storeColor(bytes, first, second, third, reversed, pixelBytes, target + pixelBytes * i);
        }
    }
    Plain::Fields30ToColor(source + 4 * i, target + pixelBytes * i, count - i, reversed, pixelBytes);
}

// Two groups, eight pixels, in each 16 bytes: every 16-bit lane gets the two bytes that hold its pixel, and the
// multiplication moves the pixel's top bit to the lane's top bit.
template <typename Target>
void Packed10(const std::uint8_t* HWY_RESTRICT source, const std::uint8_t* end, Target* HWY_RESTRICT target,
              std::size_t count, bool swap, std::size_t ahead)
{
    constexpr std::size_t width = HWY_ARCH_X86 && HWY_MAX_BYTES >= 32 ? 32 : 16;
    const hn::FixedTag<std::uint8_t, width> bytes;
    const hn::FixedTag<std::uint16_t, width / 2> words;
    alignas(16) static constexpr std::uint8_t swapped[16] = {1, 0, 2, 1, 3, 2, 4, 3, 6, 5, 7, 6, 8, 7, 9, 8};
    alignas(16) static constexpr std::uint8_t native[16] = {6, 7, 5, 6, 4, 5, 3, 4, 11, 12, 10, 11, 9, 10, 8, 9};
    alignas(16) static constexpr std::uint16_t factors[8] = {1, 4, 16, 64, 1, 4, 16, 64};
    const auto order = hn::LoadDup128(bytes, swap ? swapped : native);
    const auto factor = hn::LoadDup128(words, factors);
    const auto aligned = [&](const std::uint8_t* groups) HWY_ATTR {
        hn::Vec<decltype(bytes)> pairs;
        if constexpr (width == 32) {
            const hn::Half<decltype(bytes)> half;
            pairs = hn::Combine(bytes, hn::LoadU(half, groups + 10), hn::LoadU(half, groups));
        } else {
            pairs = hn::LoadU(bytes, groups);
        }
        return hn::Mul(hn::BitCast(words, hn::TableLookupBytes(pairs, order)), factor);
    };
    constexpr std::size_t bytesRead = width / 16 * 20;
    std::size_t i = 0;
    for (; i + width <= count && end - source >= static_cast<std::ptrdiff_t>(bytesRead + 6); i += width) {
        hwy::Prefetch(source + ahead);
        const auto first = aligned(source);
        const auto second = aligned(source + bytesRead / 2);
        if constexpr (sizeof(Target) == 1) {
            hn::StoreU(lowBytes(bytes, hn::ShiftRight<8>(first), hn::ShiftRight<8>(second)), bytes, target + i);
        } else {
            hn::StoreU(hn::ShiftRight<6>(first), words, target + i);
            hn::StoreU(hn::ShiftRight<6>(second), words, target + i + width / 2);
        }
        source += bytesRead;
    }
    Plain::packed10(source, end, target + i, count - i, swap);
}

// Loads of single entries: gathers are slower, on some processors by far.
void LookUp(const std::uint8_t* HWY_RESTRICT source, std::uint32_t* HWY_RESTRICT target, std::size_t count,
            const std::uint32_t* HWY_RESTRICT table)
{
    const hn::FixedTag<std::uint32_t, 4> pixels;
    std::size_t i = 0;
    for (; HWY_TARGET != HWY_SSSE3 && i + 8 <= count; i += 8) { // which has no such instruction
        std::uint64_t eight = 0;
        std::memcpy(&eight, source + i, sizeof eight);
        const auto four = [&](unsigned indices) HWY_ATTR {
            auto found = hn::Set(pixels, table[indices & 0xFF]);
            found = hn::InsertLane(found, 1, table[(indices >> 8) & 0xFF]);
            found = hn::InsertLane(found, 2, table[(indices >> 16) & 0xFF]);
            return hn::InsertLane(found, 3, table[indices >> 24]);
        };
        hn::StoreU(four(static_cast<std::uint32_t>(eight)), pixels, target + i);
        hn::StoreU(four(static_cast<std::uint32_t>(eight >> 32)), pixels, target + i + 4);
    }
    Plain::LookUp(source + i, target + i, count - i, table);
}

void Packed10ToGray(const std::uint8_t* source, const std::uint8_t* end, std::uint8_t* target, std::size_t count,
                    bool swap, std::size_t ahead)
{
    Packed10(source, end, target, count, swap, ahead);
}

void Packed10ToWords(const std::uint8_t* source, const std::uint8_t* end, std::uint16_t* target, std::size_t count,
                     bool swap, std::size_t ahead)
{
    Packed10(source, end, target, count, swap, ahead);
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

void copyBytes(const std::uint8_t* source, std::uint8_t* target, std::size_t count)
{
    VISTREL_CHOSEN(CopyBytes)(source, target, count);
}

void shiftToGray(const std::uint8_t* source, std::uint8_t* target, std::size_t count, int shift)
{
    VISTREL_CHOSEN(ShiftToGray)(source, target, count, shift);
}

void bytes3ToColor(const std::uint8_t* source, std::uint8_t* target, std::size_t count, bool reversed,
                   std::size_t pixelBytes)
{
    VISTREL_CHOSEN(Bytes3ToColor)(source, target, count, reversed, pixelBytes);
}

void bytes4ToColor(const std::uint8_t* source, std::uint8_t* target, std::size_t count, bool reversed,
                   std::size_t pixelBytes)
{
    VISTREL_CHOSEN(Bytes4ToColor)(source, target, count, reversed, pixelBytes);
}

void words3ToColor(const std::uint8_t* source, std::uint8_t* target, std::size_t count, int shift, bool reversed,
                   std::size_t pixelBytes)
{
    VISTREL_CHOSEN(Words3ToColor)(source, target, count, shift, reversed, pixelBytes);
}

void fields30ToColor(const std::uint8_t* source, std::uint8_t* target, std::size_t count, bool reversed,
                     std::size_t pixelBytes)
{
    VISTREL_CHOSEN(Fields30ToColor)(source, target, count, reversed, pixelBytes);
}

void packed10ToGray(const std::uint8_t* source, const std::uint8_t* end, std::uint8_t* target, std::size_t count,
                    bool swap, std::size_t ahead)
{
    VISTREL_CHOSEN(Packed10ToGray)(source, end, target, count, swap, ahead);
}

void packed10ToWords(const std::uint8_t* source, const std::uint8_t* end, std::uint16_t* target, std::size_t count,
                     bool swap, std::size_t ahead)
{
    VISTREL_CHOSEN(Packed10ToWords)(source, end, target, count, swap, ahead);
}

void lookUp(const std::uint8_t* source, std::uint32_t* target, std::size_t count, const std::uint32_t* table)
{
    VISTREL_CHOSEN(LookUp)(source, target, count, table);
}

} // namespace Vistrel::RowKernels
#endif
