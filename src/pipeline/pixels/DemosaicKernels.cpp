// SPDX-License-Identifier: MIT
// One row of the demosaic, compiled once for each kind of vector unit and chosen at run time.
#include "pipeline/pixels/DemosaicKernels.h"

#include "pipeline/pixels/PlainKernels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "pipeline/pixels/DemosaicKernels.cpp"
#include <hwy/foreach_target.h>

#include "pipeline/pixels/KernelTools-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Vistrel::DemosaicKernels {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

using namespace Plain; // there are no vectors

#else

namespace hn = hwy::HWY_NAMESPACE;

// Sites, or half as many in lanes twice as wide.
template <class Values>
HWY_INLINE hn::Vec<Values> load(Values values, const std::uint16_t* sites)
{
    if constexpr (sizeof(hn::TFromD<Values>) == 2)
        return hn::LoadU(values, sites);
    else
        return hn::PromoteTo(values, hn::LoadU(hn::Rebind<std::uint16_t, Values>(), sites));
}

template <class Values>
HWY_INLINE hn::Vec<Values> sum(Values values, const std::uint16_t* a, const std::uint16_t* b)
{
    return hn::Add(load(values, a), load(values, b));
}

// Calls `use` with what is added up around every other site of a row, those of the even columns or of the odd ones.
template <bool even, class Values, class Use>
HWY_INLINE void around(Values values, const Rows& rows, std::size_t i, Use&& use)
{
    const std::uint16_t* const* const own = rows.columns[even ? 0 : 1];
    const std::uint16_t* const* const between = rows.columns[even ? 1 : 0];
    const std::size_t right = even ? i : i + 1; // between sites i and i + 1
    const auto sum = [&](const std::uint16_t* a, std::size_t atA, const std::uint16_t* b, std::size_t atB)
                         HWY_ATTR { return hn::Add(load(values, a + atA), load(values, b + atB)); };
    use(load(values, own[2] + i), sum(between[2], right - 1, between[2], right), sum(own[1], i, own[3], i),
        hn::Add(sum(between[1], right - 1, between[3], right - 1), sum(between[1], right, between[3], right)),
        sum(own[2], i - 1, own[2], i + 1), sum(own[0], i, own[4], i));
}

// From levels of 16 bits, none of them negative.
template <class Words, class Word>
HWY_INLINE Word lowerHalf(Words words, Word first, Word second)
{
    const auto most = hn::Set(words, 255);
    return hn::Or(hn::Min(first, most), hn::ShiftLeft<8>(hn::Min(second, most)));
}

template <class Words, class Word>
HWY_INLINE Word upperHalf(Words words, Word third)
{
    return hn::Or(hn::Min(third, hn::Set(words, 255)), hn::Set(words, 0xFF00));
}

// Beyond this the processor's own look-ahead ends, which keeps within a page.
constexpr std::size_t ahead = 1024;

