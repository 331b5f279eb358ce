// SPDX-License-Identifier: MIT
// A connected camera: how it is found, its settings, and its filled buffers.
#pragma once

#include "RecentFrames.h"

#include <arv.h>

#include <QtCore/QByteArray>

#include <atomic>
#include <condition_variable>
#include <utility>
#include <vector>

/// Counts the camera's frames, also those of earlier connections.
struct FrameCounts
{
    std::atomic<std::size_t> received{0};      // whole
    std::atomic<std::size_t> lost{0};          // in transmission, partly or completely
    std::atomic<std::size_t> withoutBuffer{0}; // not received for want of a buffer
};

/// Notified by a connection when its camera is lost.
struct CameraWatch
{
    std::mutex mutex; // guards the others
    std::condition_variable changed;
    bool isLost = false;
};

/// Owns one reference to an object of Aravis or GLib.
template <class Object>
using Owned = std::shared_ptr<Object>;

/// Identifies a camera that was found before, and keeps its settings.
struct KnownCamera
{
    QByteArray id;
    QByteArray serial;
    Owned<GInetAddress> interfaceAddress; // null for a camera that is not on the network; so is the next one
    Owned<GInetAddress> address;
    std::vector<std::pair<const char*, QByteArray>> settings; // in the order in which they must be made
};

/// Throws an error of Aravis with its message.
class CameraError
{
public:
    CameraError() = default;
    CameraError(const CameraError&) = delete;
    CameraError& operator=(const CameraError&) = delete;
    ~CameraError() { g_clear_error(&m_error); }

    GError** target() { return &m_error; }
    void check(const char* what) const;

private:
    GError* m_error = nullptr;
};

/// Finds a camera by its name, or the first one for an empty name. Throws `std::runtime_error` when there is none.
Owned<ArvCamera> findCamera(const QByteArray& name);

/// Whether the camera sends frames only on a trigger. A pause without frames then is no fault.
bool waitsForTrigger(ArvCamera* camera);

KnownCamera rememberCamera(ArvCamera* camera, const QByteArray& name);

/// Finds a camera that was lost and restores its settings; null when it does not answer. Throws `std::runtime_error`
/// when it refuses. Takes up to four seconds, but returns within one if the camera answers.
Owned<ArvCamera> findAgain(const KnownCamera& known);

/// The stream of a camera whose format is set. Destroying it takes some seconds after a loss, because Aravis tries to
/// give up its control of the camera.
class CameraConnection
{
public:
    /// Throws `std::runtime_error`. Notifies `watch` when the camera is lost.
    CameraConnection(Owned<ArvCamera> camera, std::shared_ptr<CameraWatch> watch);
    CameraConnection(const CameraConnection&) = delete;
    CameraConnection& operator=(const CameraConnection&) = delete;
    ~CameraConnection();

    void start(); ///< throws `std::runtime_error`
    void stop();

    /// Returns the next filled buffer, which must be lent or returned; null when none comes within `microseconds`.
    ArvBuffer* pop(guint64 microseconds, FrameCounts& counts);
    void giveBack(ArvBuffer* buffer);
    /// Returned with its last reference, or freed then if the connection has been destroyed.
    LentBuffer lend(ArvBuffer* buffer) const;

    std::size_t queued() const; ///< buffers that wait to be filled
    std::size_t filled() const; ///< buffers that wait to be fetched

private:
    struct Returns
    {
        std::mutex mutex;
        ArvStream* stream = nullptr; // null after the connection is destroyed
    };

    void count(ArvBuffer* buffer, FrameCounts& counts);

    const Owned<ArvCamera> m_camera;
    Owned<ArvStream> m_stream;
    const std::shared_ptr<Returns> m_returns = std::make_shared<Returns>();
    guint64 m_lastId = 0;           // of the frames since the start; 0 before the first
    guint64 m_underrunsCounted = 0; // packets of the frames that are counted in `withoutBuffer`
};
