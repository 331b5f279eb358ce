// SPDX-License-Identifier: MIT
// Reads single pixels of a raw frame at full depth.
#include "pipeline/pixels/PixelReader.h"

#include "pipeline/pixels/PixelFormats.h"

namespace Vistrel {

bool readPixel(const RawImage& raw, const PixPos& position, PixVal& value)
{
    value = PixVal();
    const PixelFormat* const format = findFormat(raw.format);
    if (!raw.data || !format || !isReadable(raw) || position.x < 0 || position.y < 0)
        return false;
    const auto x = static_cast<std::size_t>(position.x);
    const auto y = static_cast<std::size_t>(position.y);
    if (x >= raw.width || y >= raw.height)
        return false;

    const PixelLayout& layout = *format->layout;
    std::uint16_t group[4 * 4];
    layout.unpack(raw, y, x / 4 * 4, x % 4 + 1, group);
    const std::uint32_t maximum = (1u << format->bits) - 1;
    const auto sample = [&](std::size_t i) { return group[x % 4 * layout.samples + i] & maximum; };
    if (layout.samples == 1) {
        value.mono = true;
        value.value = sample(0);
        return true;
    }
    value.color = true;
    value.r = sample(format->isRedFirst ? 0 : 2);
    value.g = sample(1);
    value.b = sample(format->isRedFirst ? 2 : 0);
    return true;
}

} // namespace Vistrel
