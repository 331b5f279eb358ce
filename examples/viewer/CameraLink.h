// SPDX-License-Identifier: MIT
// A camera whose connection may be lost and restored.
#pragma once

#include "CameraConnection.h"

#include <functional>
#include <thread>

/// Keeps a camera connected: looks for a lost camera until it answers, restores its settings, and starts it if it was
/// running. Calls that may block on a camera that does not answer, for seconds in Aravis, are made on a separate
/// thread. Thread-safe.
class CameraLink
{
public:
    /// Throws `std::runtime_error`. `lossChanged` is called on the link's thread, with true when the camera is lost
    /// and with false when it is back, and never once the destructor has returned. It must not destroy the link.
    CameraLink(const Owned<ArvCamera>& camera, const QByteArray& name, std::function<void(bool)> lossChanged);
    CameraLink(const CameraLink&) = delete;
    CameraLink& operator=(const CameraLink&) = delete;
    /// Stops and disconnects the camera. If it does not answer within a second, the link's thread is detached and does
    /// it later, unless the process ends.
    ~CameraLink();

    bool isLost() const;

    /// Returns when the camera has started, or at once when it is lost: it is started when it is back. Throws
    /// `std::runtime_error` when it refuses or does not answer within two seconds; it is stopped then.
    void start();
    /// Returns at once; the camera is stopped a moment later.
    void stop();

    /// Exclusive access to the connection.
    struct Access
    {
        std::unique_lock<std::mutex> lock;
        CameraConnection* connection; ///< null while the camera is lost
    };
    Access access();

private:
    struct Keeper;

    const std::shared_ptr<Keeper> m_keeper; // owned by the thread, too
    std::thread m_thread;
};
