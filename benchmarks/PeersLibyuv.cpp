// SPDX-License-Identifier: MIT
// Conversions by libyuv, which uses one thread: the rows are split over the same threads as ours.
#include "Peers.h"

#include <libyuv.h>

#include <memory>
#include <utility>

namespace Bench {

namespace {

using namespace Vistrel;

/// Adds a conversion of some rows: `convert(source, target, width, count)`.
template <typename Convert>
void add(std::vector<Peer>& peers, Format format, std::size_t targetBytes, Convert convert)
{
    peers.push_back({"libyuv", [=, pool = CopyPool::shared()](const RawImage& frame, std::uint8_t* target) {
                         const std::size_t sourceStride = frame.width * bytesPerPixel(format);
                         const std::size_t targetStride = frame.width * targetBytes;
                         pool->runRows(
                             frame.height, sourceStride + targetStride,
                             [&](std::size_t first, std::size_t end) {
                                 convert(frame.data + first * sourceStride, target + first * targetStride,
                                         static_cast<int>(frame.width), static_cast<int>(end - first));
                             },
                             fewestRows);
                     }});
}

using ColorConversion = int (*)(const std::uint8_t*, int, std::uint8_t*, int, int, int);

void addColor(std::vector<Peer>& peers, Format format, ColorConversion convert)
{
    const int sourceBytes = static_cast<int>(bytesPerPixel(format));
    add(peers, format, 4, [=](const std::uint8_t* source, std::uint8_t* target, int width, int count) {
        convert(source, width * sourceBytes, target, width * 4, width, count);
    });
}

} // namespace

// libyuv's names give the bytes from the last in memory to the first, except RAW, which is the reverse of RGB24.
void addLibyuv(std::vector<Peer>& peers, Format format)
{
    switch (format) {
    case Mono8:
        return add(peers, format, 1, [](const std::uint8_t* source, std::uint8_t* target, int width, int count) {
            libyuv::CopyPlane(source, width, target, width, width, count);
        });
    case Mono10:
    case Mono12:
    case Mono14:
    case Mono16: {
        const int scale = 1 << (24 - static_cast<int>(formatDepth(format)));
        return add(peers, format, 1, [scale](const std::uint8_t* source, std::uint8_t* target, int width, int count) {
            libyuv::Convert16To8Plane(reinterpret_cast<const std::uint16_t*>(source), width, target, width, scale,
                                      width, count);
        });
    }
    case RGB8:
        return addColor(peers, format, libyuv::RAWToARGB);
    case RGBa8:
        return addColor(peers, format, libyuv::ABGRToARGB);
    case RGB10p32:
        return addColor(peers, format, libyuv::AR30ToARGB);
    default:
        return;
    }
}

} // namespace Bench
