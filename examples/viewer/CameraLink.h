// SPDX-License-Identifier: MIT
// A camera that may be lost and come back.
#pragma once

#include "CameraConnection.h"

#include <functional>
#include <thread>

/// Keeps a camera connected: what is lost is looked for until it answers, told its settings again, and started if it
/// was running. What may wait for a camera that does not answer, which takes Aravis seconds, happens on a thread of its
/// own. Thread-safe.
class CameraLink
{
public:
    /// Throws `std::runtime_error`. `lossChanged` is called on the link's thread, with true when the camera is lost
    /// and with false when it is back, and never once the destructor has returned. It must not destroy the link.
    CameraLink(const Owned<ArvCamera>& camera, const QByteArray& name, std::function<void(bool)> lossChanged);
    CameraLink(const CameraLink&) = delete;
    CameraLink& operator=(const CameraLink&) = delete;
    /// Stops the camera and hands it back. When it does not answer within a second, that is left to the link's thread,
    /// which goes on until it has done so or the process ends.
    ~CameraLink();

    bool isLost() const;

    /// Returns when the camera has started, or at once when it is lost: it is started when it is back. Throws
    /// `std::runtime_error` when it refuses or does not answer within two seconds; it is stopped then.
    void start();
    /// Returns at once; the camera is told a little later.
    void stop();

    /// What nobody else uses while this lives.
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
