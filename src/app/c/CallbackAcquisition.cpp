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

void CallbackAcquisition::uxClosed()
{
    m_isClosed = true;
    if (const auto closed = m_functions->get<VTNotifyCallback>(VT_FEATURE_CLOSED))
        closed(m_functions->userData);
}

bool CallbackAcquisition::isRunning() const
{
    const bool canBeStarted =
        hasStart() || hasStartFixed() || hasStartSingle() || hasStartReverse() || hasStartSingleReverse();
    return query(VT_FEATURE_IS_RUNNING, !canBeStarted);
}

bool CallbackAcquisition::isStopped() const
{
    const auto stopped = m_functions->get<VTQueryCallback>(VT_FEATURE_IS_STOPPED);
    return stopped ? stopped(m_functions->userData) : !isRunning();
}

} // namespace Vistrel
