// SPDX-License-Identifier: MIT
// Tells why frames are not shown.
#pragma once

#include <Vistrel/RawImage.h>

#include <cstddef>
#include <map>
#include <mutex>
#include <string>

namespace Vistrel {

/// The reasons for which a stream shows no frame: each is told once on the standard error stream, and counted from then
/// on. Thread-safe.
class Refusals
{
public:
    Refusals() = default;
    /// Tells how often each reason came again.
    ~Refusals();
    Refusals(const Refusals&) = delete;
    Refusals& operator=(const Refusals&) = delete;

    /// `reason` is a sentence; it holds for so many more frames.
    void add(const std::string& reason, std::size_t frames = 1) noexcept;
    /// A frame is shown: nothing is refused at present.
    void clear();
    /// What is refused at present, for an empty view; empty when nothing is.
    std::string text() const;

private:
    mutable std::mutex m_mutex;                  // guards all below
    std::map<std::string, std::size_t> m_counts; // of frames, by reason
    std::string m_current;                       // reason; empty when nothing is refused
};

/// Why `frame`, which could not be converted, is refused. `bitmap` describes what is locked, or is null.
std::string refusalOf(const RawImage& frame, const RawImage* bitmap);

} // namespace Vistrel
