// SPDX-License-Identifier: MIT
// The functions that a C host has registered for one of its windows, and the frames that it lends.
#include "app/c/HostFunctions.h"

#include "app/c/Handles.h"
#include "base/HostCall.h"

#include <Vistrel/AbstractAcquisitionInterface.h>

#include <algorithm>
#include <cstddef>
#include <type_traits>

namespace Vistrel {

namespace {

using Source = AbstractAcquisitionInterface;

constexpr Feature features[] = {
    {VT_FEATURE_SETUP, &Source::setHasSetup},
    {VT_FEATURE_CLEANUP, &Source::setHasCleanup},
    {VT_FEATURE_TRIGGER, &Source::setHasTrigger},
    {VT_FEATURE_START_SINGLE_REVERSE, &Source::setHasStartSingleReverse},
    {VT_FEATURE_START_REVERSE, &Source::setHasStartReverse},
    {VT_FEATURE_START, &Source::setHasStart},
    {VT_FEATURE_START_SINGLE, &Source::setHasStartSingle},
    {VT_FEATURE_PAUSE, &Source::setHasPause},
    {VT_FEATURE_STOP, &Source::setHasStop},
    {VT_FEATURE_START_FIXED, &Source::setHasStartFixed},
    {VT_FEATURE_SETUP_MODE, &Source::setHasSetupMode},
    {VT_FEATURE_CAN_SETUP, nullptr},
    {VT_FEATURE_CAN_SETUP_MODE, nullptr},
    {VT_FEATURE_CAN_CLEANUP, nullptr},
    {VT_FEATURE_CAN_TRIGGER, nullptr},
    {VT_FEATURE_CAN_START_SINGLE_REVERSE, nullptr},
    {VT_FEATURE_CAN_START_REVERSE, nullptr},
    {VT_FEATURE_CAN_START, nullptr},
    {VT_FEATURE_CAN_START_FIXED, nullptr},
    {VT_FEATURE_CAN_START_SINGLE, nullptr},
    {VT_FEATURE_CAN_PAUSE, nullptr},
    {VT_FEATURE_CAN_STOP, nullptr},
    {VT_FEATURE_IS_SETUP, nullptr},
    {VT_FEATURE_IS_RUNNING_SINGLE_REVERSE, nullptr},
    {VT_FEATURE_IS_RUNNING_REVERSE, nullptr},
    {VT_FEATURE_IS_RUNNING, nullptr},
    {VT_FEATURE_IS_RUNNING_FIXED, nullptr},
    {VT_FEATURE_IS_RUNNING_SINGLE, nullptr},
    {VT_FEATURE_IS_PAUSED, nullptr},
    {VT_FEATURE_IS_STOPPED, nullptr},
    {VT_FEATURE_ACTIVE_SETUP_MODE, nullptr},
    {VT_FEATURE_FRAME_RATE, &Source::setHasFrameRate},
    {VT_FEATURE_FRAMES_QUEUED, &Source::setHasFramesQueued},
    {VT_FEATURE_FRAMES_FILLED, &Source::setHasFramesFilled},
    {VT_FEATURE_FRAMES_DROPPED, &Source::setHasFramesDropped},
    {VT_FEATURE_FRAMES_DELIVERED, &Source::setHasFramesDelivered},
    {VT_FEATURE_NEXT_FRAME, nullptr},
    {VT_FEATURE_FRAME_RELEASED, nullptr},
    {VT_FEATURE_CLOSED, nullptr},
    {VT_FEATURE_FINISHED, nullptr},
    {VT_FEATURE_FILE_LOAD, nullptr},
    {VT_FEATURE_FILE_SAVE, nullptr},
};
static_assert(std::size(features) == featureCount);

// The C interface and the class interface use the same layout.
static_assert(std::is_standard_layout_v<RawImage> && sizeof(VTRawImage) == sizeof(RawImage));
static_assert(offsetof(VTRawImage, data) == offsetof(RawImage, data));
static_assert(offsetof(VTRawImage, width) == offsetof(RawImage, width));
static_assert(offsetof(VTRawImage, height) == offsetof(RawImage, height));
static_assert(offsetof(VTRawImage, format) == offsetof(RawImage, format) && sizeof(Format) == sizeof(std::uint32_t));
static_assert(offsetof(VTRawImage, userData) == offsetof(RawImage, userData));
static_assert(VT_FORMAT_BAYER_BG + VT_FORMAT_MONO16 == +BayerBG16 && VT_FORMAT_ORDER_BGR + VT_FORMAT_RGB16 == +BGR16);
static_assert(VT_FORMAT_PACKED + VT_FORMAT_MONO10 == +Mono10p && VT_FORMAT_PACKED_NO_SWAP == +PackedNoSwap);

} // namespace

std::optional<std::size_t> featureIndex(std::int32_t number)
{
    const auto* const row = std::find_if(std::begin(features), std::end(features),
                                         [number](const Feature& feature) { return feature.number == number; });
    if (row == std::end(features))
        return std::nullopt;
    return static_cast<std::size_t>(row - std::begin(features));
}

const Feature& featureAt(std::size_t index)
{
    return features[index];
}

HostFunctions::~HostFunctions()
{
    const auto finished = get<VTNotifyCallback>(VT_FEATURE_FINISHED);
    if (finished)
        attempt("finished", [&] { handles().callFinished(finished, userData); });
}

LentFrame::~LentFrame()
{
    const auto released = functions->get<VTReleasedCallback>(VT_FEATURE_FRAME_RELEASED);
    if (isLent && released)
        hostCall("frame released", [&] { released(&image, functions->userData); });
}

} // namespace Vistrel
