// SPDX-License-Identifier: MIT
// The inner blocks of the row loops, compiled once for each kind of vector unit and chosen at run time.
#include "pipeline/RowKernels.h"

#include <cstring>

// This compiler does not align the stack for vectors of more than 16 bytes on Windows.
#if defined(__MINGW32__) && !defined(__clang__)
#define HWY_DISABLED_TARGETS (HWY_SSE4 - 1) // wider ones have the lower bits
#endif

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "pipeline/RowKernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Vistrel::RowKernels {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// On a processor without vectors to speak of, only the plain loops at the functions' ends are left.
#if HWY_TARGET == HWY_SCALAR
#define VISTREL_VECTORS 0
#else
#define VISTREL_VECTORS 1
#endif

inline std::uint16_t wordAt(const std::uint8_t* bytes)
{
    std::uint16_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

#if VISTREL_VECTORS
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
#endif

void CopyBytes(const std::uint8_t* HWY_RESTRICT source, std::uint8_t* HWY_RESTRICT target, std::size_t count)
{
    std::size_t i = 0;
#if VISTREL_VECTORS
    const hn::ScalableTag<std::uint8_t> bytes;
    const std::size_t lanes = hn::Lanes(bytes);
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
#endif
    std::memcpy(target + i, source + i, count - i);
}

void ShiftToGray(const std::uint8_t* HWY_RESTRICT source, std::uint8_t* HWY_RESTRICT target, std::size_t count,
                 int shift)
{
    std::size_t i = 0;
#if VISTREL_VECTORS
    const hn::ScalableTag<std::uint16_t> words;
    const hn::Repartition<std::uint8_t, decltype(words)> bytes;
    const std::size_t lanes = hn::Lanes(words);
    for (; i + 2 * lanes <= count; i += 2 * lanes) {
        const auto first = hn::ShiftRightSame(loadWords(words, source + 2 * i), shift);
        const auto second = hn::ShiftRightSame(loadWords(words, source + 2 * (i + lanes)), shift);
        hn::StoreU(lowBytes(bytes, first, second), bytes, target + i);
    }
#endif
    for (; i < count; ++i)
        target[i] = static_cast<std::uint8_t>(wordAt(source + 2 * i) >> shift);
}

void Bytes3ToRgbx(const std::uint8_t* HWY_RESTRICT source, std::uint8_t* HWY_RESTRICT target, std::size_t count,
                  bool reversed)
{
    std::size_t i = 0;
#if VISTREL_VECTORS
    const hn::ScalableTag<std::uint8_t> bytes;
    const std::size_t lanes = hn::Lanes(bytes);
    const auto opaque = hn::Set(bytes, 0xFF);
    for (; i + lanes <= count; i += lanes) {
        hn::Vec<decltype(bytes)> first, second, third;
        hn::LoadInterleaved3(bytes, source + 3 * i, first, second, third);
        if (reversed)
            hn::StoreInterleaved4(third, second, first, opaque, bytes, target + 4 * i);
        else
            hn::StoreInterleaved4(first, second, third, opaque, bytes, target + 4 * i);
    }
#endif
    for (; i < count; ++i) {
        target[4 * i] = source[3 * i + (reversed ? 2 : 0)];
        target[4 * i + 1] = source[3 * i + 1];
        target[4 * i + 2] = source[3 * i + (reversed ? 0 : 2)];
        target[4 * i + 3] = 0xFF;
    }
}

void Bytes4ToRgbx(const std::uint8_t* HWY_RESTRICT source, std::uint8_t* HWY_RESTRICT target, std::size_t count,
                  bool reversed)
{
    std::size_t i = 0;
#if VISTREL_VECTORS
    const hn::ScalableTag<std::uint8_t> bytes;
    const hn::Repartition<std::uint32_t, decltype(bytes)> pixels;
    const std::size_t lanes = hn::Lanes(pixels);
    const auto opaque = hn::Set(pixels, 0xFF000000u);
    const auto green = hn::Set(pixels, 0x0000FF00u);
    const auto low = hn::Set(pixels, 0x000000FFu);
    for (; i + lanes <= count; i += lanes) {
        auto pixel = hn::BitCast(pixels, hn::LoadU(bytes, source + 4 * i));
        if (reversed) {
            const auto red = hn::And(hn::ShiftRight<16>(pixel), low);
            const auto blue = hn::ShiftLeft<16>(hn::And(pixel, low));
            pixel = hn::Or(hn::Or(red, blue), hn::And(pixel, green));
        }
        hn::StoreU(hn::BitCast(bytes, hn::Or(pixel, opaque)), bytes, target + 4 * i);
    }
#endif
    for (; i < count; ++i) {
        target[4 * i] = source[4 * i + (reversed ? 2 : 0)];
        target[4 * i + 1] = source[4 * i + 1];
        target[4 * i + 2] = source[4 * i + (reversed ? 0 : 2)];
        target[4 * i + 3] = 0xFF;
    }
}

void Words3ToRgbx(const std::uint8_t* HWY_RESTRICT source, std::uint8_t* HWY_RESTRICT target, std::size_t count,
                  int shift, bool reversed)
{
    std::size_t i = 0;
#if VISTREL_VECTORS
    const hn::ScalableTag<std::uint16_t> words;
    const hn::Repartition<std::uint8_t, decltype(words)> bytes;
    const std::size_t lanes = hn::Lanes(words);
    const auto opaque = hn::Set(bytes, 0xFF);
    const auto reduce = [&](auto value) HWY_ATTR { return hn::ShiftRightSame(value, shift); };
    for (; i + 2 * lanes <= count; i += 2 * lanes) {
        hn::Vec<decltype(words)> a0, a1, a2, b0, b1, b2;
        hn::LoadInterleaved3(words, reinterpret_cast<const std::uint16_t*>(source + 6 * i), a0, a1, a2);
        hn::LoadInterleaved3(words, reinterpret_cast<const std::uint16_t*>(source + 6 * (i + lanes)), b0, b1, b2);
        const auto first = lowBytes(bytes, reduce(a0), reduce(b0));
        const auto second = lowBytes(bytes, reduce(a1), reduce(b1));
        const auto third = lowBytes(bytes, reduce(a2), reduce(b2));
        if (reversed)
            hn::StoreInterleaved4(third, second, first, opaque, bytes, target + 4 * i);
        else
            hn::StoreInterleaved4(first, second, third, opaque, bytes, target + 4 * i);
    }
#endif
    for (; i < count; ++i) {
        target[4 * i] = static_cast<std::uint8_t>(wordAt(source + 6 * i + (reversed ? 4 : 0)) >> shift);
        target[4 * i + 1] = static_cast<std::uint8_t>(wordAt(source + 6 * i + 2) >> shift);
        target[4 * i + 2] = static_cast<std::uint8_t>(wordAt(source + 6 * i + (reversed ? 0 : 4)) >> shift);
        target[4 * i + 3] = 0xFF;
    }
}

void Fields30ToRgbx(const std::uint8_t* HWY_RESTRICT source, std::uint8_t* HWY_RESTRICT target, std::size_t count,
                    bool reversed)
{
    std::size_t i = 0;
#if VISTREL_VECTORS
    const hn::ScalableTag<std::uint8_t> bytes;
    const hn::Repartition<std::uint32_t, decltype(bytes)> pixels;
    const std::size_t lanes = hn::Lanes(pixels);
    const auto opaque = hn::Set(pixels, 0xFF000000u);
    const auto low = hn::Set(pixels, 0xFFu);
    for (; i + lanes <= count; i += lanes) {
        const auto word = hn::BitCast(pixels, hn::LoadU(bytes, source + 4 * i));
        const auto first = hn::And(hn::ShiftRight<2>(word), low);
        const auto second = hn::ShiftLeft<8>(hn::And(hn::ShiftRight<12>(word), low));
        const auto third = hn::And(hn::ShiftRight<22>(word), low);
        const auto pixel = reversed ? hn::Or(third, hn::ShiftLeft<16>(first)) : hn::Or(first, hn::ShiftLeft<16>(third));
        hn::StoreU(hn::BitCast(bytes, hn::Or(hn::Or(pixel, second), opaque)), bytes, target + 4 * i);
    }
#endif
    for (; i < count; ++i) {
        const std::uint32_t word = source[4 * i] | std::uint32_t{source[4 * i + 1]} << 8 |
                                   std::uint32_t{source[4 * i + 2]} << 16 | std::uint32_t{source[4 * i + 3]} << 24;
        target[4 * i] = static_cast<std::uint8_t>(word >> (reversed ? 22 : 2));
        target[4 * i + 1] = static_cast<std::uint8_t>(word >> 12);
        target[4 * i + 2] = static_cast<std::uint8_t>(word >> (reversed ? 2 : 22));
        target[4 * i + 3] = 0xFF;
    }
}

// Two groups, eight pixels, at a time: each 16-bit lane gets the two bytes that hold its pixel, the multiplication
// moves the pixel's top bit to the lane's top bit, and the upper byte is the result.
std::size_t Packed10ToGray([[maybe_unused]] const std::uint8_t* HWY_RESTRICT source,
                           [[maybe_unused]] const std::uint8_t* end, [[maybe_unused]] std::uint8_t* HWY_RESTRICT target,
                           [[maybe_unused]] std::size_t count, [[maybe_unused]] bool swap)
{
    std::size_t i = 0;
#if VISTREL_VECTORS
    const hn::FixedTag<std::uint8_t, 16> bytes;
    const hn::FixedTag<std::uint16_t, 8> words;
    alignas(16) static constexpr std::uint8_t swapped[16] = {1, 0, 2, 1, 3, 2, 4, 3, 6, 5, 7, 6, 8, 7, 9, 8};
    alignas(16) static constexpr std::uint8_t native[16] = {6, 7, 5, 6, 4, 5, 3, 4, 11, 12, 10, 11, 9, 10, 8, 9};
    alignas(16) static constexpr std::uint16_t factors[8] = {1, 4, 16, 64, 1, 4, 16, 64};
    const auto order = hn::Load(bytes, swap ? swapped : native);
    const auto factor = hn::Load(words, factors);
    const auto eight = [&](const std::uint8_t* groups) HWY_ATTR {
        const auto lanes = hn::BitCast(words, hn::TableLookupBytes(hn::LoadU(bytes, groups), order));
        return hn::ShiftRight<8>(hn::Mul(lanes, factor));
    };
    for (; i + 16 <= count && end - source >= 26; i += 16, source += 20)
        hn::StoreU(lowBytes(bytes, eight(source), eight(source + 10)), bytes, target + i);
#endif
    return i;
}

#undef VISTREL_VECTORS

} // namespace HWY_NAMESPACE
} // namespace Vistrel::RowKernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Vistrel::RowKernels {

