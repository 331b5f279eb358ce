// SPDX-License-Identifier: MIT
// The properties of all handles, as tables.
#pragma once

#include "app/c/WindowWrapper.h"

#include <Vistrel/Action.h>
#include <Vistrel/Application.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace Vistrel {

/// The object that a property belongs to; the others are null.
struct Owner
{
    Application* application = nullptr;
    Window* window = nullptr;
    Action* action = nullptr;
    std::shared_ptr<WindowParts> parts = nullptr; // keeps the window during the call

    AbstractAcquisitionInterface& source() const { return *window->acquisitionInterface(); }
};

template <typename Value>
struct Property
{
    std::int32_t number;
    Value (*read)(const Owner&);        // null: write only
    bool (*write)(const Owner&, Value); // null: read only; returns false when the value is not accepted
    bool (*isInRange)(Value);           // null: every value is
};

struct TextProperty
{
    std::int32_t number;
    bool (*read)(const Owner&, char* buffer, std::size_t* size);
    bool (*write)(const Owner&, const char* text);
};

struct DataProperty
{
    std::int32_t number;
    bool mayBeAbsent;
    std::size_t size;
    bool (*read)(const Owner&, void* data);        // false: absent
    bool (*write)(const Owner&, const void* data); // null data: absent
    bool (*isInRange)(const void* data);           // null: all data are
};

using LargestData = VTRawImage; ///< room for any property's data

/// The properties of one type.
template <typename Row>
struct PropertyTable
{
    const Row* first;
    const Row* last;

    const Row* find(std::int32_t number) const
    {
        const Row* const row = std::find_if(first, last, [=](const Row& one) { return one.number == number; });
        return row != last ? row : nullptr;
    }
};

PropertyTable<Property<std::int32_t>> int32Properties();
PropertyTable<Property<double>> doubleProperties();
PropertyTable<Property<bool>> boolProperties();
PropertyTable<TextProperty> textProperties();
PropertyTable<DataProperty> dataProperties();

} // namespace Vistrel