// Sums of narrow sites in 16 bits. Only a level below 0 would need a sign: the subtraction stops at 0. What the last
// shift would drop is divided out before, wherever that changes nothing.
template <bool evenIsColored>
std::size_t interpolateNarrow(const Rows& rows, std::uint8_t* HWY_RESTRICT target, std::size_t count, const Kind& kind)
{
    const hn::ScalableTag<std::uint16_t> words;
    const std::size_t pairs = hn::Lanes(words);
    const bool isRed = kind.isRed;
    const int shift = kind.shift;
    const auto level = [&](auto positive, auto negative, int bits)
                           HWY_ATTR { return hn::ShiftRightSame(hn::SaturatedSub(positive, negative), bits + shift); };
    std::size_t i = 0;
    for (; 2 * (i + pairs) <= count; i += pairs) {
        hwy::Prefetch(target + 8 * i + ahead);
        hwy::Prefetch(target + 8 * i + ahead + 64);
        hn::Vec<decltype(words)> coloredLower, coloredUpper, greenLower, greenUpper;
        around<evenIsColored>(
            words, rows, i,
            [&](auto centre, auto beside, auto above, auto diagonal, auto farBeside, auto farAbove) HWY_ATTR {
                // 4 c + 2 (beside + above) - far, and 3 c + diagonal - 3/4 far.
                const auto far = hn::Add(farBeside, farAbove);
                const auto twice = hn::Add(centre, centre);
                const auto cross = hn::Add(hn::Add(beside, above), hn::Add(twice, hn::Set(words, 2)));
                const auto corners = hn::Add(hn::Add(twice, centre), hn::Add(diagonal, hn::Set(words, 2)));
                const auto thrice = hn::Add(hn::Add(far, far), hn::Add(far, hn::Set(words, 3)));
                const auto own = hn::ShiftRightSame(centre, shift);
                const auto green = level(hn::Add(cross, cross), far, 3);
                const auto opposite = level(corners, hn::ShiftRight<2>(thrice), 2);
                coloredLower = lowerHalf(words, isRed ? own : opposite, green);
                coloredUpper = upperHalf(words, isRed ? opposite : own);
            });
        around<!evenIsColored>(
            words, rows, i,
            [&](auto centre, auto beside, auto above, auto diagonal, auto farBeside, auto farAbove) HWY_ATTR {
                // 5 c + 4 near - diagonal - far + 1/2 of the far ones across.
                const auto five = hn::Add(hn::ShiftLeft<2>(centre), hn::Add(centre, hn::Set(words, 4)));
                const auto color = [&](auto near, auto far, auto farAcross) HWY_ATTR {
                    const auto positive = hn::Add(hn::Add(hn::ShiftLeft<2>(near), five), hn::ShiftRight<1>(farAcross));
                    return level(positive, hn::Add(diagonal, far), 3);
                };
                const auto ofRow = color(beside, farBeside, farAbove);
                const auto ofColumn = color(above, farAbove, farBeside);
                greenLower = lowerHalf(words, isRed ? ofRow : ofColumn, hn::ShiftRightSame(centre, shift));
                greenUpper = upperHalf(words, isRed ? ofColumn : ofRow);
            });
        auto* const pixels = reinterpret_cast<std::uint16_t*>(target + 8 * i);
        if constexpr (evenIsColored)
            hn::StoreInterleaved4(coloredLower, coloredUpper, greenLower, greenUpper, words, pixels);
        else
            hn::StoreInterleaved4(greenLower, greenUpper, coloredLower, coloredUpper, words, pixels);
    }
    return 2 * i;
}

// Sums of any sites in 32 bits.
template <bool evenIsColored>
std::size_t interpolateWide(const Rows& rows, std::uint8_t* HWY_RESTRICT target, std::size_t count, const Kind& kind)
{
    const hn::ScalableTag<std::int32_t> sums;
    const hn::Repartition<std::uint16_t, decltype(sums)> words;
    const hn::RebindToSigned<decltype(words)> levels;
    const std::size_t pairs = hn::Lanes(sums);
    const bool isRed = kind.isRed;
    const int shift = kind.shift;
    // Levels, which 16 bits hold, in the half of a lane where their column belongs.
    const auto placed = [&](auto value, int bits, bool even) HWY_ATTR {
        value = even ? hn::ShiftRightSame(value, bits + shift) : hn::ShiftLeftSame(value, 16 - bits - shift);
        return hn::BitCast(levels, value);
    };
    const auto rounded = [&](auto value, int bits, bool even)
                             HWY_ATTR { return placed(hn::Add(value, hn::Set(sums, 1 << (bits - 1))), bits, even); };
    const auto inOrder = [&](auto colored, auto green) HWY_ATTR {
        const auto all = evenIsColored ? hn::OddEven(green, colored) : hn::OddEven(colored, green);
        return hn::BitCast(words, hn::Max(all, hn::Zero(levels)));
    };
    std::size_t i = 0;
    for (; 2 * (i + pairs) <= count; i += pairs) {
        hwy::Prefetch(target + 8 * i + ahead);
        hn::Vec<decltype(levels)> ownColor, green, opposite, ofRow, ownGreen, ofColumn;
        around<evenIsColored>(
            sums, rows, i,
            [&](auto centre, auto beside, auto above, auto diagonal, auto farBeside, auto farAbove) HWY_ATTR {
                const auto rest = hn::Sub(hn::ShiftLeft<2>(centre), hn::Add(farBeside, farAbove));
                const auto cross = hn::Add(rest, hn::ShiftLeft<1>(hn::Add(beside, above)));
                const auto corners = hn::Add(rest, hn::ShiftLeft<1>(hn::Add(rest, hn::ShiftLeft<1>(diagonal))));
                ownColor = placed(centre, 0, evenIsColored);
                green = rounded(cross, 3, evenIsColored);
                opposite = rounded(corners, 4, evenIsColored);
            });
        around<!evenIsColored>(
            sums, rows, i,
            [&](auto centre, auto beside, auto above, auto diagonal, auto farBeside, auto farAbove) HWY_ATTR {
                const auto rest = hn::Sub(centre, diagonal);
                const auto color = [&](auto near, auto far, auto farAcross) HWY_ATTR {
                    const auto sum = hn::Add(hn::ShiftLeft<3>(hn::Add(centre, near)), farAcross);
                    return rounded(hn::Add(sum, hn::ShiftLeft<1>(hn::Sub(rest, far))), 4, !evenIsColored);
                };
                ofRow = color(beside, farBeside, farAbove);
                ownGreen = placed(centre, 0, !evenIsColored);
                ofColumn = color(above, farAbove, farBeside);
            });
        const auto rowColor = inOrder(ownColor, ofRow);
        const auto otherColor = inOrder(opposite, ofColumn);
        hn::StoreInterleaved2(lowerHalf(words, isRed ? rowColor : otherColor, inOrder(green, ownGreen)),
                              upperHalf(words, isRed ? otherColor : rowColor), words,
                              reinterpret_cast<std::uint16_t*>(target + 8 * i));
    }
    return 2 * i;
}

