// SPDX-License-Identifier: MIT
// The objects that C hosts hold handles of, and the thread that they belong to.
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

/// A handle is looked up here before anything is done with it, and taken out before its object begins to go. Objects
/// come and go on the user-interface thread alone, so a pointer that was found there stays good there.
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

    std::mutex mutex; // guards all below; no host function is called under it
    Application* application = nullptr;
    std::thread::id thread; // of VTAppCreate
    std::unordered_map<const void*, Entry> live;
    bool isEnding = false; // inside VTAppDestroy
    int pushes = 0;        // calls under way on any thread that may let frames go
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
    void remove(const void* handle); ///< with a window go its actions' handles

    /// Has `callback` called on the user-interface thread, from no other call. Without an
    /// application there is no such thread any more, and no call.
    void callFinished(VTNotifyCallback callback, void* userData);
    void runFinishedCalls();
    void endFinishedCalls(); ///< runs them; there are no later ones

    /// Once there is no application: waits for the calls in `pushes`, but not for one that takes longer than the end of
    /// an application may.
    void waitForPushes();
};

/// A call that may let frames go, as long as this lives.
class PushScope
{
public:
    PushScope();
    ~PushScope();
    PushScope(const PushScope&) = delete;
    PushScope& operator=(const PushScope&) = delete;

private:
    bool m_isCounted; // not without an application: such calls do nothing, and are not to be waited for
};

Handles& handles();

} // namespace Vistrel
