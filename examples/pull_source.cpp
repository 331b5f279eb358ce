// SPDX-License-Identifier: MIT
// A source that is asked for frames and gets commands: set up in one of two modes, start, stop, clean up.
#include <Vistrel/AbstractAcquisitionInterface.h>
#include <Vistrel/Application.h>
#include <Vistrel/Window.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace {

struct Mode
{
    const char* name;
    const char* description;
    std::size_t width;
    std::size_t height;
};

constexpr std::array<Mode, 2> modes = {{
    {"Preview", "320 x 240 pixels", 320, 240},
    {"Full", "1280 x 960 pixels", 1280, 960},
}};

struct Frame
{
    std::uintptr_t number;
    std::vector<std::uint8_t> pixels;
};

/// Keeps a frame's pixels while they are read.
class FrameLock final : public Vistrel::AbstractLock
{
public:
    explicit FrameLock(std::shared_ptr<const Frame> frame) : m_frame(std::move(frame)) {}

private:
    std::shared_ptr<const Frame> m_frame;
};

class Camera final : public Vistrel::AbstractAcquisitionInterface
{
public:
    Camera();

    // Commands, on the window's busy-work thread: they may wait for the camera.
    bool setup() override { return changeTo(State::Ready); }
    bool setupMode(const char* const name) override;
    bool cleanup() override { return changeTo(State::Off); }
    bool start() override { return changeTo(State::Running); }
    bool stop() override { return changeTo(State::Ready); }

    // Queries, on the user-interface thread: they return at once.
    bool canSetup() const override { return m_state == State::Off; }
    bool canSetupMode() const override { return m_state != State::Running; }
    bool canCleanup() const override { return m_state == State::Ready; }
    bool canStart() const override { return m_state == State::Ready; }
    bool canStop() const override { return m_state == State::Running; }
    bool isSetup() const override { return m_state != State::Off; }
    bool isRunning() const override { return m_state == State::Running; }
    bool activeSetupMode(char* const buffer, std::size_t* const size) const override
    {
        return isSetup() && setupModeName(m_mode, buffer, size);
    }
    std::size_t framesDelivered() const override { return m_delivered; }

    bool getNextFrame(Vistrel::RawImage* const image, Vistrel::ScopedLock* const lock) override;
    Vistrel::ScopedLock getFrameLock(const Vistrel::RawImage& image) override;

private:
    enum class State { Off, Ready, Running };

    bool changeTo(State state);

    std::atomic<State> m_state{State::Off};
    std::atomic<std::size_t> m_mode{0};
    std::atomic<std::size_t> m_delivered{0};
    std::mutex m_mutex;
    std::array<std::shared_ptr<const Frame>, 2> m_recent; // the last two delivered; guarded by m_mutex
};

Camera::Camera()
{
    setHasSetup(true);
    setHasSetupMode(true);
    setHasCleanup(true);
    setHasStart(true);
    setHasStop(true);
    setHasFramesDelivered(true);
    for (const Mode& mode : modes)
        addSetupMode(mode.name, mode.description);
}

bool Camera::changeTo(State state)
{
    m_state = state;
    signalAcquisitionStateChange();
    return true;
}

bool Camera::setupMode(const char* const name)
{
    for (std::size_t i = 0; i < modes.size(); ++i) {
        if (std::strcmp(modes[i].name, name) == 0) {
            m_mode = i;
            return changeTo(State::Ready);
        }
    }
    return false;
}

// On the stream's worker: it may also wait for the camera.
bool Camera::getNextFrame(Vistrel::RawImage* const image, Vistrel::ScopedLock* const lock)
{
    if (!isRunning())
        return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(20)); // until the next exposure
    if (!isRunning())
        return false;

    const Mode& mode = modes[m_mode];
    const auto frame = std::make_shared<Frame>();
    frame->number = ++m_delivered;
    frame->pixels.resize(mode.width * mode.height);
    for (std::size_t i = 0; i < frame->pixels.size(); ++i)
        frame->pixels[i] = static_cast<std::uint8_t>(i % mode.width + i / mode.width + frame->number);
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_recent[frame->number % 2] = frame;
    }
    // The number identifies the frame: a new one may have the address of one that has been freed.
    *image = {frame->pixels.data(), mode.width, mode.height, Vistrel::Mono8, reinterpret_cast<void*>(frame->number)};
    if (lock)
        lock->reset(new FrameLock(frame));
    return true;
}

// Called to read pixel values of the frame in view.
Vistrel::ScopedLock Camera::getFrameLock(const Vistrel::RawImage& image)
{
    const auto number = reinterpret_cast<std::uintptr_t>(image.userData);
    const std::lock_guard<std::mutex> guard(m_mutex);
    const std::shared_ptr<const Frame>& frame = m_recent[number % 2];
    if (!frame || frame->number != number)
        return {}; // it is too old
    return Vistrel::ScopedLock(new FrameLock(frame));
}

} // namespace

int main(int argc, char** argv)
{
    Vistrel::Application application(argc, argv);
    Vistrel::Window window(Vistrel::ScopedAcquisitionInterface(new Camera));
    window.setTitle("Pulled frames");
    window.setPreviewSetupMode(true);
    window.setPreviewBuffersDelivered(true);
    window.show();
    window.setRunning(); // sets up and starts
    return application.exec();
}
