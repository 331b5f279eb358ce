// SPDX-License-Identifier: MIT
// The same conversions by general libraries, as a host would write them.
#pragma once

#include "pipeline/frames/CopyPool.h"

#include <Vistrel/RawImage.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace Bench {

/// A conversion by another library from a frame to the same pixels as ours, on as many threads.
struct Peer
{
    std::string name;
    /// Rows are not padded. Deep values may be rounded instead of truncated; the fourth byte of a pixel is undefined.
    std::function<void(const Vistrel::RawImage& frame, std::uint8_t* target)> convert;
};

/// The peers that this program was built with and that can convert this format.
std::vector<Peer> conversionPeers(Vistrel::Format format);

/// A sentence for each library that was not found.
std::vector<std::string> absentPeers();

/// Rows that a thread takes at once; about this number is fastest for the peers.
constexpr std::size_t fewestRows = 16;

void addLibyuv(std::vector<Peer>& peers, Vistrel::Format format);
void addOpenCV(std::vector<Peer>& peers, Vistrel::Format format);

} // namespace Bench
