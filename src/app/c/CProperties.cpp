// SPDX-License-Identifier: MIT
// Properties, for C hosts.
#include "app/c/Calls.h"
#include "app/c/Properties.h"

#include <cstring>

using namespace Vistrel;

namespace {

enum OwnerKind { OfApplication = 1, OfWindow, OfSource, OfAction };

bool isProperty(std::int32_t number)
{
    return int32Properties().find(number) || doubleProperties().find(number) || boolProperties().find(number) ||
           textProperties().find(number) || dataProperties().find(number);
}

bool isOwnerLive(VTHandle handle, std::int32_t number)
{
    switch (isProperty(number) ? number / 1000 : 0) {
    case OfApplication:
        return handles().find<Application>(handle);
    case OfWindow:
    case OfSource:
        return handles().find<VTWindowWrapper>(handle);
    case OfAction:
        return handles().find<Action>(handle);
    default:
        return handles().find<BaseClass>(handle);
    }
}

// Throws for a window that has been closed.
Owner ownerOf(VTHandle handle)
{
    Owner owner;
    if (auto* const wrapper = handles().find<VTWindowWrapper>(handle)) {
        owner.parts = wrapper->parts();
        owner.window = &owner.parts->window;
    }
    owner.application = handles().find<Application>(handle);
    owner.action = handles().find<Action>(handle);
    return owner;
}

// Checks, and passes the property's row to `work`.
template <typename Row, typename Work>
std::int32_t callOnProperty(VTHandle handle, std::int32_t number, std::initializer_list<const void*> required,
                            const PropertyTable<Row>& table, Work&& work) noexcept
{
    return guarded([&]() -> std::int32_t {
        const std::int32_t refusal = firstChecks(handle, VT_ERROR_NULL_POINTER, required);
        if (refusal != VT_OK)
            return refusal;
        if (!isOwnerLive(handle, number))
            return VT_ERROR_WRONG_HANDLE;
        if (!handles().isUserInterfaceThread())
            return VT_ERROR_WRONG_THREAD;
        const Row* const row = table.find(number);
        if (!row)
            return isProperty(number) ? VT_ERROR_PROPERTY_TYPE : VT_ERROR_UNKNOWN_PROPERTY;
        return work(*row);
    });
}

template <typename Value>
std::int32_t setProperty(VTHandle handle, std::int32_t number, const PropertyTable<Property<Value>>& table,
                         Value value) noexcept
{
    return callOnProperty(handle, number, {}, table, [&](const Property<Value>& property) -> std::int32_t {
        if (!property.write)
            return VT_ERROR_READ_ONLY;
        if (property.isInRange && !property.isInRange(value))
            return VT_ERROR_OUT_OF_RANGE;
        return property.write(ownerOf(handle), value) ? VT_OK : VT_ERROR_PROPERTY_REFUSED;
    });
}

template <typename Value>
std::int32_t getProperty(VTHandle handle, std::int32_t number, const PropertyTable<Property<Value>>& table,
                         Value* value) noexcept
{
    return callOnProperty(handle, number, {value}, table, [&](const Property<Value>& property) -> std::int32_t {
        if (!property.read)
            return VT_ERROR_WRITE_ONLY;
        *value = property.read(ownerOf(handle));
        return VT_OK;
    });
}

} // namespace

std::int32_t VTSetPropInt32(VTHandle handle, std::int32_t property, std::int32_t value)
{
    return setProperty(handle, property, int32Properties(), value);
}

std::int32_t VTSetPropDouble(VTHandle handle, std::int32_t property, double value)
{
    return setProperty(handle, property, doubleProperties(), value);
}

std::int32_t VTSetPropBool(VTHandle handle, std::int32_t property, bool value)
{
    return setProperty(handle, property, boolProperties(), value);
}

std::int32_t VTSetPropCStr(VTHandle handle, std::int32_t property, const char* value)
{
    return callOnProperty(handle, property, {value}, textProperties(), [&](const TextProperty& text) -> std::int32_t {
        return text.write(ownerOf(handle), value) ? VT_OK : VT_ERROR_PROPERTY_REFUSED;
    });
}

std::int32_t VTSetPropData(VTHandle handle, std::int32_t property, const void* data, std::size_t size)
{
    const void* const required = size > 0 ? data : handle;
    return callOnProperty(handle, property, {required}, dataProperties(), [&](const DataProperty& row) -> std::int32_t {
        if (!row.write)
            return VT_ERROR_READ_ONLY;
        const bool isAbsent = size == 0 && row.mayBeAbsent;
        if (!isAbsent && (size != row.size || (row.isInRange && !row.isInRange(data))))
            return VT_ERROR_OUT_OF_RANGE;
        return row.write(ownerOf(handle), isAbsent ? nullptr : data) ? VT_OK : VT_ERROR_PROPERTY_REFUSED;
    });
}

std::int32_t VTGetPropInt32(VTHandle handle, std::int32_t property, std::int32_t* value)
{
    return getProperty(handle, property, int32Properties(), value);
}

std::int32_t VTGetPropDouble(VTHandle handle, std::int32_t property, double* value)
{
    return getProperty(handle, property, doubleProperties(), value);
}

std::int32_t VTGetPropBool(VTHandle handle, std::int32_t property, bool* value)
{
    return getProperty(handle, property, boolProperties(), value);
}

std::int32_t VTGetPropCStr(VTHandle handle, std::int32_t property, char* buffer, std::size_t* size)
{
    return callOnProperty(handle, property, {size}, textProperties(), [&](const TextProperty& text) -> std::int32_t {
        text.read(ownerOf(handle), buffer, size);
        return VT_OK;
    });
}

std::int32_t VTGetPropData(VTHandle handle, std::int32_t property, void* buffer, std::size_t* size)
{
    return callOnProperty(handle, property, {size}, dataProperties(), [&](const DataProperty& row) -> std::int32_t {
        LargestData data{};
        const std::size_t capacity = *size;
        *size = row.read(ownerOf(handle), &data) ? row.size : 0;
        if (!buffer)
            return VT_OK;
        if (capacity < *size)
            return VT_ERROR_BUFFER_TOO_SMALL;
        std::memcpy(buffer, &data, *size);
        return VT_OK;
    });
}
