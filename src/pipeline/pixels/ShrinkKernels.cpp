// SPDX-License-Identifier: MIT
// Many pixels into one: their largest values, or their sums and means.
#include "pipeline/pixels/PlainKernels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "pipeline/pixels/ShrinkKernels.cpp"
#include <hwy/foreach_target.h>

#include "pipeline/pixels/KernelTools-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Vistrel::ShrinkKernels {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

using namespace Plain; // there are no vectors

#else

namespace hn = hwy::HWY_NAMESPACE;

// Two vectors of `line` at a time.
template <class Values, class Load, class Combine>
HWY_INLINE std::size_t combineRows(Values values, const Rows& rows, bool isBegun, hn::TFromD<Values>* HWY_RESTRICT line,
                                   Load&& load, Combine&& combine)
{
    const std::size_t lanes = hn::Lanes(values);
    std::size_t i = 0;
    for (; i + 2 * lanes <= rows.bytes; i += 2 * lanes) {
        auto first = isBegun ? hn::LoadU(values, line + i) : hn::Zero(values);
        auto second = isBegun ? hn::LoadU(values, line + i + lanes) : hn::Zero(values);
        const std::uint8_t* source = rows.first + i;
        for (std::size_t row = 0; row < rows.count; ++row, source += rows.stride) {
            first = combine(first, load(source));
            second = combine(second, load(source + lanes));
        }
        hn::StoreU(first, values, line + i);
        hn::StoreU(second, values, line + i + lanes);
    }
    return i;
}

void MaximumOfRows(const Rows& rows, bool isBegun, std::uint8_t* line)
{
    const hn::ScalableTag<std::uint8_t> bytes;
    const std::size_t done = combineRows(
        bytes, rows, isBegun, line, [&](const std::uint8_t* source) HWY_ATTR { return hn::LoadU(bytes, source); },
        [](auto a, auto b) HWY_ATTR { return hn::Max(a, b); });
    Plain::maximumFrom(done, rows, isBegun, line);
}

void SumOfRows(const Rows& rows, bool isBegun, std::uint16_t* line)
{
    const hn::ScalableTag<std::uint16_t> words;
    const hn::Rebind<std::uint8_t, decltype(words)> bytes;
    const std::size_t done = combineRows(
        words, rows, isBegun, line,
        [&](const std::uint8_t* source) HWY_ATTR { return hn::PromoteTo(words, hn::LoadU(bytes, source)); },
        [](auto a, auto b) HWY_ATTR { return hn::Add(a, b); });
    Plain::sumFrom(done, rows, isBegun, line);
}

template <typename Value>
HWY_INLINE void groupLines(const Value* const* lines, std::size_t count, Value* HWY_RESTRICT pixels)
{
    const hn::ScalableTag<Value> values;
    for (std::size_t i = 0; i < count; i += hn::Lanes(values))
        hn::StoreInterleaved4(hn::LoadU(values, lines[0] + i), hn::LoadU(values, lines[1] + i),
                              hn::LoadU(values, lines[2] + i), hn::LoadU(values, lines[3] + i), values, pixels + 4 * i);
}

void GroupBytes(const std::uint8_t* const* lines, std::size_t count, std::uint8_t* pixels)
{
    groupLines(lines, count, pixels);
}

void GroupWords(const std::uint16_t* const* lines, std::size_t count, std::uint16_t* pixels)
{
    groupLines(lines, count, pixels);
}

template <class Vector>
HWY_INLINE Vector combined(Vector a, Vector b)
{
    if constexpr (sizeof(hn::TFromV<Vector>) == 1)
        return hn::Max(a, b);
    else
        return hn::Add(a, b);
}

template <typename Value>
HWY_INLINE void combineLine(const Columns& columns, Value* pixels, Value* HWY_RESTRICT target)
{
    const hn::ScalableTag<Value> values;
    for (std::size_t run = 1; run < columns.runs; ++run) {
        const Value* const HWY_RESTRICT single = pixels + 4 * (run - 1) * columns.pitch;
        Value* const HWY_RESTRICT pairs = pixels + 4 * run * columns.pitch;
        const std::size_t apart = std::size_t{4} << (run - 1);
        for (std::size_t i = 0; i < 4 * columns.count; i += hn::Lanes(values))
            hn::StoreU(combined(hn::LoadU(values, single + i), hn::LoadU(values, single + i + apart)), values,
                       pairs + i);
    }

    const hn::FixedTag<Value, 4> pixel;
    const int* const HWY_RESTRICT places = columns.places;
    const std::size_t count = columns.combined;
    const auto at = [&](std::size_t i) HWY_ATTR { return hn::LoadU(pixel, pixels + 4 * places[i]); };
    const std::size_t length = std::max<std::size_t>(columns.next.bytes, 64);
    for (std::size_t i = 0, fetched = 0; i < count;) {
        for (std::size_t row = 0; row < columns.next.count; ++row)
            hwy::Prefetch(columns.next.first + row * columns.next.stride + fetched);
        fetched += 64;
        const std::size_t end = fetched < length ? count * fetched / length : count;
        for (; columns.pieces == 2 && i < end; ++i)
            hn::StoreU(combined(at(i), at(i + count)), pixel, target + 4 * i);
        for (; i < end; ++i) {
            auto found = at(i);
            for (std::size_t piece = 1; piece < columns.pieces; ++piece)
                found = combined(found, at(i + piece * count));
            hn::StoreU(found, pixel, target + 4 * i);
        }
    }
}

void CombineBytes(const Columns& columns, std::uint8_t* pixels, std::uint8_t* target)
{
    combineLine(columns, pixels, target);
}

