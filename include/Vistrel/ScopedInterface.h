// SPDX-License-Identifier: MIT
// The single owner of an interface that a host implements.
#pragma once

#include <utility>

namespace Vistrel {

/// Move-only owner that passes a host's interface into the library; destroying it destroys the interface. The base of
/// `ScopedAcquisitionInterface`, `ScopedActionInterface` and `ScopedFileInterface`. Reentrant.
template <typename Interface>
class ScopedInterface
{
public:
    ScopedInterface() = default;
    /// Takes ownership; null makes an empty owner.
    ScopedInterface(Interface* const owned) : m_interface(owned) {}
    ScopedInterface(ScopedInterface&& other) noexcept : m_interface(std::exchange(other.m_interface, nullptr)) {}
    ScopedInterface(const ScopedInterface&) = delete;
    ScopedInterface& operator=(const ScopedInterface&) = delete;
    ~ScopedInterface() { delete m_interface; }

    /// Deletes the interface owned now, then takes the other's and leaves the other empty.
    void take(ScopedInterface&& other) { reset(std::exchange(other.m_interface, nullptr)); }
    /// Deletes the interface owned now, then owns the new one, which may be null but not the same one.
    void reset(Interface* const owned)
    {
        delete std::exchange(m_interface, nullptr);
        m_interface = owned;
    }

    Interface* get() const { return m_interface; }
    Interface* operator->() const { return m_interface; }
    Interface& operator*() const { return *m_interface; }
    explicit operator bool() const { return m_interface != nullptr; }
    bool operator!() const { return m_interface == nullptr; }

private:
    Interface* m_interface = nullptr;
};

} // namespace Vistrel
