// SPDX-License-Identifier: MIT
// The list of the peers.
#include "Peers.h"

namespace Bench {

std::vector<Peer> conversionPeers([[maybe_unused]] Vistrel::Format format)
{
    std::vector<Peer> peers;
#ifdef VISTREL_BENCH_LIBYUV
    addLibyuv(peers, format);
#endif
#ifdef VISTREL_BENCH_OPENCV
    addOpenCV(peers, format);
#endif
    return peers;
}

std::vector<std::string> absentPeers()
{
    std::vector<std::string> absent;
#ifndef VISTREL_BENCH_LIBYUV
    absent.emplace_back("libyuv was not found at build time: its cases are left out.");
#endif
#ifndef VISTREL_BENCH_OPENCV
    absent.emplace_back("OpenCV was not found at build time: its cases are left out.");
#endif
    return absent;
}

} // namespace Bench
