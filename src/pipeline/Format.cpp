// SPDX-License-Identifier: MIT
// The names of the pixel formats.
#include "pipeline/PlainFormat.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace Vistrel {

namespace {

struct Named
{
    Format format;
    const char* name;
};

#define VISTREL_BAYER(pattern)                                                                                         \
    {pattern##8, #pattern "8"}, {pattern##10, #pattern "10"}, {pattern##10p, #pattern "10p"},                          \
        {pattern##10p_NoSwap, #pattern "10p_NoSwap"}, {pattern##12, #pattern "12"}, {pattern##14, #pattern "14"},      \
    {                                                                                                                  \
        pattern##16, #pattern "16"                                                                                     \
    }

constexpr Named names[] = {
    {Mono8, "Mono8"},       {Mono10, "Mono10"},     {Mono10p, "Mono10p"},   {Mono10p_NoSwap, "Mono10p_NoSwap"},
    {Mono12, "Mono12"},     {Mono14, "Mono14"},     {Mono16, "Mono16"},     VISTREL_BAYER(BayerGB),
    VISTREL_BAYER(BayerGR), VISTREL_BAYER(BayerRG), VISTREL_BAYER(BayerBG), {RGB8, "RGB8"},
    {RGB10p32, "RGB10p32"}, {RGBa8, "RGBa8"},       {RGB12, "RGB12"},       {RGB14, "RGB14"},
    {RGB16, "RGB16"},       {BGR8, "BGR8"},         {BGR10p32, "BGR10p32"}, {BGRa8, "BGRa8"},
    {BGR12, "BGR12"},       {BGR14, "BGR14"},       {BGR16, "BGR16"},
};

#undef VISTREL_BAYER

} // namespace

Format plainFormat(Format format)
{
    constexpr std::uint32_t layoutMask = 0xFF0000; // no format has a layout
    if ((format & layoutMask) != 0)
        return format;
    const std::uint32_t packing = format & formatPackingMask;
    std::uint32_t fields = formatDepth(format);
    if (isMonochrome(format)) {
        fields |= format & formatPatternMask;
        if (formatDepth(format) == 10 && (packing == Packedp || packing == PackedNoSwap))
            fields |= packing;
    } else if ((format & formatOrderMask) == OrderBGR) {
        fields |= OrderBGR;
    }
    return Format(fields);
}

const char* formatName(Format format)
{
    const auto found =
        std::find_if(std::begin(names), std::end(names),
                     [plain = plainFormat(format)](const Named& named) { return named.format == plain; });
    return found == std::end(names) ? nullptr : found->name;
}

bool formatFromName(const char* name, Format* format)
{
    if (!name || !format)
        return false;
    const auto found = std::find_if(std::begin(names), std::end(names),
                                    [name](const Named& named) { return std::strcmp(named.name, name) == 0; });
    if (found == std::end(names))
        return false;
    *format = found->format;
    return true;
}

} // namespace Vistrel
