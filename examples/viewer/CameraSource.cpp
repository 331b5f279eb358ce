// SPDX-License-Identifier: MIT
// A GigE Vision or USB3 Vision camera, through Aravis.
#include "CameraSource.h"

#include "CameraConnection.h"
#include "PlayedSource.h"
#include "RecentFrames.h"

#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <thread>

namespace {

constexpr guint64 longestWait = 50000; // microseconds
constexpr std::chrono::milliseconds betweenAttempts(100);

// GenICam and the display name the formats alike, but the camera's RGB has red first in memory, which the display calls
// BGR; only the 30-bit word has the same order under the same name. GenICam's packed formats start at the least
// significant bit and leave no space between rows: they are none of the display's packed formats, in spite of the name.
QByteArray swappedOrder(QByteArray name)
{
    if (!name.endsWith("10p32") && (name.startsWith("RGB") || name.startsWith("BGR")))
        std::reverse(name.begin(), name.begin() + 3);
    return name;
}

std::optional<Vistrel::Format> displayFormat(QByteArray cameraName)
{
    if (cameraName == "RGB8Packed" || cameraName == "BGR8Packed") // the older names of RGB8 and BGR8
        cameraName.chop(6);
    Vistrel::Format format{};
    if (!Vistrel::formatFromName(swappedOrder(cameraName).constData(), &format) ||
        (format & Vistrel::formatPackingMask) != 0)
        return std::nullopt;
    return format;
}

QByteArray cameraFormat(Vistrel::Format format)
{
    const QByteArray name = swappedOrder(Vistrel::formatName(format));
    if (displayFormat(name) != format)
        throw std::runtime_error((name + ": no camera sends pixels packed in this way").constData());
    return name;
}

} // namespace

class CameraSource : public PlayedSource<Vistrel::AbstractAcquisitionInterface>
{
public:
    CameraSource(const QByteArray& name, std::optional<Vistrel::Format> format);
    ~CameraSource() override;

    bool start() override { return startRun(Length::Endless); }
    bool startSingle() override { return startRun(Length::Single); }
    bool stop() override;

    double frameRate() const override { return secondsLost() < 0 ? PlayedSource::frameRate() : 0; }
    std::size_t framesQueued() const override { return m_queued; }
    std::size_t framesFilled() const override { return m_filled; }
    std::size_t framesDropped() const override { return m_counts.lost + m_counts.withoutBuffer; }
    std::size_t framesDelivered() const override { return m_recent.delivered(); }
    double secondsLost() const override;
    std::optional<Received> received() const override;

    bool getNextFrame(Vistrel::RawImage* const image, Vistrel::ScopedLock* const lock) override;
    Vistrel::ScopedLock getFrameLock(const Vistrel::RawImage& image) override { return m_recent.lock(image); }

private:
    bool startRun(Length length);
    ArvBuffer* popNewest(std::size_t* popped);
    bool holdsFrame(ArvBuffer* buffer) const;
    void giveUp(const char* why);
    void keepConnected();
    void findLost();
    bool reconnect();

    Vistrel::Format m_format{};
    ArvPixelFormat m_cameraFormat = 0; // what each frame must come in
    KnownCamera m_known;               // not changed after construction
    FrameCounts m_counts;
    std::atomic<std::size_t> m_skipped{0}; // older than the newest one when the display asked, or stopped meanwhile
    std::atomic<std::size_t> m_queued{0};
    std::atomic<std::size_t> m_filled{0};
    std::atomic<Playback::Clock::time_point> m_lastFrame{Playback::Clock::now()};
    std::atomic<bool> m_isLost{false};
    RecentFrames m_recent;
    const std::shared_ptr<CameraWatch> m_watch = std::make_shared<CameraWatch>();
    // Guards the connection, which is null after a loss. The camera runs exactly while the playback does.
    std::mutex m_mutex;
    std::unique_ptr<CameraConnection> m_connection;
    std::thread m_keeper;
};

