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

/// A pixel's value at full depth: 0 to 4095 for a 12-bit pixel, 0 to 1023 in each channel for a 30-bit one. All zero
/// after a read that failed.
struct PixVal
{
    bool mono = false; ///< `value` is valid
    std::uint32_t value = 0;
    bool color = false; ///< `r`, `g` and `b` are valid
    std::uint32_t r = 0;
    std::uint32_t g = 0;
    std::uint32_t b = 0;
};

} // namespace Vistrel
