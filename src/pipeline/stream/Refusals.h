// SPDX-License-Identifier: MIT
// Reports why frames are not shown.
#pragma once

#include <Vistrel/RawImage.h>

#include <cstddef>
#include <map>
#include <mutex>
#include <string>

namespace Vistrel {

/// The reasons why a stream shows no frame. Each is reported once on the standard error stream; repetitions are
/// counted. Thread-safe.
class Refusals
{
public:
    Refusals() = default;
    /// Reports the number of repetitions of each reason.
    ~Refusals();
    Refusals(const Refusals&) = delete;
    Refusals& operator=(const Refusals&) = delete;

    /// Adds `frames` frames that are refused for `reason`, a sentence.
    void add(const std::string& reason, std::size_t frames = 1) noexcept;
    /// Call it when a frame is shown.
    void clear();
    /// The present reason, for an empty view; empty while frames are shown.
    std::string text() const;

private:
    mutable std::mutex m_mutex;                  // guards all below
    std::map<std::string, std::size_t> m_counts; // of frames, by reason
    std::string m_current;                       // reason; empty when nothing is refused
};

/// Returns why `frame`, which could not be converted, is refused. `bitmap` describes the locked bitmap, or is null.
std::string refusalOf(const RawImage& frame, const RawImage* bitmap);

} // namespace Vistrel
