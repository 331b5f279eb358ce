// SPDX-License-Identifier: MIT
// A camera while it is there: how it is found, what it is told, and the buffers that come from it.
#pragma once

#include "RecentFrames.h"

#include <arv.h>

#include <QtCore/QByteArray>

#include <atomic>
#include <condition_variable>
#include <utility>
#include <vector>

/// What became of the camera's frames. Those of earlier connections count as well.
struct FrameCounts
{
    std::atomic<std::size_t> received{0};      // whole
    std::atomic<std::size_t> lost{0};          // on the wire, in part or altogether
    std::atomic<std::size_t> withoutBuffer{0}; // there was none to receive them
};

/// Learns from a connection that its camera is lost.
struct CameraWatch
{
    std::mutex mutex; // guards the others
    std::condition_variable changed;
    bool isLost = false;
};

/// Owns one reference to an object of Aravis or GLib.
template <class Object>
using Owned = std::shared_ptr<Object>;

/// By what a camera is known again, and what it has been told.
struct KnownCamera
{
    QByteArray id;
    QByteArray serial;
    Owned<GInetAddress> interfaceAddress; // null for a camera that is not on the network, as the next one
    Owned<GInetAddress> address;
    std::vector<std::pair<const char*, QByteArray>> settings; // in the order in which they are to be made
};

/// Throws what Aravis has to say of a failure.
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

/// Whether the camera sends a frame only when it is told to. Its silence means nothing then.
bool waitsForTrigger(ArvCamera* camera);

KnownCamera rememberCamera(ArvCamera* camera, const QByteArray& name);

/// Finds a camera that was lost and tells it its settings; null when it does not answer. Throws `std::runtime_error`
/// when it refuses. Takes up to four seconds, but answers within one when the camera does.
Owned<ArvCamera> findAgain(const KnownCamera& known);

/// The stream of a camera that has been told what to send. Destroying it takes some seconds after a loss: Aravis tries
/// to hand back its control of the camera.
class CameraConnection
{
public:
    /// Throws `std::runtime_error`. `watch` is told when the camera is lost.
    CameraConnection(Owned<ArvCamera> camera, std::shared_ptr<CameraWatch> watch);
    CameraConnection(const CameraConnection&) = delete;
    CameraConnection& operator=(const CameraConnection&) = delete;
    ~CameraConnection();

    void start(); ///< throws `std::runtime_error`
    void stop();

    /// The next filled buffer, which is to be lent or given back; null when none comes within `microseconds`.
    ArvBuffer* pop(guint64 microseconds, FrameCounts& counts);
    void giveBack(ArvBuffer* buffer);
    /// Goes back when nobody refers to it any more, and is freed when the connection has gone.
    LentBuffer lend(ArvBuffer* buffer) const;

    std::size_t queued() const; ///< buffers that wait to be filled
    std::size_t filled() const; ///< buffers that wait to be fetched

private:
    struct Returns
    {
        std::mutex mutex;
        ArvStream* stream = nullptr; // null when the connection has gone
    };

    void count(ArvBuffer* buffer, FrameCounts& counts);

    const Owned<ArvCamera> m_camera;
    Owned<ArvStream> m_stream;
    const std::shared_ptr<Returns> m_returns = std::make_shared<Returns>();
    guint64 m_lastId = 0;           // of the frames since the start; 0 before the first
    guint64 m_underrunsCounted = 0; // packets of frames that have been counted as without a buffer
};
