// SPDX-License-Identifier: MIT
// The palettes that a monochrome image can be shown in.
#pragma once

#include <cstdint>

namespace Vistrel {

enum class ColorTable : std::int32_t {
    Gray = 0,
    Gray2x = 1,
    GrayInverse = 2,
    Sine = 3,
    Cosine = 4,
    Rainbow = 5,
    Random = 6,
    Contours = 7,
};

} // namespace Vistrel
