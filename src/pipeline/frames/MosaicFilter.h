// SPDX-License-Identifier: MIT
// Chooses the pattern by which a mosaic is demosaiced.
#pragma once

#include "pipeline/frames/Stages.h"

namespace Vistrel {

/// Demosaics one-channel frames by the pattern that is set, or else by their own.
class MosaicFilter final : public Stage
{
public:
    static constexpr Place place = Mosaic;

    explicit MosaicFilter(bool enabled = false, Format chosenPattern = Format(0))
        : isEnabled(enabled), pattern(chosenPattern)
    {
    }

    Format format(Format delivered, Format chosen) const override
    {
        if (!isEnabled || !isMonochrome(delivered))
            return chosen;
        return static_cast<Format>(chosen | (pattern != 0 ? pattern : delivered & formatPatternMask));
    }

    const bool isEnabled; // a disabled filter keeps its pattern
    const Format pattern; // 0 for that of the frame
};

} // namespace Vistrel
