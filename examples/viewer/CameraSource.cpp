// SPDX-License-Identifier: MIT
// A GigE Vision or USB3 Vision camera, through Aravis.
#include "CameraSource.h"

#include "CameraLink.h"
#include "Console.h"
#include "PlayedSource.h"
#include "RecentFrames.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>

namespace {

constexpr guint64 longestWait = 50000; // microseconds
constexpr double longestSilence = 1;   // seconds, and
constexpr double longestGap = 4;       // frame periods

// GenICam and the library use the same format names, but GenICam's RGB has red first in memory, which the library calls
// BGR; only the 30-bit word has the same order. GenICam's packed formats start at the least significant bit and have no
// padding between rows: they differ from the library's packed formats of the same names.
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

    bool start() override { return startRun(Length::Endless); }
    bool startSingle() override { return startRun(Length::Single); }
    bool stop() override;

    double frameRate() const override { return secondsSilent() < 0 ? PlayedSource::frameRate() : 0; }
    std::size_t framesQueued() const override { return m_queued; }
    std::size_t framesFilled() const override { return m_filled; }
    std::size_t framesDropped() const override { return m_counts.lost + m_counts.withoutBuffer; }
    std::size_t framesDelivered() const override { return m_recent.delivered(); }
    bool isLost() const override { return m_link->isLost(); }
    double secondsSilent() const override;
    std::optional<Received> received() const override;

    bool getNextFrame(Vistrel::RawImage* const image, Vistrel::ScopedLock* const lock) override;
    Vistrel::ScopedLock getFrameLock(const Vistrel::RawImage& image) override { return m_recent.lock(image); }

private:
    bool startRun(Length length);
    ArvBuffer* popNewest(CameraConnection& connection, std::size_t* popped);
    bool holdsFrame(ArvBuffer* buffer) const;
    bool isOverdue() const;
    double age() const;
    void giveUp(const char* why);
    void tellLoss(bool isNowLost);

    Vistrel::Format m_format{};
    ArvPixelFormat m_cameraFormat = 0; // of each frame
    bool m_runsFreely = true;          // waits for no trigger
    FrameCounts m_counts;
    std::atomic<std::size_t> m_skipped{0}; // not the newest at a fetch, or filled before a stop
    std::atomic<std::size_t> m_queued{0};
    std::atomic<std::size_t> m_filled{0};
    std::atomic<Playback::Clock::time_point> m_lastFrame{Playback::Clock::now()};
    std::atomic<bool> m_isSilent{false}; // runs freely, but sends no frames
    RecentFrames m_recent;
    std::mutex m_mutex; // held by each fetch and each command, so that the camera runs exactly while the playback does
    std::unique_ptr<CameraLink> m_link;
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
    m_runsFreely = !waitsForTrigger(camera.get());
    m_link = std::make_unique<CameraLink>(camera, name, [this](bool isNowLost) { tellLoss(isNowLost); });

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
}

// Commands ------------------------------------------------------------------------------------------------------------

bool CameraSource::startRun(Length length)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (!isRunning())
        m_link->start();
    return m_playback.start(length);
}

bool CameraSource::stop()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (!m_playback.stop())
        return false;
    m_isSilent = false;
    m_link->stop();
    return true;
}

// Frames --------------------------------------------------------------------------------------------------------------

bool CameraSource::getNextFrame(Vistrel::RawImage* const image, Vistrel::ScopedLock* const lock)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    const std::optional<Playback::Run> run = m_playback.run();
    if (!run)
        return false;
    const CameraLink::Access access = m_link->access();
    if (!access.connection)
        return false;
    std::size_t popped = 0;
    ArvBuffer* const buffer = popNewest(*access.connection, &popped);
    m_queued = access.connection->queued();
    m_filled = access.connection->filled();
    m_isSilent = !buffer && isOverdue();
    if (!buffer)
        return false;

    const LentBuffer lent = access.connection->lend(buffer);
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
    if (!isRunning()) // it was the last frame of a run
        m_link->stop();
    m_lastFrame = Playback::Clock::now();
    const Vistrel::RawImage frame{static_cast<const std::uint8_t*>(arv_buffer_get_image_data(buffer, nullptr)),
                                  std::size_t(arv_buffer_get_image_width(buffer)),
                                  std::size_t(arv_buffer_get_image_height(buffer)), m_format, nullptr};
    m_recent.deliver(frame, lent, image, lock);
    return true;
}

// Returns the newest complete frame, and returns older ones to the camera. Null when none comes in time.
ArvBuffer* CameraSource::popNewest(CameraConnection& connection, std::size_t* popped)
{
    ArvBuffer* newest = nullptr;
    guint64 wait = longestWait;
    while (ArvBuffer* const buffer = connection.pop(wait, m_counts)) {
        wait = 0;
        ArvBuffer* older = buffer;
        if (arv_buffer_get_status(buffer) == ARV_BUFFER_STATUS_SUCCESS) {
            ++*popped;
            older = std::exchange(newest, buffer);
            m_skipped += older ? 1 : 0;
        }
        if (older)
            connection.giveBack(older);
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
    printError(QString::fromLatin1(why));
    m_playback.fail();
    m_link->stop();
}

// Loss ----------------------------------------------------------------------------------------------------------------

void CameraSource::tellLoss(bool isNowLost)
{
    if (isNowLost)
        printError(QStringLiteral("the camera was lost"));
    else
        printError(QStringLiteral("the camera is back after %1 s").arg(age(), 0, 'f', 1));
    signalAcquisitionStateChange();
}

// Before the second frame the frame rate is unknown.
bool CameraSource::isOverdue() const
{
    const double rate = m_playback.frameRate();
    return m_runsFreely && rate > 0 && age() > std::max(longestSilence, longestGap / rate);
}

double CameraSource::secondsSilent() const
{
    return isLost() || m_isSilent ? age() : -1;
}

// Of the last frame, in seconds.
double CameraSource::age() const
{
    return std::chrono::duration<double>(Playback::Clock::now() - m_lastFrame.load()).count();
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
