// SPDX-License-Identifier: MIT
// Two windows, each with its own source. The user may close either; the program ends with the last.
#include <Vistrel/Application.h>
#include <Vistrel/ImperativeAcquisitionInterface.h>
#include <Vistrel/Window.h>

#include <array>
#include <vector>

namespace {

/// Draws a frame before each fetch.
class Camera final : public Vistrel::ImperativeAcquisitionInterface
{
public:
    explicit Camera(bool isUpright) : m_isUpright(isUpright) { setFramesLocked(true); }

    bool isSetup() const override { return true; }
    bool isRunning() const override { return true; }

    // On the stream's worker.
    void readyNextFrame() override
    {
        std::vector<unsigned char>& buffer = m_buffers[m_step % m_buffers.size()];
        buffer.resize(640 * 480);
        for (std::size_t i = 0; i < buffer.size(); ++i)
            buffer[i] = static_cast<unsigned char>((m_isUpright ? i / 640 : i % 640) + m_step);
        setNextFrame(buffer.data(), 640, 480, Vistrel::Mono8, nullptr);
        ++m_step;
    }

private:
    const bool m_isUpright;
    std::size_t m_step = 0;
    std::array<std::vector<unsigned char>, 3> m_buffers; // two that may still be read, and the next
};

} // namespace

int main(int argc, char** argv)
{
    Vistrel::Application application(argc, argv);
    Vistrel::Window first(Vistrel::ScopedAcquisitionInterface(new Camera(false)));
    Vistrel::Window second(Vistrel::ScopedAcquisitionInterface(new Camera(true)));
    first.setTitle("First");
    second.setTitle("Second");
    first.setGeometry(40, 60, 700, 620);
    second.setGeometry(400, 200, 700, 620);
    first.show();
    second.show();
    second.setTransientParent(first.native_handle()); // stays above the first one
    return application.exec();
}
