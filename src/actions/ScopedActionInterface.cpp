// SPDX-License-Identifier: MIT
// The single owner of a host's command.
#include <Vistrel/ScopedActionInterface.h>

#include <utility>

namespace Vistrel {

ScopedActionInterface::ScopedActionInterface() : m_interface(nullptr) {}

ScopedActionInterface::ScopedActionInterface(AbstractActionInterface* const actionInterface)
    : m_interface(actionInterface)
{
}

ScopedActionInterface::ScopedActionInterface(ScopedActionInterface&& other) noexcept
    : m_interface(std::exchange(other.m_interface, nullptr))
{
}

ScopedActionInterface::~ScopedActionInterface()
{
    delete m_interface;
}

void ScopedActionInterface::take(ScopedActionInterface&& other)
{
    reset(std::exchange(other.m_interface, nullptr));
}

void ScopedActionInterface::reset(AbstractActionInterface* const actionInterface)
{
    delete std::exchange(m_interface, nullptr);
    m_interface = actionInterface;
}

} // namespace Vistrel
