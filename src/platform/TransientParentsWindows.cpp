// SPDX-License-Identifier: MIT
// Keeps windows above a parent on Windows, by a hook on the parent's thread.
#include "platform/TransientParents.h"

#include "platform/ErrorStream.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <mutex>
#include <set>
#include <vector>
#include <windows.h>

namespace Vistrel {

namespace {

struct Parent
{
    DWORD thread;                  // the window's owner
    std::map<HWND, HWND> children; // each with the window that was named, which is the parent or lies in it
    std::set<HWND> raised;         // the children that were made topmost with the parent
    bool isStackingDue = false;    // a request is posted to the carrier
};

// Never deleted: a hook procedure may still run while the process ends.
struct Registry
{
    std::mutex mutex; // never held while a window is moved, which calls other windows
    std::map<HWND, Parent> parents;
    std::map<DWORD, HHOOK> hooks; // by thread, for each thread that owns a parent
    HWND carrier = nullptr;       // a message-only window of the children's thread; receives requests of other threads
};

constexpr UINT stackingMessage = WM_APP; // its parameter is the parent
constexpr UINT_PTR lookTimer = 1;
constexpr UINT lookInterval = 50; // milliseconds
constexpr int lookCount = 10;
int looksLeft = 0; // the children's thread only

Registry& registry()
{
    static Registry* const instance = new Registry;
    return *instance;
}

// The thread of this process that owns a living window, or 0.
DWORD threadOf(HWND window)
{
    DWORD process = 0;
    const DWORD thread = window ? GetWindowThreadProcessId(window, &process) : 0;
    return process == GetCurrentProcessId() ? thread : 0;
}

// Under the mutex. `isToGo` is given a parent's entry and a child's.
template <typename Condition>
void removeChildren(Registry& all, const Condition& isToGo)
{
    for (auto parent = all.parents.begin(); parent != all.parents.end();) {
        auto& children = parent->second.children;
        for (auto child = children.begin(); child != children.end();) {
            if (isToGo(*parent, *child)) {
                parent->second.raised.erase(child->first);
                child = children.erase(child);
            } else {
                ++child;
            }
        }
        parent = children.empty() ? all.parents.erase(parent) : std::next(parent);
    }
}

// Under the mutex. The windows of a thread that ended are destroyed without a message, and its number may be reused.
void forgetTheDead(Registry& all)
{
    removeChildren(all, [](const auto& parent, const auto& child) {
        return threadOf(parent.first) != parent.second.thread || threadOf(child.second) == 0;
    });
}

// Under the mutex.
void removeIdleHooks(Registry& all)
{
    for (auto hook = all.hooks.begin(); hook != all.hooks.end();) {
        const bool isNeeded = std::any_of(all.parents.begin(), all.parents.end(),
                                          [&](const auto& entry) { return entry.second.thread == hook->first; });
        if (!isNeeded)
            UnhookWindowsHookEx(hook->second);
        hook = isNeeded ? std::next(hook) : all.hooks.erase(hook);
    }
}

// Under the mutex. Whether `window` is to stay above `lower`, or above what stays above it, and so on.
bool isKeptAbove(const Registry& all, HWND window, HWND lower)
{
    const auto entry = all.parents.find(lower);
    return entry != all.parents.end() &&
           std::any_of(entry->second.children.begin(), entry->second.children.end(), [&](const auto& child) {
               return child.first == window || isKeptAbove(all, window, child.first);
           });
}

void forget(HWND window)
{
    Registry& all = registry();
    const std::lock_guard<std::mutex> guard(all.mutex);
    removeChildren(
        all, [=](const auto& parent, const auto& child) { return parent.first == window || child.second == window; });
    removeIdleHooks(all);
}

bool isTopmost(HWND window)
{
    return (GetWindowLongPtrW(window, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0;
}

void putBelow(HWND window, HWND upper)
{
    SetWindowPos(window, upper, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE | SWP_NOACTIVATE);
}

BOOL CALLBACK addWindow(HWND window, LPARAM list)
{
    reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
    return TRUE;
}

// Places the children, in their order, between the parent and the lowest other window above it. Those in `lowered` are
// made ordinary windows first.
void stackAbove(HWND parent, const std::set<HWND>& children, const std::set<HWND>& lowered)
{
    std::vector<HWND> windows; // from the highest to the lowest
    EnumWindows(addWindow, reinterpret_cast<LPARAM>(&windows));
    for (auto window = windows.rbegin(); window != windows.rend(); ++window) {
        if (lowered.count(*window) != 0)
            putBelow(*window, HWND_NOTOPMOST); // places it above all ordinary windows, also the parent
    }
    const bool isParentTopmost = isTopmost(parent);
    // A topmost child is above an ordinary parent already, and must stay topmost.
    if (!isParentTopmost)
        windows.erase(std::remove_if(windows.begin(), windows.end(), isTopmost), windows.end());
    const auto place = std::find(windows.rbegin(), windows.rend(), parent);
    if (place == windows.rend())
        return;
    const auto isChild = [&](HWND window) { return children.count(window) != 0; };
    const auto other = std::find_if_not(std::next(place), windows.rend(), isChild);
    if (std::distance(std::next(place), other) == std::count_if(windows.begin(), windows.end(), isChild))
        return;
    const HWND highest = isParentTopmost ? HWND_TOPMOST : HWND_TOP;
    // Each is placed directly below the same window, and so above the previous ones.
    for (auto window = windows.rbegin(); window != windows.rend(); ++window) {
        if (isChild(*window))
            putBelow(*window, other == windows.rend() ? highest : *other);
    }
}

// On the children's thread. With a topmost parent the children become topmost, with an ordinary one ordinary again.
void stackChildren(HWND parent)
{
    std::set<HWND> children;
    std::set<HWND> lowered;
    {
        Registry& all = registry();
        const std::lock_guard<std::mutex> guard(all.mutex);
        const auto entry = all.parents.find(parent);
        if (entry == all.parents.end())
            return;
        entry->second.isStackingDue = false;
        for (const auto& child : entry->second.children)
            children.insert(child.first);
        std::set<HWND>& raised = entry->second.raised;
        if (!isTopmost(parent))
            lowered.swap(raised);
        else
            std::copy_if(children.begin(), children.end(), std::inserter(raised, raised.end()),
                         [](HWND child) { return !isTopmost(child); });
    }
    stackAbove(parent, children, lowered);
}

std::vector<HWND> allParents()
{
    Registry& all = registry();
    const std::lock_guard<std::mutex> guard(all.mutex);
    std::vector<HWND> parents;
    for (const auto& entry : all.parents)
        parents.push_back(entry.first);
    return parents;
}

// Wine and window managers raise an activated window later and without a message, so the order is checked again for
// half a second after the last request.
LRESULT CALLBACK carrierProcedure(HWND carrier, UINT message, WPARAM wParam, LPARAM lParam)
{
    try {
        if (message == stackingMessage) {
            stackChildren(reinterpret_cast<HWND>(wParam));
            looksLeft = lookCount;
            SetTimer(carrier, lookTimer, lookInterval, nullptr);
        } else if (message == WM_TIMER) {
            if (--looksLeft <= 0)
                KillTimer(carrier, lookTimer);
            for (const HWND parent : allParents())
                stackChildren(parent);
        }
    } catch (...) {
        writeErrorLine("Vistrel: Stacking above a transient parent failed."); // no exception may reach the system
    }
    return DefWindowProcW(carrier, message, wParam, lParam);
}

// The children's own thread stacks them: it may be waiting for the parent's thread, and a place that another thread
// computes may be outdated when it is used. At most one request a parent is posted.
void requestStacking(HWND parent)
{
    Registry& all = registry();
    const std::lock_guard<std::mutex> guard(all.mutex);
    const auto entry = all.parents.find(parent);
    if (entry != all.parents.end() && !entry->second.isStackingDue)
        entry->second.isStackingDue =
            PostMessageW(all.carrier, stackingMessage, reinterpret_cast<WPARAM>(parent), 0) != 0;
}

LRESULT CALLBACK beforeWindowProcedure(int code, WPARAM wParam, LPARAM lParam)
{
    if (code == HC_ACTION) {
        const auto* const call = reinterpret_cast<const CWPSTRUCT*>(lParam);
        if (call->message == WM_WINDOWPOSCHANGED || call->message == WM_ACTIVATE)
            requestStacking(call->hwnd);
        else if (call->message == WM_NCDESTROY)
            forget(call->hwnd);
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

// Under the mutex.
bool makeCarrier(Registry& all)
{
    if (!all.carrier) {
        all.carrier = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                      GetModuleHandleW(nullptr), nullptr);
        if (all.carrier)
            SetWindowLongPtrW(all.carrier, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(carrierProcedure));
    }
    return all.carrier;
}

// Under the mutex.
void removeChild(Registry& all, HWND window)
{
    removeChildren(all, [=](const auto&, const auto& child) { return child.first == window; });
}

} // namespace

bool addTransientChild(HWND named, HWND child)
{
    const HWND parent = GetAncestor(named, GA_ROOT);
    const DWORD thread = threadOf(parent);
    if (thread == 0 || threadOf(child) != GetCurrentThreadId() || parent == child)
        return false;
    Registry& all = registry();
    const std::lock_guard<std::mutex> guard(all.mutex);
    forgetTheDead(all);
    // Two windows, each kept above the other, would be moved for ever.
    if (isKeptAbove(all, parent, child) || !makeCarrier(all))
        return false;
    if (all.hooks.count(thread) == 0) {
        const HHOOK hook = SetWindowsHookExW(WH_CALLWNDPROC, beforeWindowProcedure, nullptr, thread);
        if (!hook)
            return false;
        all.hooks[thread] = hook;
        PostMessageW(parent, WM_NULL, 0, 0); // a Wine thread notices a hook at its next message
    }
    removeChild(all, child);
    Parent& entry = all.parents[parent];
    entry.thread = thread;
    entry.children[child] = named;
    removeIdleHooks(all);
    return true;
}

void removeTransientChild(HWND child)
{
    Registry& all = registry();
    const std::lock_guard<std::mutex> guard(all.mutex);
    removeChild(all, child);
    removeIdleHooks(all);
}

bool isTransientChild(HWND child)
{
    Registry& all = registry();
    const std::lock_guard<std::mutex> guard(all.mutex);
    forgetTheDead(all);
    return std::any_of(all.parents.begin(), all.parents.end(),
                       [&](const auto& entry) { return entry.second.children.count(child) != 0; });
}

void removeTransientParents()
{
    Registry& all = registry();
    const std::lock_guard<std::mutex> guard(all.mutex);
    all.parents.clear();
    removeIdleHooks(all);
    if (all.carrier)
        DestroyWindow(all.carrier);
    all.carrier = nullptr;
}

} // namespace Vistrel
