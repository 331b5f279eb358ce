// SPDX-License-Identifier: MIT
// One pixel: where it is and what it holds.
#pragma once

#include <cstdint>

namespace Vistrel {

/// A pixel's place in image coordinates; (0, 0) is the top-left pixel.
struct PixPos
{
    int x = 0; ///< column
    int y = 0; ///< row
};

/// A pixel's value at full depth: 0..4095 for a 12-bit pixel, three times 0..1023 for a 30-bit one. All zero when a
/// read failed.
struct PixVal
{
    bool mono = false; ///< `value` holds
    std::uint32_t value = 0;
    bool color = false; ///< `r`, `g`, `b` hold
    std::uint32_t r = 0;
    std::uint32_t g = 0;
    std::uint32_t b = 0;
};

} // namespace Vistrel
