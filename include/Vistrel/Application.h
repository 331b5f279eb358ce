// SPDX-License-Identifier: MIT
// The application object and its event loop.
#pragma once

#include <Vistrel/BaseClass.h>

#include <memory>

namespace Vistrel {

/// The object that a host creates before any window. The thread that creates it is the user-interface thread. It owns
/// Qt's application object and a copy of the command line.
///
/// Bound to the user-interface thread, except for `global()` and `exit()`, which are thread-safe.
class VISTREL_EXPORT Application : public BaseClass
{
public:
    /// Throws `std::invalid_argument` when `argc` is negative or one of the `argc` entries of `argv` is null. Throws
    /// `std::runtime_error` when an application exists already, also one that Qt made, and when windows cannot be
    /// shown: the platform that `QT_QPA_PLATFORM` or `-platform` names, or else the system's own, has no plug-in that
    /// can be loaded, or its X server (`DISPLAY`, `-display`), compositor, screen or device is missing. The text says
    /// which.
    ///
    /// Makes Qt draw at the resolution of the screen and, on Windows, makes it scale windows as the user has chosen for
    /// each screen, also by 125 or 150 %. Qt's environment variables, such as `QT_SCALE_FACTOR` and
    /// `QT_ENABLE_HIGHDPI_SCALING=0`, work as Qt describes them. On Windows this makes the process DPI-aware for each
    /// monitor, which concerns all of its windows; a manifest or an earlier call of the host has priority.
    Application(int argc, const char* const* argv);
    /// Must run outside `exec()`. Deletes the remaining windows, with their sources, and Qt's application object. Waits
    /// three seconds for calls to sources. A source whose call has not returned by then stays, and a line on the
    /// standard error stream reports it. `global()` is null from the beginning of this.
    ~Application() override;
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    /// The application of this process, or null.
    static Application* global();

    /// Runs the event loop until `exit`, and returns the code given there.
    int exec();
    /// Ends the event loop. An exit before the loop runs ends the next `exec()` at its start; a message box that is
    /// shown before that ends without an answer.
    void exit(int returnCode);

    /// Whether the event loop ends when the last window closes; true at first.
    bool quitOnLastWindowClosed() const;
    void setQuitOnLastWindowClosed(bool quit);

    /// Calls `method(userData)` whenever the event loop is idle inside `exec()`, in the order of registration, until
    /// the application is destroyed. The same pair may be added twice; a null method is stored and skipped. A method
    /// that is added during a pass is first called in the next one.
    void addIdleMethod(void (*method)(void*), void* const userData);

private:
    class VISTREL_LOCAL PrivateData;
    std::unique_ptr<PrivateData> m_data;
};

} // namespace Vistrel
