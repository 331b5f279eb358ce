// SPDX-License-Identifier: MIT
// What the measurements are made with: clocks, memory counters, statistics, frames.
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

/// Requests of at least 64 KiB to the C library's allocator, since the start: whatever asks for the memory of a frame
/// ends there, in C++ and in the toolkit.
std::size_t largeAllocations();

/// While it lives, memory is mapped in pages of 4 KiB alone, so that the count of page faults tells the amount touched.
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
/// The median of samples divided each by the one that was taken next to it: the machine's own drift cancels out.
double medianRatio(const std::vector<double>& samples, const std::vector<double>& references);

/// Bytes from the start of a page on, touched already. A copy can be several times slower when its target lies a few
/// bytes behind its source within their pages: what is timed here shall not depend on where memory happens to lie.
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

/// From the smallest to the largest that a curve over the size goes through.
constexpr Size sizes[] = {{640, 480}, {1280, 960}, {1920, 1080}, {2560, 1920}, {4096, 3072}};

/// As in "Mono8/640x480".
std::string text(Vistrel::Format format, const Size& size);

/// Frames of one size and format with random pixels, each in memory of its own.
class Frames
{
public:
    Frames(std::size_t count, std::size_t width, std::size_t height, Vistrel::Format format);

    /// The next one in turn.
    const Vistrel::RawImage& next() { return m_frames[m_next++ % m_frames.size()]; }

private:
    std::vector<PageMemory> m_pixels;
    std::vector<Vistrel::RawImage> m_frames;
    std::size_t m_next = 0;
};

} // namespace Bench
