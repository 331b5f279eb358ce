// SPDX-License-Identifier: MIT
// Describes one frame buffer of a source.
#pragma once

#include <Vistrel/Format.h>

#include <cstddef>
#include <cstdint>

namespace Vistrel {

/// Copied by value; the source owns the pixels.
struct RawImage
{
    const std::uint8_t* data = nullptr; ///< first byte: height rows of width pixels, without padding between rows
    std::size_t width = 0;              ///< pixels a row
    std::size_t height = 0;             ///< rows
    Format format = Format(0);
    void* userData = nullptr; ///< for the host; not changed
};

} // namespace Vistrel
