// SPDX-License-Identifier: MIT
// One channel in bytes or words into bytes.
#include "pipeline/pixels/PlainKernels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "pipeline/pixels/GrayKernels.cpp"
#include <hwy/foreach_target.h>

#include "pipeline/pixels/KernelTools-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Vistrel::Kernels {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

using namespace Plain; // there are no vectors

#else

void CopyBytes(const PixelRun& run)
{
    const std::uint8_t* const HWY_RESTRICT source = run.source;
    std::uint8_t* const HWY_RESTRICT target = run.target;
    const std::size_t count = run.count;
    const hn::ScalableTag<std::uint8_t> bytes;
    const std::size_t lanes = hn::Lanes(bytes);
    convert(
        target, count, 1, run.stores,
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
        [&](std::size_t i, std::size_t left) { Plain::CopyBytes(run.part(i, left, 1)); });
}

void ShiftToGray(const PixelRun& run)
{
    const std::uint8_t* const HWY_RESTRICT source = run.source;
    std::uint8_t* const HWY_RESTRICT target = run.target;
    const std::size_t count = run.count;
    const int shift = run.shift;
    const hn::ScalableTag<std::uint16_t> words;
    const hn::Repartition<std::uint8_t, decltype(words)> bytes;
    const std::size_t lanes = hn::Lanes(words);
    convert(
        target, count, 1, run.stores,
        [&](auto stores, std::size_t i) HWY_ATTR {
            for (; i + 2 * lanes <= count; i += 2 * lanes) {
                fetchAhead<4 * hn::MaxLanes(words)>(source + 2 * i);
                const auto first = hn::ShiftRightSame(loadWords(words, source + 2 * i), shift);
                const auto second = hn::ShiftRightSame(loadWords(words, source + 2 * (i + lanes)), shift);
                store<stores>(lowBytes(bytes, first, second), bytes, target + i);
            }
            return i;
        },
        [&](std::size_t i, std::size_t left) { Plain::ShiftToGray(run.part(i, left, 2)); });
}

#endif

} // namespace HWY_NAMESPACE
} // namespace Vistrel::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Vistrel::Kernels {

VISTREL_KERNEL(copyBytes, CopyBytes)
VISTREL_KERNEL(shiftToGray, ShiftToGray)

} // namespace Vistrel::Kernels
#endif
