// SPDX-License-Identifier: MIT
// The objects that C hosts hold handles of, and the thread that they belong to.
#pragma once

#include <Vistrel/Application.h>

#include <Vistrel/CInterface.h>

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
};

Handles& handles();

} // namespace Vistrel
