// SPDX-License-Identifier: MIT
// Exchanges red and blue.
#pragma once

#include "pipeline/frames/Stages.h"

namespace Vistrel {

/// If reversed, converts frames as if their channels had the opposite order.
class ChannelOrder final : public Stage
{
public:
    static constexpr Place place = Order;

    explicit ChannelOrder(bool reversed = false) : isReversed(reversed) {}

    Format format(Format delivered, Format chosen) const override
    {
        if (!isReversed)
            return chosen;
        const std::uint32_t order = (delivered & formatOrderMask) == OrderBGR ? 0x1000u : OrderBGR;
        return static_cast<Format>((chosen & ~formatOrderMask) | order);
    }

    const bool isReversed;
};

} // namespace Vistrel
