// SPDX-License-Identifier: MIT
// What the kernels of every family share. Included once for each kind of vector unit.
#if defined(VISTREL_KERNEL_TOOLS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef VISTREL_KERNEL_TOOLS_INL_H
#undef VISTREL_KERNEL_TOOLS_INL_H
#else
#define VISTREL_KERNEL_TOOLS_INL_H
#endif

#include "pipeline/pixels/Kernels.h"

#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

/// The kernel for this processor.
#define VISTREL_CHOSEN(Kernel) (Vistrel::Kernels::areVectorsAllowed() ? HWY_DYNAMIC_DISPATCH(Kernel) : Plain::Kernel)

/// Defines the function `name` that runs it.
#define VISTREL_KERNEL(name, Kernel)                                                                                   \
    HWY_EXPORT(Kernel);                                                                                                \
    void name(const PixelRun& run)                                                                                     \
    {                                                                                                                  \
        VISTREL_CHOSEN(Kernel)(run);                                                                                   \
    }

HWY_BEFORE_NAMESPACE();
namespace Vistrel::Kernels {
namespace HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

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

// The processor's own prefetching stops at the end of a page, mostly of 4 KiB.
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

// Wide enough to reach the memory's speed, and narrow enough to load single halves.
constexpr std::size_t halvesWidth = HWY_ARCH_X86 && HWY_MAX_BYTES >= 32 ? 32 : 16;

#endif

} // namespace HWY_NAMESPACE
} // namespace Vistrel::Kernels
HWY_AFTER_NAMESPACE();

#endif
