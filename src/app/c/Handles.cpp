// SPDX-License-Identifier: MIT
// The handles of C hosts, their objects, and the thread of these objects.
#include "app/c/Handles.h"

#include "app/c/WindowWrapper.h"
#include "base/HostCall.h"

#include <QtCore/QCoreApplication>

#include <chrono>
#include <utility>

namespace Vistrel {

Handles& handles()
{
    static Handles& handles = *new Handles; // never freed: threads may still call while the process ends
    return handles;
}

std::shared_ptr<WindowGate> Handles::gate(const void* window)
{
    const std::lock_guard<std::mutex> guard(mutex);
    const auto entry = live.find(window);
    const auto* const wrapper =
        entry != live.end() ? dynamic_cast<const VTWindowWrapper*>(entry->second.object) : nullptr;
    return wrapper ? wrapper->gate() : nullptr;
}

bool Handles::hasApplication()
{
    const std::lock_guard<std::mutex> guard(mutex);
    return application;
}

bool Handles::isUserInterfaceThread()
{
    const std::lock_guard<std::mutex> guard(mutex);
    return thread == std::this_thread::get_id();
}

void Handles::add(const void* handle, BaseClass* object, const void* window)
{
    const std::lock_guard<std::mutex> guard(mutex);
    live.insert_or_assign(handle, Entry{object, window});
}

void Handles::remove(const void* handle)
{
    const std::lock_guard<std::mutex> guard(mutex);
    live.erase(handle);
    for (auto entry = live.begin(); entry != live.end();)
        entry = entry->second.window == handle ? live.erase(entry) : std::next(entry);
}

void Handles::callFinished(VTNotifyCallback callback, void* userData)
{
    const std::lock_guard<std::mutex> guard(mutex);
    if (!application && !isEnding)
        return;
    finishedCalls.push_back({callback, userData});
    // Posted under the mutex, which the receiver also takes: a race checker then sees the post before the receiver. The
    // posted function captures nothing, because the receiver reads captures before it takes the mutex.
    if (application)
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [] { handles().runFinishedCalls(); }, Qt::QueuedConnection);
}

void Handles::runFinishedCalls()
{
    for (;;) {
        std::vector<FinishedCall> calls;
        {
            const std::lock_guard<std::mutex> guard(mutex);
            calls.swap(finishedCalls);
            if (calls.empty())
                return;
        }
        for (const FinishedCall& call : calls)
            hostCall("finished", [&] { call.callback(call.userData); });
    }
}

void Handles::endFinishedCalls()
{
    for (;;) {
        runFinishedCalls();
        const std::lock_guard<std::mutex> guard(mutex);
        isEnding = !finishedCalls.empty();
        if (!isEnding)
            return;
    }
}

void Handles::waitForPushes()
{
    std::unique_lock<std::mutex> guard(mutex);
    if (!pushEnded.wait_for(guard, std::chrono::seconds(3), [this] { return pushes == 0; }))
        reportLine("VTAppDestroy: A released frame's function that has not returned is left alone.");
}

PushScope::PushScope()
{
    const std::lock_guard<std::mutex> guard(handles().mutex);
    m_isCounted = handles().application;
    handles().pushes += m_isCounted;
}

PushScope::~PushScope()
{
    const std::lock_guard<std::mutex> guard(handles().mutex);
    handles().pushes -= m_isCounted;
    handles().pushEnded.notify_all();
}

} // namespace Vistrel
