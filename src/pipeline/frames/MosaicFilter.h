// SPDX-License-Identifier: MIT
// Chooses the pattern by which a mosaic becomes colour.
#pragma once

#include "pipeline/frames/Stages.h"

namespace Vistrel {

/// Converts monochrome frames as mosaics of the pattern that is set, or else of their own.
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

    const bool isEnabled; // a filter that is not keeps its pattern
    const Format pattern; // 0 for that of the frame
};

} // namespace Vistrel
