// SPDX-License-Identifier: MIT
// The C interface's properties by their numbers alone.
#pragma once

#include "c/HostCamera.h"

/// Any handle or pointer, which becomes the wanted one as in C.
struct Handle
{
    void* at;
    template <typename Type>
    operator Type*() const
    {
        return static_cast<Type*>(at);
    }
};

enum Type { Int32, Double, Bool, CStr, Data };

inline std::int32_t getAny(int type, Handle handle, std::int32_t number, Handle value, std::size_t* size)
{
    return type == Int32    ? VTGetPropInt32(handle, number, value)
           : type == Double ? VTGetPropDouble(handle, number, value)
           : type == Bool   ? VTGetPropBool(handle, number, value)
           : type == CStr   ? VTGetPropCStr(handle, number, value, size)
                            : VTGetPropData(handle, number, value, size);
}

/// With a value that most properties take.
inline std::int32_t setAny(int type, Handle handle, std::int32_t number)
{
    return type == Int32    ? VTSetPropInt32(handle, number, 1)
           : type == Double ? VTSetPropDouble(handle, number, 1)
           : type == Bool   ? VTSetPropBool(handle, number, true)
           : type == CStr   ? VTSetPropCStr(handle, number, "")
                            : VTSetPropData(handle, number, nullptr, 0);
}
