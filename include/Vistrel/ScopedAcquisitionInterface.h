// SPDX-License-Identifier: MIT
// The single owner of a source of frames.
#pragma once

#include <Vistrel/AbstractAcquisitionInterface.h>
#include <Vistrel/ScopedInterface.h>

namespace Vistrel {

/// Move-only owner that passes a host's source into the library; destroying it destroys the source. Reentrant.
class ScopedAcquisitionInterface : public ScopedInterface<AbstractAcquisitionInterface>
{
public:
    using ScopedInterface::ScopedInterface;
};

} // namespace Vistrel
