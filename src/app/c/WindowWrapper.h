// SPDX-License-Identifier: MIT
// What a C host's window handle stands for.
#pragma once

#include "app/c/CallbackAcquisition.h"
#include "app/c/CallbackFileInterface.h"

#include <Vistrel/CInterface.h>
#include <Vistrel/Window.h>

#include <memory>
#include <mutex>
#include <stdexcept>

namespace Vistrel {

/// What other threads reach of a window. They never hold the window itself, which must end on its own thread.
class WindowGate
{
public:
    /// Makes the frame, or none, the pending one. Returns that which was pending before, for the caller to let go.
    /// Throws when the window has gone.
    LentFramePtr push(const VTRawImage* image);
    void send(VTSignal signal); ///< throws when the window has gone
    bool isGood();

    void setAcquisition(CallbackAcquisition* acquisition);
    void windowHasGone();

private:
    CallbackAcquisition& checked();

    std::mutex m_mutex;
    CallbackAcquisition* m_acquisition = nullptr; // null before it is there and once it has gone
    bool m_isGood = true;                         // as `Window::good()` says
};

/// A window and its adapters.
struct WindowParts
{
    explicit WindowParts(ScopedAcquisitionInterface&& source, ScopedFileInterface&& files)
        : window(std::move(source), std::move(files))
    {
    }

    Window window;
    CallbackAcquisition* acquisition = nullptr; // the window's; there as long as the window is good
};

/// Owns the window and lends it to each call for as long as that takes. Bound to the user-interface thread, but for
/// `gate()`.
class VTWindowWrapper : public BaseClass
{
public:
    class WindowExpiredException : public std::runtime_error
    {
    public:
        WindowExpiredException() : std::runtime_error("The Vistrel Window handle has expired.") {}
    };

    explicit VTWindowWrapper(void* userData);
    ~VTWindowWrapper() override;
    VTWindowWrapper(const VTWindowWrapper&) = delete;
    VTWindowWrapper& operator=(const VTWindowWrapper&) = delete;

    std::shared_ptr<WindowParts> parts() const; ///< throws once the window has been closed
    std::shared_ptr<WindowGate> gate() const { return m_gate; }
    void* userData() const { return m_userData; }

private:
    void* const m_userData;
    const std::shared_ptr<WindowGate> m_gate = std::make_shared<WindowGate>();
    std::shared_ptr<WindowParts> m_owned;
    std::weak_ptr<WindowParts> m_parts;
};

} // namespace Vistrel
