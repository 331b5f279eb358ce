// SPDX-License-Identifier: MIT
// The single owner of a host's command.
#pragma once

#include <Vistrel/AbstractActionInterface.h>
#include <Vistrel/ScopedInterface.h>

namespace Vistrel {

/// Move-only owner that passes a host's command into the library; destroying it destroys the command. Reentrant.
class ScopedActionInterface : public ScopedInterface<AbstractActionInterface>
{
public:
    using ScopedInterface::ScopedInterface;
};

} // namespace Vistrel