HWY_EXPORT(CopyBytes);
HWY_EXPORT(ShiftToGray);
HWY_EXPORT(Bytes3ToRgbx);
HWY_EXPORT(Bytes4ToRgbx);
HWY_EXPORT(Words3ToRgbx);
HWY_EXPORT(Fields30ToRgbx);
HWY_EXPORT(Packed10ToGray);

void copyBytes(const std::uint8_t* source, std::uint8_t* target, std::size_t count)
{
    HWY_DYNAMIC_DISPATCH(CopyBytes)(source, target, count);
}

void shiftToGray(const std::uint8_t* source, std::uint8_t* target, std::size_t count, int shift)
{
    HWY_DYNAMIC_DISPATCH(ShiftToGray)(source, target, count, shift);
}

void bytes3ToRgbx(const std::uint8_t* source, std::uint8_t* target, std::size_t count, bool reversed)
{
    HWY_DYNAMIC_DISPATCH(Bytes3ToRgbx)(source, target, count, reversed);
}

void bytes4ToRgbx(const std::uint8_t* source, std::uint8_t* target, std::size_t count, bool reversed)
{
    HWY_DYNAMIC_DISPATCH(Bytes4ToRgbx)(source, target, count, reversed);
}

void words3ToRgbx(const std::uint8_t* source, std::uint8_t* target, std::size_t count, int shift, bool reversed)
{
    HWY_DYNAMIC_DISPATCH(Words3ToRgbx)(source, target, count, shift, reversed);
}

void fields30ToRgbx(const std::uint8_t* source, std::uint8_t* target, std::size_t count, bool reversed)
{
    HWY_DYNAMIC_DISPATCH(Fields30ToRgbx)(source, target, count, reversed);
}

std::size_t packed10ToGray(const std::uint8_t* source, const std::uint8_t* end, std::uint8_t* target, std::size_t count,
                           bool swap)
{
    return HWY_DYNAMIC_DISPATCH(Packed10ToGray)(source, end, target, count, swap);
}

void lookUp(const std::uint8_t* source, std::uint32_t* target, std::size_t count, const std::uint32_t* table)
{
    for (std::size_t i = 0; i < count; ++i)
        target[i] = table[source[i]];
}

} // namespace Vistrel::RowKernels
#endif
