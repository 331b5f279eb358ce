// SPDX-License-Identifier: MIT
// A source of frames made from a C host's functions.
#include "app/c/CallbackAcquisition.h"

#include "app/c/WindowWrapper.h"

#include <algorithm>
#include <utility>

namespace Vistrel {

namespace {

class LentFrameLock : public AbstractLock
{
public:
    explicit LentFrameLock(LentFramePtr frame) : m_frame(std::move(frame)) {}

private:
    LentFramePtr m_frame;
};

// The format may differ: a frame may be shown in another one.
bool isSameFrame(const VTRawImage& lent, const RawImage& image)
{
    return lent.data == image.data && lent.width == image.width && lent.height == image.height &&
           lent.userData == image.userData;
}

} // namespace

CallbackAcquisition::CallbackAcquisition(std::shared_ptr<HostFunctions> functions, std::shared_ptr<WindowGate> gate)
    : m_functions(std::move(functions)), m_gate(std::move(gate))
{
    m_gate->setAcquisition(this);
}

CallbackAcquisition::~CallbackAcquisition()
{
    m_gate->setAcquisition(nullptr);
}

// Frames --------------------------------------------------------------------------------------------------------------

LentFramePtr CallbackAcquisition::push(LentFramePtr frame)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return std::exchange(m_pending, std::move(frame));
}

LentFramePtr CallbackAcquisition::takeAway(const void* data)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_pending && m_pending->image.data == data ? std::exchange(m_pending, nullptr) : nullptr;
}

LentFramePtr CallbackAcquisition::takeFrame()
{
    if (LentFramePtr pushed = push(nullptr))
        return pushed;
    const auto nextFrame = m_functions->get<VTNextFrameCallback>(VT_FEATURE_NEXT_FRAME);
    if (!nextFrame)
        return nullptr;
    const auto frame = std::make_shared<LentFrame>(m_functions);
    frame->isLent = nextFrame(&frame->image, m_functions->userData);
    return frame->isLent ? frame : nullptr;
}

bool CallbackAcquisition::getNextFrame(RawImage* const image, ScopedLock* const lock)
{
    LentFramePtr previous;
    const LentFramePtr frame = takeFrame();
    if (!image || !frame)
        return false;
    if (lock)
        lock->reset(new LentFrameLock(frame));
    *image = toRawImage(frame->image);
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_used.erase(
        std::remove_if(m_used.begin(), m_used.end(), [](const UsedFrame& used) { return used.frame.expired(); }),
        m_used.end());
    m_used.push_back({frame->image, frame});
    previous = std::exchange(m_delivered, frame);
    return true;
}

// Locks only this frame: a lock on others would delay their release.
ScopedLock CallbackAcquisition::getFrameLock(const RawImage& image)
{
    LentFramePtr frame; // outlives the guard
    const std::lock_guard<std::mutex> guard(m_mutex);
    for (auto used = m_used.rbegin(); used != m_used.rend() && !frame; ++used) {
        if (isSameFrame(used->image, image))
            frame = used->frame.lock();
    }
    return frame ? ScopedLock(new LentFrameLock(frame)) : ScopedLock();
}

std::shared_ptr<const void> CallbackAcquisition::takeDelivered()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return std::exchange(m_delivered, nullptr);
}

void CallbackAcquisition::send(VTSignal signal)
{
    switch (signal) {
    case VT_SIGNAL_ACQUISITION_STATE_CHANGED:
        signalAcquisitionStateChange();
        break;
    case VT_SIGNAL_FEATURE_SET_CHANGED:
        signalFeatureSetChange();
        break;
    case VT_SIGNAL_GET_FRAME_NOW:
        signalGetFrameNow();
        break;
    }
}

// Functions -----------------------------------------------------------------------------------------------------------

template <typename Callback, typename Result, typename... Arguments>
Result CallbackAcquisition::call(std::int32_t feature, Result otherwise, Arguments... arguments) const
{
    const auto function = m_functions->get<Callback>(feature);
    return function ? function(arguments..., m_functions->userData) : otherwise;
}

bool CallbackAcquisition::command(std::int32_t feature) const
{
    return call<VTCommandCallback>(feature, false);
}

bool CallbackAcquisition::query(std::int32_t feature, bool otherwise) const
{
    return call<VTQueryCallback>(feature, otherwise);
}

std::size_t CallbackAcquisition::count(std::int32_t feature) const
{
    return call<VTSizeCallback>(feature, std::size_t{0});
}

void CallbackAcquisition::uxClosed()
{
    m_isClosed = true;
    if (const auto closed = m_functions->get<VTNotifyCallback>(VT_FEATURE_CLOSED))
        closed(m_functions->userData);
}

bool CallbackAcquisition::setup()
{
    return call<VTCommandCallback>(VT_FEATURE_SETUP, true); // without the command, nothing needs to be set up
}

bool CallbackAcquisition::setupMode(const char* const name)
{
    return call<VTNameCallback>(VT_FEATURE_SETUP_MODE, false, name);
}

