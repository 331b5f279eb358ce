// SPDX-License-Identifier: MIT
// The guard and the checks that the C functions share.
#pragma once

#include "app/c/Handles.h"
#include "app/c/WindowWrapper.h"

#include <cstdint>
#include <initializer_list>
#include <utility>

namespace Vistrel {

/// Runs `work` and turns an exception into a result code.
template <typename Work>
std::int32_t guarded(Work&& work) noexcept
{
    try {
        return std::forward<Work>(work)();
    } catch (const VTWindowWrapper::WindowExpiredException&) {
        return VT_ERROR_WINDOW_CLOSED;
    } catch (...) {
        return VT_ERROR_EXCEPTION;
    }
}

/// The first checks of every function: the application, a null handle, null pointers.
inline std::int32_t firstChecks(const void* handle, VTResult nullCode, std::initializer_list<const void*> required)
{
    if (!handles().hasApplication())
        return VT_ERROR_NO_APPLICATION;
    if (!handle)
        return VT_ERROR_NULL_HANDLE;
    for (const void* const pointer : required) {
        if (!pointer)
            return nullCode;
    }
    return VT_OK;
}

/// For a function of the user-interface thread. Passes the handle's object to `work`.
template <typename Object, typename Work>
std::int32_t callOn(const void* handle, VTResult nullCode, std::initializer_list<const void*> required,
                    Work&& work) noexcept
{
    return guarded([&]() -> std::int32_t {
        const std::int32_t refusal = firstChecks(handle, nullCode, required);
        if (refusal != VT_OK)
            return refusal;
        Object* const object = handles().find<Object>(handle);
        if (!object)
            return VT_ERROR_WRONG_HANDLE;
        if (!handles().isUserInterfaceThread())
            return VT_ERROR_WRONG_THREAD;
        return work(*object);
    });
}

template <typename Object, typename Work>
std::int32_t callOn(const void* handle, Work&& work) noexcept
{
    return callOn<Object>(handle, VT_OK, {}, std::forward<Work>(work));
}

/// For a function of any thread. Passes the window's gate to `work`.
template <typename Work>
std::int32_t callOnGate(VTWindowHandle window, Work&& work) noexcept
{
    return guarded([&]() -> std::int32_t {
        const std::int32_t refusal = firstChecks(window, VT_OK, {});
        if (refusal != VT_OK)
            return refusal;
        const std::shared_ptr<WindowGate> gate = handles().gate(window);
        return gate ? work(*gate) : VT_ERROR_WRONG_HANDLE;
    });
}

} // namespace Vistrel
