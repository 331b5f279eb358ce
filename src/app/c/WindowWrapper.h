// SPDX-License-Identifier: MIT
// The object behind a C host's window handle.
#pragma once

#include "app/c/CallbackAcquisition.h"
#include "app/c/CallbackFileInterface.h"

#include <Vistrel/CInterface.h>
#include <Vistrel/Window.h>

#include <memory>
#include <mutex>
#include <stdexcept>

namespace Vistrel {

/// The part of a window that other threads use. They never hold the window, which must be destroyed on its own thread.
class WindowGate
{
public:
    /// Makes the frame the pending one, or removes that for null. Returns the previous one, so that it is released
    /// without the mutex. Throws when the window has been closed.
    LentFramePtr push(const VTRawImage* image);
    void send(VTSignal signal); ///< throws when the window has been closed
    bool isGood();

    void setAcquisition(CallbackAcquisition* acquisition);
    void windowHasGone();

private:
    CallbackAcquisition& checked();

    std::mutex m_mutex;
    CallbackAcquisition* m_acquisition = nullptr; // null before it is made and after it is destroyed
    bool m_isGood = true;                         // as `Window::good()`
};

/// A window and its adapters.
struct WindowParts
{
    explicit WindowParts(ScopedAcquisitionInterface&& source, ScopedFileInterface&& files)
        : window(std::move(source), std::move(files))
    {
    }

    Window window;
    CallbackAcquisition* acquisition = nullptr; // the window's; valid while the window is good
};

/// Owns the window and shares it with each running call. Bound to the user-interface thread, except for `gate()`.
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
