// SPDX-License-Identifier: MIT
// The image or frame that a surface's pixel values are read from.
#pragma once

#include <Vistrel/AbstractAcquisitionInterface.h>
#include <Vistrel/PixVal.h>

#include <QtGui/QImage>

#include <memory>
#include <mutex>

namespace Vistrel {

/// An image, a source's frame, or nothing. A copy keeps the pixels alive, but not the source.
struct PixelSource
{
    AbstractAcquisitionInterface* source = nullptr; // null for an image or nothing
    RawImage raw;                                   // null data without a frame
    std::shared_ptr<const void> owner;              // of the frame's pixels; null when the source owns them
    QImage image;

    bool hasRaw() const { return source && raw.data; }
    /// Asks for the lock under which `value` may be called. Returns false when the source refuses it.
    bool lock(ScopedLock& lock) const;
    /// Reads one pixel at full depth, under the lock. Returns false and gives zero outside the image.
    bool value(const PixPos& position, PixVal& value) const;
};

/// The pixel source that was set last. Thread-safe.
class SharedPixelSource
{
public:
    PixelSource get() const;
    void set(PixelSource next);

private:
    mutable std::mutex m_sourceMutex;
    PixelSource m_source;
};

} // namespace Vistrel
