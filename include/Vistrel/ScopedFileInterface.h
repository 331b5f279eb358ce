// SPDX-License-Identifier: MIT
// The single owner of a file interface.
#pragma once

#include <Vistrel/AbstractFileInterface.h>

namespace Vistrel {

/// Move-only owner that passes a host's file interface into the library; destroying it destroys the interface.
/// Reentrant.
class VISTREL_EXPORT ScopedFileInterface
{
public:
    ScopedFileInterface();
    /// Takes ownership; null makes an empty owner.
    ScopedFileInterface(AbstractFileInterface* const fileInterface);
    ScopedFileInterface(ScopedFileInterface&& other) noexcept;
    ScopedFileInterface(const ScopedFileInterface&) = delete;
    ScopedFileInterface& operator=(const ScopedFileInterface&) = delete;
    ~ScopedFileInterface();

    /// Deletes the interface owned now, then takes the other's and leaves the other empty.
    void take(ScopedFileInterface&& other);
    /// Deletes the interface owned now, then owns the new one, which may be null but not the one owned already.
    void reset(AbstractFileInterface* const fileInterface);

    AbstractFileInterface* get() const { return m_interface; }
    AbstractFileInterface* operator->() const { return m_interface; }
    AbstractFileInterface& operator*() const { return *m_interface; }
    explicit operator bool() const { return m_interface != nullptr; }
    bool operator!() const { return m_interface == nullptr; }

private:
    AbstractFileInterface* m_interface;
};

} // namespace Vistrel