CameraSource::CameraSource(const QByteArray& name, std::optional<Vistrel::Format> format)
{
    const Owned<ArvCamera> camera = findCamera(name);
    CameraError error;
    if (format)
        arv_camera_set_pixel_format_from_string(camera.get(), cameraFormat(*format).constData(), error.target());
    error.check("pixel format");
    const QByteArray formatText = arv_camera_get_pixel_format_as_string(camera.get(), error.target());
    error.check("pixel format");
    const std::optional<Vistrel::Format> shown = displayFormat(formatText);
    if (!shown)
        throw std::runtime_error(
            (formatText + ": the camera's pixel format cannot be shown as it is; choose another with --format")
                .constData());
    m_format = *shown;
    m_cameraFormat = arv_camera_get_pixel_format(camera.get(), error.target());
    error.check("pixel format");
    arv_camera_set_acquisition_mode(camera.get(), ARV_ACQUISITION_MODE_CONTINUOUS, error.target());
    error.check("acquisition mode");
    m_known = rememberCamera(camera.get(), name);
    m_connection = std::make_unique<CameraConnection>(camera, m_watch);

    setHasStart(true);
    setHasStartSingle(true);
    setHasStop(true);
    setHasFrameRate(true);
    setHasFramesQueued(true);
    setHasFramesFilled(true);
    setHasFramesDropped(true);
    setHasFramesDelivered(true);
    m_playback.setup();
    startRun(Length::Endless);
    m_keeper = std::thread([this] { keepConnected(); });
}

CameraSource::~CameraSource()
{
    {
        const std::lock_guard<std::mutex> guard(m_watch->mutex);
        m_watch->isEnding = true;
        m_watch->changed.notify_all();
    }
    m_keeper.join();
    std::unique_lock<std::mutex> guard(m_watch->mutex);
    const bool isLost = m_watch->isLost;
    guard.unlock();
    // A lost camera would let each command run into its timeout.
    if (m_connection && m_playback.isRunning() && !isLost)
        m_connection->stop();
}

// Commands ------------------------------------------------------------------------------------------------------------

// While the camera is lost, the playback alone is changed: that is what it is found for.
bool CameraSource::startRun(Length length)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (!isRunning() && m_connection)
        m_connection->start();
    return m_playback.start(length);
}

bool CameraSource::stop()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_playback.stop() && (!m_connection || m_connection->stop());
}

// Frames --------------------------------------------------------------------------------------------------------------

bool CameraSource::getNextFrame(Vistrel::RawImage* const image, Vistrel::ScopedLock* const lock)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    const std::optional<Playback::Run> run = m_playback.run();
    if (!run || !m_connection)
        return false;
    std::size_t popped = 0;
    ArvBuffer* const buffer = popNewest(&popped);
    m_queued = m_connection->queued();
    m_filled = m_connection->filled();
    if (!buffer)
        return false;

    const LentBuffer lent = m_connection->lend(buffer);
    gint rowPadding = 0;
    gint framePadding = 0;
    arv_buffer_get_image_padding(buffer, &rowPadding, &framePadding);
    if (rowPadding != 0 || arv_buffer_get_image_pixel_format(buffer) != m_cameraFormat) {
        giveUp(rowPadding != 0 ? "the camera pads its rows, which cannot be shown as it is"
                               : "the camera has changed its pixel format");
        return false;
    }
    if (!holdsFrame(buffer) || !m_playback.finishFrame(*run, popped)) {
        ++m_skipped;
        return false;
    }
    if (!isRunning()) // it was a single one
        m_connection->stop();
    m_lastFrame = Playback::Clock::now();
    const Vistrel::RawImage frame{static_cast<const std::uint8_t*>(arv_buffer_get_image_data(buffer, nullptr)),
                                  std::size_t(arv_buffer_get_image_width(buffer)),
                                  std::size_t(arv_buffer_get_image_height(buffer)), m_format, nullptr};
    m_recent.deliver(frame, lent, image, lock);
    return true;
}

