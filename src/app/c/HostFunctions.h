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
    void (AbstractAcquisitionInterface::*setCapability)(bool); // called when the function is set or removed, or null
};

constexpr std::size_t featureCount = 42;

/// The feature's row in the table; none for an unknown number.
std::optional<std::size_t> featureIndex(std::int32_t number);
const Feature& featureAt(std::size_t index);

/// Shared by all objects that may call the host. The destructor has VT_FEATURE_FINISHED called. Functions are set on
/// the user-interface thread and read on any.
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

/// A frame that the library may read. The destructor returns it to the host by VT_FEATURE_FRAME_RELEASED.
struct LentFrame
{
    explicit LentFrame(std::shared_ptr<HostFunctions> host) : functions(std::move(host)) {}
    ~LentFrame();
    LentFrame(const LentFrame&) = delete;
    LentFrame& operator=(const LentFrame&) = delete;

    VTRawImage image{};
    bool isLent = false;                // false until the host has lent it
    std::shared_ptr<const void> memory; // the library's memory that the frame lies in, or null
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
