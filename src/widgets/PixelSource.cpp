// SPDX-License-Identifier: MIT
// The image or frame that a surface's pixel values are read from.
#include "widgets/PixelSource.h"

#include "base/FrameLocking.h"
#include "pipeline/pixels/PixelReader.h"

#include <utility>

namespace Vistrel {

bool PixelSource::lock(ScopedLock& lock) const
{
    if (hasRaw())
        lock = askFrameLock(source, raw);
    return !hasRaw() || lock.good();
}

bool PixelSource::value(const PixPos& position, PixVal& value) const
{
    value = PixVal();
    if (hasRaw())
        return readPixel(raw, position, value);
    if (!image.rect().contains(position.x, position.y))
        return false;
    const QRgb pixel = image.pixel(position.x, position.y);
    value.color = true;
    value.r = static_cast<std::uint32_t>(qRed(pixel));
    value.g = static_cast<std::uint32_t>(qGreen(pixel));
    value.b = static_cast<std::uint32_t>(qBlue(pixel));
    return true;
}

PixelSource SharedPixelSource::get() const
{
    const std::lock_guard<std::mutex> guard(m_sourceMutex);
    return m_source;
}

void SharedPixelSource::set(PixelSource next)
{
    const std::lock_guard<std::mutex> guard(m_sourceMutex);
    std::swap(m_source, next); // the previous one is destroyed after the mutex is released
}

} // namespace Vistrel