// The newest whole frame; older ones go back unseen. Null when none comes in time.
ArvBuffer* CameraSource::popNewest(std::size_t* popped)
{
    ArvBuffer* newest = nullptr;
    guint64 wait = longestWait;
    while (ArvBuffer* const buffer = m_connection->pop(wait, m_counts)) {
        wait = 0;
        ArvBuffer* older = buffer;
        if (arv_buffer_get_status(buffer) == ARV_BUFFER_STATUS_SUCCESS) {
            ++*popped;
            older = std::exchange(newest, buffer);
            m_skipped += older ? 1 : 0;
        }
        if (older)
            m_connection->giveBack(older);
    }
    return newest;
}

bool CameraSource::holdsFrame(ArvBuffer* buffer) const
{
    size_t bytes = 0;
    const void* const data = arv_buffer_get_image_data(buffer, &bytes);
    const auto width = std::size_t(arv_buffer_get_image_width(buffer));
    const auto height = std::size_t(arv_buffer_get_image_height(buffer));
    return data && width * height * bytesPerPixel(m_format) <= bytes;
}

void CameraSource::giveUp(const char* why)
{
    std::fprintf(stderr, "viewer: %s\n", why);
    m_playback.fail();
}

// Loss ----------------------------------------------------------------------------------------------------------------

// On a thread of its own: Aravis waits for seconds for a camera that is not there.
void CameraSource::keepConnected()
{
    std::unique_lock<std::mutex> guard(m_watch->mutex);
    while (m_watch->changed.wait(guard, [this] { return m_watch->isLost || m_watch->isEnding; }), !m_watch->isEnding) {
        guard.unlock();
        findLost();
        guard.lock();
    }
}

void CameraSource::findLost()
{
    std::unique_ptr<CameraConnection> lost;
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        lost = std::move(m_connection);
    }
    m_isLost = true;
    std::fprintf(stderr, "viewer: the camera was lost\n");
    signalAcquisitionStateChange();
    lost.reset(); // before the camera is asked for control anew, lest that be given back

    std::unique_lock<std::mutex> guard(m_watch->mutex);
    do {
        m_watch->isLost = false;
        guard.unlock();
        const bool isFound = reconnect();
        guard.lock();
        if (isFound)
            return;
    } while (!m_watch->changed.wait_for(guard, betweenAttempts, [this] { return m_watch->isEnding; }));
}

bool CameraSource::reconnect()
{
    try {
        const Owned<ArvCamera> camera = findAgain(m_known);
        if (!camera || arv_camera_get_pixel_format(camera.get(), nullptr) != m_cameraFormat)
            return false;
        auto connection = std::make_unique<CameraConnection>(camera, m_watch);
        const std::lock_guard<std::mutex> guard(m_mutex);
        if (isRunning())
            connection->start();
        m_connection = std::move(connection);
    } catch (const std::runtime_error&) {
        return false; // it is not quite there yet, or another program has it
    }
    std::fprintf(stderr, "viewer: the camera is back after %.1f s\n", secondsLost());
    m_isLost = false;
    signalAcquisitionStateChange();
    return true;
}

double CameraSource::secondsLost() const
{
    return m_isLost ? std::chrono::duration<double>(Playback::Clock::now() - m_lastFrame.load()).count() : -1;
}

std::optional<ViewerSource::Received> CameraSource::received() const
{
    return Received{m_counts.received, m_counts.lost, m_counts.withoutBuffer, m_skipped};
}

std::unique_ptr<Vistrel::AbstractAcquisitionInterface> openCamera(const QString& name,
                                                                  std::optional<Vistrel::Format> format)
{
    return std::make_unique<CameraSource>(name.toLocal8Bit(), format);
}
