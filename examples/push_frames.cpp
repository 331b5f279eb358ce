// SPDX-License-Identifier: MIT
// The smallest live host: its thread pushes frames.
#include <Vistrel/Application.h>
#include <Vistrel/ImperativeAcquisitionInterface.h>
#include <Vistrel/Window.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace {

class Camera final : public Vistrel::ImperativeAcquisitionInterface
{
public:
    Camera()
    {
        setFramesLocked(true); // frames are taken only under their lock
        m_thread = std::thread([this] { pushFrames(); });
    }
    ~Camera() override
    {
        m_isEnding = true;
        m_thread.join();
    }
    bool isSetup() const override { return true; }
    bool isRunning() const override { return true; }

private:
    void pushFrames()
    {
        for (std::size_t step = 0; !m_isEnding; ++step) {
            {
                const Vistrel::ScopedLock lock = getFrameLock({}); // the buffer is not read meanwhile
                for (std::size_t i = 0; i < m_buffer.size(); ++i)
                    m_buffer[i] = static_cast<unsigned char>(i % 640 + step);
                setNextFrame(m_buffer.data(), 640, 480, Vistrel::Mono8, nullptr);
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(20)); // until the next exposure
        }
    }

    std::vector<unsigned char> m_buffer = std::vector<unsigned char>(640 * 480);
    std::atomic<bool> m_isEnding{false};
    std::thread m_thread;
};

} // namespace

int main(int argc, char** argv)
{
    Vistrel::Application application(argc, argv);
    Vistrel::Window window(Vistrel::ScopedAcquisitionInterface(new Camera)); // takes ownership of the camera
    window.setTitle("Pushed frames");
    window.show();
    return application.exec();
}
