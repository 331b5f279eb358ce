// SPDX-License-Identifier: MIT
// Tools of the measurements: clocks, memory counters, statistics, frames.
#pragma once

#include <Vistrel/RawImage.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Bench {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

inline double millisecondsSince(Clock::time_point start)
{
    return Milliseconds(Clock::now() - start).count();
}

/// Processor time of all threads of this process.
double processCpuMilliseconds();
/// Pages of this process that were mapped at their first touch, since its start.
long pageFaults();
/// Memory of this process that is resident now.
double residentKibibytes();

/// Requests of at least 64 KiB to the C library's allocator since the start. C++ and Qt also get the memory of frames
/// from it.
std::size_t largeAllocations();

/// While it exists, memory is mapped only in pages of 4 KiB, so that the number of page faults gives the memory
/// touched.
class SmallPages
{
public:
    SmallPages();
    ~SmallPages();
    SmallPages(const SmallPages&) = delete;
    SmallPages& operator=(const SmallPages&) = delete;
};

/// The sample below which `fraction` of the samples lie; 0 without samples.
double quantile(std::vector<double> samples, double fraction);
/// The median of the quotients of samples that were taken one after the other: the drift of the machine cancels out.
double medianRatio(const std::vector<double>& samples, const std::vector<double>& references);

/// Bytes from the start of a page, touched already. A copy can be several times slower when its target's offset in the
/// page is a few bytes above its source's: times must not depend on the addresses.
class PageMemory
{
public:
    explicit PageMemory(std::size_t size);

    std::uint8_t* data() const { return m_data.get(); }
    std::size_t size() const { return m_size; }

private:
    struct Release
    {
        void operator()(std::uint8_t* data) const;
    };

    std::unique_ptr<std::uint8_t[], Release> m_data;
    std::size_t m_size;
};

struct Size
{
    std::size_t width;
    std::size_t height;
};

/// The sizes of a curve, from the smallest to the largest.
constexpr Size sizes[] = {{640, 480}, {1280, 960}, {1920, 1080}, {2560, 1920}, {4096, 3072}};

/// As in "Mono8/640x480".
std::string text(Vistrel::Format format, const Size& size);

/// Frames of one size and format with random pixels, each in its own memory.
class Frames
{
public:
    Frames(std::size_t count, std::size_t width, std::size_t height, Vistrel::Format format);

    /// Returns the next one in turn.
    const Vistrel::RawImage& next() { return m_frames[m_next++ % m_frames.size()]; }

private:
    std::vector<PageMemory> m_pixels;
    std::vector<Vistrel::RawImage> m_frames;
    std::size_t m_next = 0;
};

} // namespace Bench
