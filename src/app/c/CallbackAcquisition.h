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

    bool setup() override;
    bool setupMode(const char* const name) override;
    bool cleanup() override;
    bool trigger() override;
    bool startSingleReverse() override;
    bool startReverse() override;
    bool start() override;
    bool startFixed(std::size_t frames) override;
    bool startSingle() override;
    bool pause() override;
    bool stop() override;

    bool canSetup() const override;
    bool canSetupMode() const override;
    bool canCleanup() const override;
    bool canTrigger() const override;
    bool canStartSingleReverse() const override;
    bool canStartReverse() const override;
    bool canStart() const override;
    bool canStartFixed() const override;
    bool canStartSingle() const override;
    bool canPause() const override;
    bool canStop() const override;

    bool isSetup() const override;
    bool isRunningSingleReverse() const override;
    bool isRunningReverse() const override;
    bool isRunning() const override;
    bool isRunningFixed() const override;
    bool isRunningSingle() const override;
    bool isPaused() const override;
    bool isStopped() const override;

    bool activeSetupMode(char* const buffer, std::size_t* const size) const override;
    double frameRate() const override;
    std::size_t framesQueued() const override;
    std::size_t framesFilled() const override;
    std::size_t framesDropped() const override;
    std::size_t framesDelivered() const override;

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
    Result call(std::int32_t feature, Result otherwise, Arguments... arguments) const;
    bool command(std::int32_t feature) const;
    bool query(std::int32_t feature, bool otherwise) const;
    std::size_t count(std::int32_t feature) const;
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
