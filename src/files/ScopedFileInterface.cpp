// SPDX-License-Identifier: MIT
// The single owner of a file interface.
#include <Vistrel/ScopedFileInterface.h>

#include <utility>

namespace Vistrel {

ScopedFileInterface::ScopedFileInterface() : m_interface(nullptr) {}

ScopedFileInterface::ScopedFileInterface(AbstractFileInterface* const fileInterface) : m_interface(fileInterface) {}

ScopedFileInterface::ScopedFileInterface(ScopedFileInterface&& other) noexcept
    : m_interface(std::exchange(other.m_interface, nullptr))
{
}

ScopedFileInterface::~ScopedFileInterface()
{
    delete m_interface;
}

void ScopedFileInterface::take(ScopedFileInterface&& other)
{
    reset(std::exchange(other.m_interface, nullptr));
}

void ScopedFileInterface::reset(AbstractFileInterface* const fileInterface)
{
    delete std::exchange(m_interface, nullptr);
    m_interface = fileInterface;
}

} // namespace Vistrel
