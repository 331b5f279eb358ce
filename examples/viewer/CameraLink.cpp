// SPDX-License-Identifier: MIT
// A camera whose connection may be lost and restored.
#include "CameraLink.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <stdexcept>
#include <string>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds betweenAttempts(100);
constexpr std::chrono::seconds longestStart(2);
constexpr std::chrono::seconds longestFarewell(1);

} // namespace

/// The thread's data, which may outlive the link.
struct CameraLink::Keeper
{
    Keeper(const Owned<ArvCamera>& camera, const QByteArray& name, std::function<void(bool)> tell)
        : known(rememberCamera(camera.get(), name)),
          format(arv_camera_get_pixel_format(camera.get(), nullptr)),
          lossChanged(std::move(tell)),
          connection(std::make_unique<CameraConnection>(camera, watch))
    {
    }

    void run();
    void matchWanted();
    void findLost();
    bool reconnect();
    void tell(bool isNowLost);

    const std::shared_ptr<CameraWatch> watch = std::make_shared<CameraWatch>();
    const KnownCamera known;
    const ArvPixelFormat format;
    std::atomic<bool> isLost{false};

    std::mutex tellMutex;
    std::function<void(bool)> lossChanged; // guarded by the mutex above; null once the link is being destroyed

    std::mutex connectionMutex; // locked before the watch's
    std::unique_ptr<CameraConnection> connection;

    // Guarded by the watch's mutex; the watch is notified of changes.
    bool wantsRunning = false;
    bool isStarted = false;                                 // never without a connection
    std::string startError;                                 // why the last start failed
    Clock::time_point busySince = Clock::time_point::max(); // in a call that may block on the camera
    bool isEnding = false;
    bool hasEnded = false;
};

void CameraLink::Keeper::run()
{
    const auto hasWork = [this] { return isEnding || watch->isLost || isStarted != wantsRunning; };
    std::unique_lock<std::mutex> guard(watch->mutex);
    while (watch->changed.wait(guard, hasWork), !isEnding) {
        const bool isLoss = watch->isLost;
        busySince = Clock::now();
        guard.unlock();
        isLoss ? findLost() : matchWanted();
        guard.lock();
        busySince = Clock::time_point::max();
    }
    const bool canAnswer = !watch->isLost;
    guard.unlock();
    if (canAnswer)
        matchWanted();
    {
        const std::lock_guard<std::mutex> connectionGuard(connectionMutex);
        connection.reset();
    }
    guard.lock();
    hasEnded = true;
    watch->changed.notify_all();
}

void CameraLink::Keeper::matchWanted()
{
    const std::lock_guard<std::mutex> connectionGuard(connectionMutex);
    std::unique_lock<std::mutex> guard(watch->mutex);
    const bool isWanted = wantsRunning;
    if (!connection || isStarted == isWanted)
        return;
    isStarted = false; // `start` waits for this start
    guard.unlock();
    std::string error;
    try {
        isWanted ? connection->start() : connection->stop();
    } catch (const std::runtime_error& failure) {
        error = failure.what();
    }
    guard.lock();
    if (error.empty()) {
        isStarted = isWanted;
    } else {
        wantsRunning = false;
        startError = error;
    }
    watch->changed.notify_all();
}

void CameraLink::Keeper::findLost()
{
    std::unique_ptr<CameraConnection> lost;
    {
        const std::lock_guard<std::mutex> connectionGuard(connectionMutex);
        lost = std::move(connection);
        const std::lock_guard<std::mutex> guard(watch->mutex);
        isStarted = false;
    }
    tell(true);
    lost.reset(); // first: it would give up the control that the new connection takes

    std::unique_lock<std::mutex> guard(watch->mutex);
    do {
        watch->isLost = false;
        guard.unlock();
        const bool isFound = reconnect();
        guard.lock();
        if (isFound)
            return;
    } while (!watch->changed.wait_for(guard, betweenAttempts, [this] { return isEnding; }));
}

bool CameraLink::Keeper::reconnect()
{
    try {
        const Owned<ArvCamera> camera = findAgain(known);
        if (!camera || arv_camera_get_pixel_format(camera.get(), nullptr) != format)
            return false;
        auto found = std::make_unique<CameraConnection>(camera, watch);
        std::unique_lock<std::mutex> guard(watch->mutex);
        const bool isWanted = wantsRunning;
        guard.unlock();
        if (isWanted)
            found->start();
        const std::lock_guard<std::mutex> connectionGuard(connectionMutex);
        connection = std::move(found);
        guard.lock();
        isStarted = isWanted;
    } catch (const std::runtime_error&) {
        return false; // it is not ready yet, or another program controls it
    }
    tell(false);
    return true;
}

void CameraLink::Keeper::tell(bool isNowLost)
{
    {
        const std::lock_guard<std::mutex> guard(watch->mutex);
        isLost = isNowLost;
        watch->changed.notify_all();
    }
    const std::lock_guard<std::mutex> guard(tellMutex);
    if (lossChanged)
        lossChanged(isNowLost);
}

CameraLink::CameraLink(const Owned<ArvCamera>& camera, const QByteArray& name, std::function<void(bool)> lossChanged)
    : m_keeper(std::make_shared<Keeper>(camera, name, std::move(lossChanged))),
      m_thread([keeper = m_keeper] { keeper->run(); })
{
}

CameraLink::~CameraLink()
{
    {
        const std::lock_guard<std::mutex> guard(m_keeper->tellMutex);
        m_keeper->lossChanged = nullptr;
    }
    CameraWatch& watch = *m_keeper->watch;
    std::unique_lock<std::mutex> guard(watch.mutex);
    m_keeper->wantsRunning = false;
    m_keeper->isEnding = true;
    watch.changed.notify_all();
    const auto deadline = std::min(m_keeper->busySince, Clock::now()) + longestFarewell;
    const bool hasEnded = watch.changed.wait_until(guard, deadline, [this] { return m_keeper->hasEnded; });
    guard.unlock();
    if (hasEnded)
        m_thread.join();
    else
        m_thread.detach();
}

bool CameraLink::isLost() const
{
    return m_keeper->isLost;
}

void CameraLink::start()
{
    CameraWatch& watch = *m_keeper->watch;
    std::unique_lock<std::mutex> guard(watch.mutex);
    m_keeper->wantsRunning = true;
    watch.changed.notify_all();
    const auto isDecided = [this] { return m_keeper->isStarted || m_keeper->isLost || !m_keeper->wantsRunning; };
    if (!watch.changed.wait_for(guard, longestStart, isDecided)) {
        m_keeper->wantsRunning = false;
        m_keeper->startError = "the camera does not answer";
    }
    if (!m_keeper->wantsRunning)
        throw std::runtime_error(m_keeper->startError);
}

void CameraLink::stop()
{
    const std::lock_guard<std::mutex> guard(m_keeper->watch->mutex);
    m_keeper->wantsRunning = false;
    m_keeper->watch->changed.notify_all();
}

CameraLink::Access CameraLink::access()
{
    std::unique_lock<std::mutex> lock(m_keeper->connectionMutex);
    return {std::move(lock), m_keeper->connection.get()};
}
