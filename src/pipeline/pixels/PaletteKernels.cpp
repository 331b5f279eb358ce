// SPDX-License-Identifier: MIT
// Indices into colours.
#include "pipeline/pixels/PlainKernels.h"

#include <QtCore/QByteArray>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "pipeline/pixels/PaletteKernels.cpp"
#include <hwy/foreach_target.h>

#include "pipeline/pixels/KernelTools-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Vistrel::Kernels {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

using namespace Plain; // there are no vectors

#else

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

#endif

} // namespace HWY_NAMESPACE
} // namespace Vistrel::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Vistrel::Kernels {

HWY_EXPORT(LookUp);

bool areVectorsAllowed()
{
    static const bool allowed = qgetenv("VISTREL_SIMD") != "scalar";
    return allowed;
}

void flushStores()
{
    hwy::FlushStream();
}

void lookUp(const std::uint8_t* source, std::uint32_t* target, std::size_t count, const std::uint32_t* table,
            Stores stores)
{
    VISTREL_CHOSEN(LookUp)(source, target, count, table, stores);
}

} // namespace Vistrel::Kernels
#endif
