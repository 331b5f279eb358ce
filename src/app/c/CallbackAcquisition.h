// SPDX-License-Identifier: MIT
// A source of frames made from a C host's functions.
#pragma once

#include "acquisition/FrameLender.h"
#include "app/c/HostFunctions.h"

#include <Vistrel/AbstractAcquisitionInterface.h>

#include <mutex>
#include <vector>

namespace Vistrel {

class WindowGate;

/// Calls the host's functions, and has a default for each that is missing. Delivers the latest pushed frame or, when
/// none is pending, one pulled from the host; each under a lock that keeps it lent.
class CallbackAcquisition : public AbstractAcquisitionInterface, public FrameLender
{
public:
    CallbackAcquisition(std::shared_ptr<HostFunctions> functions, std::shared_ptr<WindowGate> gate);
    ~CallbackAcquisition() override;

    LentFramePtr push(LentFramePtr frame);   ///< returns the frame that it replaces; null only removes that
    LentFramePtr takeAway(const void* data); ///< removes and returns the pending frame, if its pixels are these
    void send(VTSignal signal);
    const std::shared_ptr<HostFunctions>& functions() const { return m_functions; }
    bool isClosed() const { return m_isClosed; } ///< by the user

    void uxClosed() override;

    // Without the command, nothing needs to be set up.
    bool setup() override { return call<VTCommandCallback>(VT_FEATURE_SETUP, true); }
    bool setupMode(const char* const name) override { return call<VTNameCallback>(VT_FEATURE_SETUP_MODE, false, name); }
    bool cleanup() override { return command(VT_FEATURE_CLEANUP); }
    bool trigger() override { return command(VT_FEATURE_TRIGGER); }
    bool startSingleReverse() override { return command(VT_FEATURE_START_SINGLE_REVERSE); }
    bool startReverse() override { return command(VT_FEATURE_START_REVERSE); }
    bool start() override { return command(VT_FEATURE_START); }
    bool startFixed(std::size_t frames) override
    {
        return call<VTCountCallback>(VT_FEATURE_START_FIXED, false, frames);
    }
    bool startSingle() override { return command(VT_FEATURE_START_SINGLE); }
    bool pause() override { return command(VT_FEATURE_PAUSE); }
    bool stop() override { return command(VT_FEATURE_STOP); }

    bool canSetup() const override { return query(VT_FEATURE_CAN_SETUP, hasSetup()); }
    bool canSetupMode() const override { return query(VT_FEATURE_CAN_SETUP_MODE, hasSetupMode()); }
    bool canCleanup() const override { return query(VT_FEATURE_CAN_CLEANUP, hasCleanup()); }
    bool canTrigger() const override { return query(VT_FEATURE_CAN_TRIGGER, hasTrigger()); }
    bool canStartSingleReverse() const override
    {
        return query(VT_FEATURE_CAN_START_SINGLE_REVERSE, hasStartSingleReverse());
    }
    bool canStartReverse() const override { return query(VT_FEATURE_CAN_START_REVERSE, hasStartReverse()); }
    bool canStart() const override { return query(VT_FEATURE_CAN_START, hasStart()); }
    bool canStartFixed() const override { return query(VT_FEATURE_CAN_START_FIXED, hasStartFixed()); }
    bool canStartSingle() const override { return query(VT_FEATURE_CAN_START_SINGLE, hasStartSingle()); }
    bool canPause() const override { return query(VT_FEATURE_CAN_PAUSE, hasPause()); }
    bool canStop() const override { return query(VT_FEATURE_CAN_STOP, hasStop()); }

    bool isSetup() const override { return query(VT_FEATURE_IS_SETUP, true); }
    bool isRunningSingleReverse() const override { return query(VT_FEATURE_IS_RUNNING_SINGLE_REVERSE, false); }
    bool isRunningReverse() const override { return query(VT_FEATURE_IS_RUNNING_REVERSE, false); }
    bool isRunning() const override;
    bool isRunningFixed() const override { return query(VT_FEATURE_IS_RUNNING_FIXED, false); }
    bool isRunningSingle() const override { return query(VT_FEATURE_IS_RUNNING_SINGLE, false); }
    bool isPaused() const override { return query(VT_FEATURE_IS_PAUSED, false); }
    bool isStopped() const override;

    bool activeSetupMode(char* const buffer, std::size_t* const size) const override
    {
        return call<VTTextCallback>(VT_FEATURE_ACTIVE_SETUP_MODE, false, buffer, size);
    }
    double frameRate() const override { return call<VTDoubleCallback>(VT_FEATURE_FRAME_RATE, 0.0); }
    std::size_t framesQueued() const override { return count(VT_FEATURE_FRAMES_QUEUED); }
    std::size_t framesFilled() const override { return count(VT_FEATURE_FRAMES_FILLED); }
    std::size_t framesDropped() const override { return count(VT_FEATURE_FRAMES_DROPPED); }
    std::size_t framesDelivered() const override { return count(VT_FEATURE_FRAMES_DELIVERED); }

    bool getNextFrame(RawImage* const image, ScopedLock* const lock) override;
    ScopedLock getFrameLock(const RawImage& image) override;
    std::shared_ptr<const void> takeDelivered() override;

private:
    struct UsedFrame
    {
        VTRawImage image;
        std::weak_ptr<const LentFrame> frame;
    };

    template <typename Callback, typename Result, typename... Arguments>
    Result call(std::int32_t feature, Result otherwise, Arguments... arguments) const
    {
        const auto function = m_functions->get<Callback>(feature);
        return function ? function(arguments..., m_functions->userData) : otherwise;
    }
    bool command(std::int32_t feature) const { return call<VTCommandCallback>(feature, false); }
    bool query(std::int32_t feature, bool otherwise) const { return call<VTQueryCallback>(feature, otherwise); }
    std::size_t count(std::int32_t feature) const { return call<VTSizeCallback>(feature, std::size_t{0}); }
    LentFramePtr takeFrame();

    const std::shared_ptr<HostFunctions> m_functions;
    const std::shared_ptr<WindowGate> m_gate;
    bool m_isClosed = false; // user-interface thread

    std::mutex m_mutex; // guards all below; not held while a frame is released
    LentFramePtr m_pending;
    LentFramePtr m_delivered;      // by the last `getNextFrame`, until `takeDelivered`
    std::vector<UsedFrame> m_used; // the delivered frames, in that order
};

} // namespace Vistrel
