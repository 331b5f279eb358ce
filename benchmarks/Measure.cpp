// SPDX-License-Identifier: MIT
// Clocks, memory counters, statistics, frames.
#include "Measure.h"

#include "pipeline/pixels/PixelFormats.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <ctime>
#include <fstream>
#include <new>
#include <random>
#include <string>
#include <utility>

#include <sys/prctl.h>
#include <sys/resource.h>

namespace {

std::atomic<std::size_t> largeRequests{0};

void note(std::size_t bytes)
{
    if (bytes >= 64 * 1024)
        largeRequests.fetch_add(1, std::memory_order_relaxed);
}

} // namespace

// NOLINTBEGIN(bugprone-reserved-identifier)

// The allocator's functions. Each counts and calls the C library's function by its other name.
extern "C" {

void* __libc_malloc(std::size_t bytes);
void* __libc_calloc(std::size_t count, std::size_t bytes);
void* __libc_realloc(void* memory, std::size_t bytes);
void* __libc_memalign(std::size_t alignment, std::size_t bytes);

void* malloc(std::size_t bytes) noexcept
{
    note(bytes);
    return __libc_malloc(bytes);
}

void* calloc(std::size_t count, std::size_t bytes) noexcept
{
    note(count * bytes);
    return __libc_calloc(count, bytes);
}

void* realloc(void* memory, std::size_t bytes) noexcept
{
    note(bytes);
    return __libc_realloc(memory, bytes);
}

void* memalign(std::size_t alignment, std::size_t bytes) noexcept
{
    note(bytes);
    return __libc_memalign(alignment, bytes);
}

void* aligned_alloc(std::size_t alignment, std::size_t bytes) noexcept
{
    return memalign(alignment, bytes);
}

int posix_memalign(void** memory, std::size_t alignment, std::size_t bytes) noexcept
{
    void* const block = memalign(alignment, bytes);
    if (!block)
        return ENOMEM;
    *memory = block;
    return 0;
}

} // extern "C"

// NOLINTEND(bugprone-reserved-identifier)

namespace Bench {

namespace {
constexpr std::align_val_t pageAlignment{4096};
}

double processCpuMilliseconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return 1e3 * static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_nsec);
}

long pageFaults()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt;
}

double residentKibibytes()
{
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        double amount = 0;
        if (word == "VmRSS:" && status >> amount)
            return amount;
    }
    return 0;
}

std::size_t largeAllocations()
{
    return largeRequests.load(std::memory_order_relaxed);
}

SmallPages::SmallPages()
{
    prctl(PR_SET_THP_DISABLE, 1, 0, 0, 0);
}
SmallPages::~SmallPages()
{
    prctl(PR_SET_THP_DISABLE, 0, 0, 0, 0);
}

double quantile(std::vector<double> samples, double fraction)
{
    if (samples.empty())
        return 0;
    const auto rank = std::lround(fraction * static_cast<double>(samples.size() - 1));
    std::nth_element(samples.begin(), samples.begin() + rank, samples.end());
    return samples[static_cast<std::size_t>(rank)];
}

double medianRatio(const std::vector<double>& samples, const std::vector<double>& references)
{
    std::vector<double> ratios(std::min(samples.size(), references.size()));
    for (std::size_t i = 0; i < ratios.size(); ++i)
        ratios[i] = samples[i] / references[i];
    return quantile(std::move(ratios), 0.5);
}

PageMemory::PageMemory(std::size_t size)
    : m_data(static_cast<std::uint8_t*>(::operator new(size, pageAlignment))), m_size(size)
{
    std::memset(m_data.get(), 0, size);
}

void PageMemory::Release::operator()(std::uint8_t* data) const
{
    ::operator delete(data, pageAlignment);
}

std::string text(Vistrel::Format format, const Size& size)
{
    return std::string(Vistrel::formatName(format)) + '/' + std::to_string(size.width) + 'x' +
           std::to_string(size.height);
}

Frames::Frames(std::size_t count, std::size_t width, std::size_t height, Vistrel::Format format)
{
    const bool hasWords = bytesPerPixel(format) % 4 == 2 && (format & Vistrel::formatPackingMask) == 0;
    const std::uint64_t used = hasWords ? Vistrel::channelMaximum(format) * 0x0001'0001'0001'0001u : ~std::uint64_t{0};
    std::mt19937_64 random;
    for (std::size_t i = 0; i < count; ++i) {
        const PageMemory& pixels = m_pixels.emplace_back(width * height * Vistrel::bytesPerPixel(format));
        for (std::size_t at = 0; at < pixels.size(); at += sizeof(std::uint64_t)) {
            const std::uint64_t bits = random() & used;
            std::memcpy(pixels.data() + at, &bits, std::min(sizeof bits, pixels.size() - at));
        }
        m_frames.push_back({pixels.data(), width, height, format, nullptr});
    }
}

} // namespace Bench
