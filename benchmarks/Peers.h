// SPDX-License-Identifier: MIT
// The same conversions by general libraries, as a host would write them that uses these.
#pragma once

#include "pipeline/frames/CopyPool.h"

#include <Vistrel/RawImage.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace Bench {

/// Another library's way from a frame to the pixels that ours makes of it, on as many threads.
struct Peer
{
    std::string name;
    /// Rows are not padded. Deep values may be rounded instead of cut off, and the fourth byte of a pixel is free.
    std::function<void(const Vistrel::RawImage& frame, std::uint8_t* target)> convert;
};

/// The peers that can convert this format and were found when this program was built.
std::vector<Peer> conversionPeers(Vistrel::Format format);

/// A sentence for each library that was not.
std::vector<std::string> absentPeers();

/// That a thread takes at once: the peers are fastest with about as many.
constexpr std::size_t fewestRows = 16;

void addLibyuv(std::vector<Peer>& peers, Vistrel::Format format);
void addOpenCV(std::vector<Peer>& peers, Vistrel::Format format);

} // namespace Bench
