// SPDX-License-Identifier: MIT
// The single owner of a file interface.
#pragma once

#include <Vistrel/AbstractFileInterface.h>
#include <Vistrel/ScopedInterface.h>

namespace Vistrel {

/// Move-only owner that passes a host's file interface into the library; destroying it destroys the interface.
/// Reentrant.
class ScopedFileInterface : public ScopedInterface<AbstractFileInterface>
{
public:
    using ScopedInterface::ScopedInterface;
};

} // namespace Vistrel