void CombineWords(const Columns& columns, std::uint16_t* pixels, std::uint16_t* target)
{
    combineLine(columns, pixels, target);
}

void Divide(const std::uint16_t* HWY_RESTRICT sums, const Numbers<std::uint16_t>& numbers,
            const std::uint16_t* HWY_RESTRICT wide, std::size_t count, std::uint8_t* HWY_RESTRICT means)
{
    const hn::ScalableTag<std::uint16_t> words;
    const hn::Rebind<std::uint8_t, decltype(words)> bytes;
    HWY_ALIGN std::uint16_t constants[4][8]; // of each channel, twice
    for (std::size_t i = 0; i < 8; ++i) {
        const std::uint16_t few = numbers.few[i % 4];
        const auto many = static_cast<std::uint16_t>(few + numbers.more[i % 4]);
        constants[0][i] = few;
        constants[1][i] = many;
        constants[2][i] = Plain::inverse(few);
        constants[3][i] = Plain::inverse(many);
    }
    const auto few = hn::LoadDup128(words, constants[0]);
    const auto many = hn::LoadDup128(words, constants[1]);
    const auto inverseOfFew = hn::LoadDup128(words, constants[2]);
    const auto inverseOfMany = hn::LoadDup128(words, constants[3]);
    for (std::size_t i = 0; i < 4 * count; i += hn::Lanes(words)) {
        const auto isWide = hn::MaskFromVec(hn::LoadU(words, wide + i));
        const auto number = hn::IfThenElse(isWide, many, few);
        const auto inverse = hn::IfThenElse(isWide, inverseOfMany, inverseOfFew);
        const auto sum = hn::Add(hn::LoadU(words, sums + i), hn::ShiftRight<1>(number));
        const auto quotient = hn::MulHigh(sum, inverse);
        const auto rest = hn::Sub(sum, hn::Mul(quotient, number));
        const auto isShort = hn::Eq(hn::Min(rest, number), number);
        const auto mean = hn::Sub(quotient, hn::VecFromMask(words, isShort));
        hn::StoreU(hn::DemoteTo(bytes, hn::BitCast(hn::RebindToSigned<decltype(words)>(), mean)), bytes, means + i);
    }
}

void SpreadGray(const std::uint8_t* HWY_RESTRICT pixels, std::size_t channel, std::size_t count,
                std::uint32_t* HWY_RESTRICT line)
{
    const hn::ScalableTag<std::uint8_t> bytes;
    const hn::Repartition<std::uint32_t, decltype(bytes)> colors;
    HWY_ALIGN std::uint8_t places[16];
    for (std::size_t i = 0; i < 16; ++i)
        places[i] = static_cast<std::uint8_t>(i / 4 * 4 + channel);
    const auto inEach = hn::LoadDup128(bytes, places);
    const auto opaque = hn::Set(colors, 0xFF000000u);
    const std::size_t lanes = hn::Lanes(colors);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        const auto gray = hn::TableLookupBytes(hn::LoadU(bytes, pixels + 4 * i), inEach);
        hn::StoreU(hn::Or(hn::BitCast(colors, gray), opaque), colors, line + i);
    }
    Plain::SpreadGray(pixels + 4 * i, channel, count - i, line + i);
}

#endif

} // namespace HWY_NAMESPACE
} // namespace Vistrel::ShrinkKernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Vistrel::ShrinkKernels {

HWY_EXPORT(MaximumOfRows);
HWY_EXPORT(SumOfRows);
HWY_EXPORT(GroupBytes);
HWY_EXPORT(GroupWords);
HWY_EXPORT(CombineBytes);
HWY_EXPORT(CombineWords);
HWY_EXPORT(Divide);
HWY_EXPORT(SpreadGray);

void maximumOfRows(const Rows& rows, bool isBegun, std::uint8_t* line)
{
    VISTREL_CHOSEN(MaximumOfRows)(rows, isBegun, line);
}

void sumOfRows(const Rows& rows, bool isBegun, std::uint16_t* line)
{
    VISTREL_CHOSEN(SumOfRows)(rows, isBegun, line);
}

void group(const std::uint8_t* const* lines, std::size_t count, std::uint8_t* pixels)
{
    VISTREL_CHOSEN(GroupBytes)(lines, count, pixels);
}

void group(const std::uint16_t* const* lines, std::size_t count, std::uint16_t* pixels)
{
    VISTREL_CHOSEN(GroupWords)(lines, count, pixels);
}

void combine(const Columns& columns, std::uint8_t* pixels, std::uint8_t* combined)
{
    VISTREL_CHOSEN(CombineBytes)(columns, pixels, combined);
}

void combine(const Columns& columns, std::uint16_t* pixels, std::uint16_t* combined)
{
    VISTREL_CHOSEN(CombineWords)(columns, pixels, combined);
}

void combine(const Columns& columns, std::uint32_t* pixels, std::uint32_t* combined)
{
    Plain::combineLine(columns, pixels, combined);
}

void divide(const std::uint16_t* sums, const Numbers<std::uint16_t>& numbers, const std::uint16_t* wide,
            std::size_t count, std::uint8_t* means)
{
    VISTREL_CHOSEN(Divide)(sums, numbers, wide, count, means);
}

void divide(const std::uint32_t* sums, const Numbers<std::uint32_t>& numbers, const std::uint16_t* wide,
            std::size_t count, std::uint8_t* means)
{
    Plain::divideEach(sums, numbers, wide, count, means);
}

void spreadGray(const std::uint8_t* pixels, std::size_t channel, std::size_t count, std::uint32_t* line)
{
    VISTREL_CHOSEN(SpreadGray)(pixels, channel, count, line);
}

} // namespace Vistrel::ShrinkKernels
#endif
