// SPDX-License-Identifier: MIT
// Reports why frames are not shown.
#include "pipeline/stream/Refusals.h"

#include "base/Log.h"
#include "pipeline/pixels/PixelFormats.h"

#include <cstdint>
#include <cstdio>

namespace Vistrel {

namespace {

constexpr std::size_t mostReasons = 32; // a size that changes with each frame gives a new reason each time

std::string describe(const RawImage& image)
{
    const char* const name = formatName(image.format);
    return std::to_string(image.width) + " x " + std::to_string(image.height) + (name ? std::string(", ") + name : "");
}

} // namespace

Refusals::~Refusals()
{
    for (const auto& [reason, count] : m_counts) {
        if (count > 1)
            reportLine("Vistrel: " + std::to_string(count) + " times: " + reason);
    }
}

void Refusals::add(const std::string& reason, std::size_t frames) noexcept
{
    try {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_current = reason;
        if (m_counts.size() == mostReasons && m_counts.count(reason) == 0)
            return; // returned by `text`, but not counted
        const auto [entry, isNew] = m_counts.emplace(reason, 0);
        entry->second += frames;
        if (isNew)
            reportLine("Vistrel: " + reason);
    } catch (...) {
        reportException("refusal");
    }
}

void Refusals::clear()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_current.clear();
}

std::string Refusals::text() const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    const auto found = m_counts.find(m_current);
    if (found == m_counts.end() || found->second <= 1)
        return m_current;
    return m_current + " (" + std::to_string(found->second) + " times)";
}

std::string refusalOf(const RawImage& frame, const RawImage* bitmap)
{
    if (frame.width == 0 || frame.height == 0)
        return "A frame of " + std::to_string(frame.width) + " x " + std::to_string(frame.height) +
               " pixels is not shown.";
    if (!findFormat(frame.format)) {
        char code[16];
        std::snprintf(code, sizeof code, "0x%X", static_cast<unsigned>(frame.format));
        return std::string("A frame of the unknown format ") + code + " is not shown.";
    }
    if (bitmap)
        return "A frame (" + describe(frame) + ") does not fit the locked bitmap (" + describe(*bitmap) + ").";
    return "A frame (" + describe(frame) + ") is not shown: it is too large, or too small for a mosaic.";
}

} // namespace Vistrel
