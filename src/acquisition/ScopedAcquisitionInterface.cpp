// SPDX-License-Identifier: MIT
// The single owner of a source of frames.
#include <Vistrel/ScopedAcquisitionInterface.h>

#include <utility>

namespace Vistrel {

ScopedAcquisitionInterface::ScopedAcquisitionInterface() : m_interface(nullptr) {}

ScopedAcquisitionInterface::ScopedAcquisitionInterface(AbstractAcquisitionInterface* const acquisitionInterface)
    : m_interface(acquisitionInterface)
{
}

ScopedAcquisitionInterface::ScopedAcquisitionInterface(ScopedAcquisitionInterface&& other) noexcept
    : m_interface(std::exchange(other.m_interface, nullptr))
{
}

ScopedAcquisitionInterface::~ScopedAcquisitionInterface()
{
    delete m_interface;
}

void ScopedAcquisitionInterface::take(ScopedAcquisitionInterface&& other)
{
    reset(std::exchange(other.m_interface, nullptr));
}

void ScopedAcquisitionInterface::reset(AbstractAcquisitionInterface* const acquisitionInterface)
{
    delete std::exchange(m_interface, nullptr);
    m_interface = acquisitionInterface;
}

} // namespace Vistrel