bool CallbackAcquisition::cleanup()
{
    return command(VT_FEATURE_CLEANUP);
}

bool CallbackAcquisition::trigger()
{
    return command(VT_FEATURE_TRIGGER);
}

bool CallbackAcquisition::startSingleReverse()
{
    return command(VT_FEATURE_START_SINGLE_REVERSE);
}

bool CallbackAcquisition::startReverse()
{
    return command(VT_FEATURE_START_REVERSE);
}

bool CallbackAcquisition::start()
{
    return command(VT_FEATURE_START);
}

bool CallbackAcquisition::startFixed(std::size_t frames)
{
    return call<VTCountCallback>(VT_FEATURE_START_FIXED, false, frames);
}

bool CallbackAcquisition::startSingle()
{
    return command(VT_FEATURE_START_SINGLE);
}

bool CallbackAcquisition::pause()
{
    return command(VT_FEATURE_PAUSE);
}

bool CallbackAcquisition::stop()
{
    return command(VT_FEATURE_STOP);
}

bool CallbackAcquisition::canSetup() const
{
    return query(VT_FEATURE_CAN_SETUP, hasSetup());
}

bool CallbackAcquisition::canSetupMode() const
{
    return query(VT_FEATURE_CAN_SETUP_MODE, hasSetupMode());
}

bool CallbackAcquisition::canCleanup() const
{
    return query(VT_FEATURE_CAN_CLEANUP, hasCleanup());
}

bool CallbackAcquisition::canTrigger() const
{
    return query(VT_FEATURE_CAN_TRIGGER, hasTrigger());
}

bool CallbackAcquisition::canStartSingleReverse() const
{
    return query(VT_FEATURE_CAN_START_SINGLE_REVERSE, hasStartSingleReverse());
}

bool CallbackAcquisition::canStartReverse() const
{
    return query(VT_FEATURE_CAN_START_REVERSE, hasStartReverse());
}

bool CallbackAcquisition::canStart() const
{
    return query(VT_FEATURE_CAN_START, hasStart());
}

bool CallbackAcquisition::canStartFixed() const
{
    return query(VT_FEATURE_CAN_START_FIXED, hasStartFixed());
}

bool CallbackAcquisition::canStartSingle() const
{
    return query(VT_FEATURE_CAN_START_SINGLE, hasStartSingle());
}

bool CallbackAcquisition::canPause() const
{
    return query(VT_FEATURE_CAN_PAUSE, hasPause());
}

bool CallbackAcquisition::canStop() const
{
    return query(VT_FEATURE_CAN_STOP, hasStop());
}

bool CallbackAcquisition::isSetup() const
{
    return query(VT_FEATURE_IS_SETUP, true);
}

bool CallbackAcquisition::isRunningSingleReverse() const
{
    return query(VT_FEATURE_IS_RUNNING_SINGLE_REVERSE, false);
}

bool CallbackAcquisition::isRunningReverse() const
{
    return query(VT_FEATURE_IS_RUNNING_REVERSE, false);
}

bool CallbackAcquisition::isRunning() const
{
    const bool canBeStarted =
        hasStart() || hasStartFixed() || hasStartSingle() || hasStartReverse() || hasStartSingleReverse();
    return query(VT_FEATURE_IS_RUNNING, !canBeStarted);
}

bool CallbackAcquisition::isRunningFixed() const
{
    return query(VT_FEATURE_IS_RUNNING_FIXED, false);
}

bool CallbackAcquisition::isRunningSingle() const
{
    return query(VT_FEATURE_IS_RUNNING_SINGLE, false);
}

bool CallbackAcquisition::isPaused() const
{
    return query(VT_FEATURE_IS_PAUSED, false);
}

bool CallbackAcquisition::isStopped() const
{
    const auto stopped = m_functions->get<VTQueryCallback>(VT_FEATURE_IS_STOPPED);
    return stopped ? stopped(m_functions->userData) : !isRunning();
}

bool CallbackAcquisition::activeSetupMode(char* const buffer, std::size_t* const size) const
{
    return call<VTTextCallback>(VT_FEATURE_ACTIVE_SETUP_MODE, false, buffer, size);
}

double CallbackAcquisition::frameRate() const
{
    return call<VTDoubleCallback>(VT_FEATURE_FRAME_RATE, 0.0);
}

std::size_t CallbackAcquisition::framesQueued() const
{
    return count(VT_FEATURE_FRAMES_QUEUED);
}

std::size_t CallbackAcquisition::framesFilled() const
{
    return count(VT_FEATURE_FRAMES_FILLED);
}

std::size_t CallbackAcquisition::framesDropped() const
{
    return count(VT_FEATURE_FRAMES_DROPPED);
}

std::size_t CallbackAcquisition::framesDelivered() const
{
    return count(VT_FEATURE_FRAMES_DELIVERED);
}

} // namespace Vistrel
