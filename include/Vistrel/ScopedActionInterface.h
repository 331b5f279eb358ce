// SPDX-License-Identifier: MIT
// The single owner of a host's command.
#pragma once

#include <Vistrel/AbstractActionInterface.h>

namespace Vistrel {

/// Move-only owner that passes a host's command into the library; destroying it destroys the command. Reentrant.
class VISTREL_EXPORT ScopedActionInterface
{
public:
    ScopedActionInterface();
    /// Takes ownership; null makes an empty owner.
    ScopedActionInterface(AbstractActionInterface* const actionInterface);
    ScopedActionInterface(ScopedActionInterface&& other) noexcept;
    ScopedActionInterface(const ScopedActionInterface&) = delete;
    ScopedActionInterface& operator=(const ScopedActionInterface&) = delete;
    ~ScopedActionInterface();

    /// Deletes the command owned now, then takes the other's and leaves the other empty.
    void take(ScopedActionInterface&& other);
    /// Deletes the command owned now, then owns the new one, which may be null but not the one owned already.
    void reset(AbstractActionInterface* const actionInterface);

    AbstractActionInterface* get() const { return m_interface; }
    AbstractActionInterface* operator->() const { return m_interface; }
    AbstractActionInterface& operator*() const { return *m_interface; }
    explicit operator bool() const { return m_interface != nullptr; }
    bool operator!() const { return m_interface == nullptr; }

private:
    AbstractActionInterface* m_interface;
};

} // namespace Vistrel
