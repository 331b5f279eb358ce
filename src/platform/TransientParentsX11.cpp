// SPDX-License-Identifier: MIT
// Keeps windows above a parent on X11, by the window manager.
#include "platform/TransientParents.h"

#include <QtX11Extras/QX11Info>

#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <map>
#include <memory>
#include <xcb/xcb.h>

namespace Vistrel {

namespace {

struct Registry
{
    std::map<HWND, HWND> parents; // by child; user-interface thread only
};

Registry& registry()
{
    static Registry* const instance = new Registry;
    return *instance;
}

xcb_window_t numberOf(HWND window)
{
    return static_cast<xcb_window_t>(reinterpret_cast<std::uintptr_t>(window));
}

template <typename Reply>
using Owned = std::unique_ptr<Reply, decltype(&std::free)>;

bool isLiving(xcb_connection_t* connection, xcb_window_t window)
{
    const Owned<xcb_get_window_attributes_reply_t> reply(
        xcb_get_window_attributes_reply(connection, xcb_get_window_attributes(connection, window), nullptr),
        &std::free);
    return reply != nullptr;
}

// False for a window that does not exist any more.
bool isDone(xcb_connection_t* connection, xcb_void_cookie_t request)
{
    const Owned<xcb_generic_error_t> error(xcb_request_check(connection, request), &std::free);
    return error == nullptr;
}

bool isKeptAbove(HWND window, HWND lower)
{
    const auto entry = registry().parents.find(window);
    return entry != registry().parents.end() && (entry->second == lower || isKeptAbove(entry->second, lower));
}

} // namespace

// The window manager keeps a window above the one that it is transient for. This waits for the reply: a later request
// of the host to the window manager, on another connection, must not overtake the property.
bool addTransientChild(HWND parent, HWND child)
{
    xcb_connection_t* const connection = QX11Info::isPlatformX11() ? QX11Info::connection() : nullptr;
    if (!connection || !parent || !child || parent == child || !isLiving(connection, numberOf(parent)))
        return false;
    auto& parents = registry().parents;
    for (auto entry = parents.begin(); entry != parents.end();) // numbers are reused
        entry = isLiving(connection, numberOf(entry->second)) ? std::next(entry) : parents.erase(entry);
    if (isKeptAbove(parent, child))
        return false;
    const xcb_window_t number = numberOf(parent);
    if (!isDone(connection, xcb_change_property_checked(connection, XCB_PROP_MODE_REPLACE, numberOf(child),
                                                        XCB_ATOM_WM_TRANSIENT_FOR, XCB_ATOM_WINDOW, 32, 1, &number)))
        return false;
    parents[child] = parent;
    return true;
}

void removeTransientChild(HWND child)
{
    xcb_connection_t* const connection = QX11Info::isPlatformX11() ? QX11Info::connection() : nullptr;
    if (registry().parents.erase(child) != 0 && connection)
        isDone(connection, xcb_delete_property_checked(connection, numberOf(child), XCB_ATOM_WM_TRANSIENT_FOR));
}

bool isTransientChild(HWND child)
{
    auto& parents = registry().parents;
    const auto entry = parents.find(child);
    if (entry == parents.end() || !QX11Info::isPlatformX11())
        return false;
    if (isLiving(QX11Info::connection(), numberOf(entry->second)))
        return true;
    parents.erase(entry); // another window may get the number
    return false;
}

void removeTransientParents()
{
    registry().parents.clear();
}

} // namespace Vistrel
