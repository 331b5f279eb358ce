// SPDX-License-Identifier: MIT
// The handles of C hosts, their objects, and the thread of these objects.
#pragma once

#include <Vistrel/Application.h>

#include <Vistrel/CInterface.h>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <vector>

namespace Vistrel {

class WindowGate;

/// Every call looks its handle up here; a handle is removed before its object is destroyed. Objects are created and
/// destroyed only on the user-interface thread, so a pointer that was found on it stays valid during the call.
struct Handles
{
    struct Entry
    {
        BaseClass* object;
        const void* window; // the handle of the window that an action belongs to
    };
    struct FinishedCall
    {
        VTNotifyCallback callback;
        void* userData;
    };

    std::mutex mutex; // guards all below; not held while a host function is called
    Application* application = nullptr;
    std::thread::id thread; // of VTAppCreate
    std::unordered_map<const void*, Entry> live;
    bool isEnding = false; // inside VTAppDestroy
    int pushes = 0;        // running calls that may release frames, on any thread
    std::condition_variable pushEnded;
    std::vector<FinishedCall> finishedCalls;

    template <typename Object>
    Object* find(const void* handle)
    {
        const std::lock_guard<std::mutex> guard(mutex);
        const auto entry = live.find(handle);
        return entry != live.end() ? dynamic_cast<Object*>(entry->second.object) : nullptr;
    }
    std::shared_ptr<WindowGate> gate(const void* window); ///< null for any other handle
    bool hasApplication();
    bool isUserInterfaceThread();

    void add(const void* handle, BaseClass* object, const void* window = nullptr);
    void remove(const void* handle); ///< also removes the handles of a window's actions

    /// Posts a call of `callback` to the user-interface thread; inside VTAppDestroy keeps it for `endFinishedCalls`.
    /// Without an application `callback` is not called.
    void callFinished(VTNotifyCallback callback, void* userData);
    void runFinishedCalls();
    void endFinishedCalls(); ///< runs them, and refuses later ones

    /// Waits, after the application has ended, for the calls that `pushes` counts, but for three seconds at most.
    void waitForPushes();
};

/// Counts a call that may release frames.
class PushScope
{
public:
    PushScope();
    ~PushScope();
    PushScope(const PushScope&) = delete;
    PushScope& operator=(const PushScope&) = delete;

private:
    bool m_isCounted; // false without an application: such a call does nothing and is not waited for
};

Handles& handles();

} // namespace Vistrel
