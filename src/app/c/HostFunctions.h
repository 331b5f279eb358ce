// SPDX-License-Identifier: MIT
// The functions that a C host has registered for one of its windows, and the frames that it lends.
#pragma once

#include <Vistrel/CInterface.h>
#include <Vistrel/RawImage.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>

namespace Vistrel {

class AbstractAcquisitionInterface;

/// One row of the table of features.
struct Feature
{
    std::int32_t number;
    void (AbstractAcquisitionInterface::*setCapability)(bool); // that goes with the function, or null
};

constexpr std::size_t featureCount = 42;

/// Where the feature stands in the table; none for a number that is no feature's.
std::optional<std::size_t> featureIndex(std::int32_t number);
const Feature& featureAt(std::size_t index);

/// Shared by all that may call into the host; when the last of them has let go, the host is told that it is over.
/// Functions are set on the user-interface thread and read on all.
class HostFunctions
{
public:
    using Any = void (*)();

    explicit HostFunctions(void* user) : userData(user) {}
    ~HostFunctions();
    HostFunctions(const HostFunctions&) = delete;
    HostFunctions& operator=(const HostFunctions&) = delete;

    void set(std::size_t index, Any function) { m_functions[index].store(function); }
    bool isSet(std::int32_t feature) const { return any(feature); }
    template <typename Callback>
    Callback get(std::int32_t feature) const
    {
        return reinterpret_cast<Callback>(any(feature));
    }

    void* const userData;

private:
    Any any(std::int32_t feature) const { return m_functions[*featureIndex(feature)].load(); }

    std::array<std::atomic<Any>, featureCount> m_functions{};
};

/// A frame that is the library's to read for as long as this lives; then the host is told.
struct LentFrame
{
    explicit LentFrame(std::shared_ptr<HostFunctions> host) : functions(std::move(host)) {}
    ~LentFrame();
    LentFrame(const LentFrame&) = delete;
    LentFrame& operator=(const LentFrame&) = delete;

    VTRawImage image{};
    bool isLent = false;                // false until the host has said so
    std::shared_ptr<const void> memory; // the library's own that the frame lies in, if any
    const std::shared_ptr<HostFunctions> functions;
};

using LentFramePtr = std::shared_ptr<const LentFrame>;

inline RawImage toRawImage(const VTRawImage& image)
{
    return {image.data, image.width, image.height, static_cast<Format>(image.format), image.userData};
}

inline VTRawImage toVTRawImage(const RawImage& image)
{
    return {image.data, image.width, image.height, image.format, image.userData};
}

} // namespace Vistrel