void Interpolate(const Rows& rows, std::uint8_t* target, std::size_t count, const Kind& kind)
{
    std::size_t done = 0;
    if (rows.areNarrow && kind.colored == 0)
        done = interpolateNarrow<true>(rows, target, count, kind);
    else if (rows.areNarrow)
        done = interpolateNarrow<false>(rows, target, count, kind);
    else if (kind.colored == 0)
        done = interpolateWide<true>(rows, target, count, kind);
    else
        done = interpolateWide<false>(rows, target, count, kind);
    Plain::interpolateFrom(done, rows, target, count, kind);
}

void SplitBytes(const std::uint8_t* HWY_RESTRICT source, std::uint16_t* HWY_RESTRICT even,
                std::uint16_t* HWY_RESTRICT odd, std::size_t count)
{
    const hn::ScalableTag<std::uint16_t> words;
    const hn::Repartition<std::uint8_t, decltype(words)> bytes;
    const std::size_t pairs = hn::Lanes(words);
    std::size_t i = 0;
    for (; 2 * (i + pairs) <= count; i += pairs) {
        const auto pair = hn::BitCast(words, hn::LoadU(bytes, source + 2 * i));
        hn::StoreU(hn::And(pair, hn::Set(words, 0xFF)), words, even + i);
        hn::StoreU(hn::ShiftRight<8>(pair), words, odd + i);
    }
    Plain::SplitBytes(source + 2 * i, even + i, odd + i, count - 2 * i);
}

std::uint16_t SplitWords(const std::uint8_t* HWY_RESTRICT source, std::uint16_t* HWY_RESTRICT even,
                         std::uint16_t* HWY_RESTRICT odd, std::size_t count)
{
    const hn::ScalableTag<std::uint16_t> words;
    const hn::Repartition<std::uint8_t, decltype(words)> bytes;
    const std::size_t pairs = hn::Lanes(words);
    auto bits = hn::Zero(words);
    std::size_t i = 0;
    for (; 2 * (i + pairs) <= count; i += pairs) {
        const auto first = hn::BitCast(words, hn::LoadU(bytes, source + 4 * i));
        const auto second = hn::BitCast(words, hn::LoadU(bytes, source + 4 * i + 2 * pairs));
        hn::StoreU(hn::ConcatEven(words, second, first), words, even + i);
        hn::StoreU(hn::ConcatOdd(words, second, first), words, odd + i);
        bits = hn::Or(bits, hn::Or(first, second));
    }
    HWY_ALIGN std::uint16_t lanes[hn::MaxLanes(words)];
    hn::Store(bits, words, lanes);
    std::uint16_t all = Plain::SplitWords(source + 4 * i, even + i, odd + i, count - 2 * i);
    for (std::size_t lane = 0; lane < pairs; ++lane)
        all = static_cast<std::uint16_t>(all | lanes[lane]);
    return all;
}

#endif

} // namespace HWY_NAMESPACE
} // namespace Vistrel::DemosaicKernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Vistrel::DemosaicKernels {

HWY_EXPORT(Interpolate);
HWY_EXPORT(SplitBytes);
HWY_EXPORT(SplitWords);

void interpolate(const Rows& rows, std::uint8_t* target, std::size_t count, const Kind& kind)
{
    VISTREL_CHOSEN(Interpolate)(rows, target, count, kind);
}

void splitBytes(const std::uint8_t* source, std::uint16_t* even, std::uint16_t* odd, std::size_t count)
{
    VISTREL_CHOSEN(SplitBytes)(source, even, odd, count);
}

std::uint16_t splitWords(const std::uint8_t* source, std::uint16_t* even, std::uint16_t* odd, std::size_t count)
{
    return VISTREL_CHOSEN(SplitWords)(source, even, odd, count);
}

} // namespace Vistrel::DemosaicKernels
#endif
