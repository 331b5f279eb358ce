// SPDX-License-Identifier: MIT
// The single owner of a source of frames.
#pragma once

#include <Vistrel/AbstractAcquisitionInterface.h>

namespace Vistrel {

/// Move-only owner that passes a host's source into the library; destroying it destroys the source. Reentrant.
class VISTREL_EXPORT ScopedAcquisitionInterface
{
public:
    ScopedAcquisitionInterface();
    /// Takes ownership; null makes an empty owner.
    ScopedAcquisitionInterface(AbstractAcquisitionInterface* const acquisitionInterface);
    ScopedAcquisitionInterface(ScopedAcquisitionInterface&& other) noexcept;
    ScopedAcquisitionInterface(const ScopedAcquisitionInterface&) = delete;
    ScopedAcquisitionInterface& operator=(const ScopedAcquisitionInterface&) = delete;
    ~ScopedAcquisitionInterface();

    /// Deletes the source owned now, then takes the other's and leaves the other empty.
    void take(ScopedAcquisitionInterface&& other);
    /// Deletes the source owned now, then owns the new one, which may be null but not the one owned already.
    void reset(AbstractAcquisitionInterface* const acquisitionInterface);

    AbstractAcquisitionInterface* get() const { return m_interface; }
    AbstractAcquisitionInterface* operator->() const { return m_interface; }
    AbstractAcquisitionInterface& operator*() const { return *m_interface; }
    explicit operator bool() const { return m_interface != nullptr; }
    bool operator!() const { return m_interface == nullptr; }

private:
    AbstractAcquisitionInterface* m_interface;
};

} // namespace Vistrel
