// SPDX-License-Identifier: MIT
// The palettes: what colour each of the 256 grey levels is shown in.
#pragma once

#include <Vistrel/ColorTable.h>

#include <QtCore/QVector>

#include <cstdint>

namespace Vistrel {

/// Three sines over the levels, of one period and each with its own phase.
struct RainbowParameters
{
    double period = 256; // levels
    double redPhase = 0; // radians, as the next two
    double greenPhase = 2.0944;
    double bluePhase = 4.1888;
    double amplitude = 127;
    double center = 128;
};

/// 256 opaque colours, 0xAARRGGBB, indexed by the level. `rainbow` counts for the rainbow and `seed` for the random
/// table alone; equal seeds give equal tables. Empty for a value that is no table.
QVector<unsigned int> makeColorTable(ColorTable table, const RainbowParameters& rainbow, std::uint32_t seed);

/// The table that shows grey levels as they are.
QVector<unsigned int> grayRamp();

} // namespace Vistrel
