// SPDX-License-Identifier: MIT
// A GigE Vision or USB3 Vision camera, through Aravis.
#include "CameraSource.h"

#include "PlayedSource.h"
#include "RecentFrames.h"

#include <arv.h>

#include <QtCore/QByteArray>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <stdexcept>

namespace {

// Two frames stay readable, one or two may still be locked; the camera fills the others meanwhile.
constexpr int bufferCount = 10;
constexpr guint64 longestWait = 50000; // microseconds

[[noreturn]] void fail(const QByteArray& what, const QByteArray& why)
{
    throw std::runtime_error((what + ": " + why).constData());
}

// Receives the error of one call, and throws it.
class Error
{
public:
    ~Error() { g_clear_error(&m_error); }
    GError** target() { return &m_error; }
    void check(const char* what) const
    {
        if (m_error)
            fail(what, m_error->message);
    }

private:
    GError* m_error = nullptr;
};

/// The camera and its stream, kept until the last of the stream's buffers has come back.
struct Device
{
    Device() = default;
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;
    // Takes some seconds after a loss: Aravis tries to hand back its control of the camera.
    ~Device()
    {
        g_clear_object(&stream);
        g_clear_object(&camera);
    }

    ArvCamera* camera = nullptr;
    ArvStream* stream = nullptr;
};

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
        fail(name, "no camera sends pixels packed in this way");
    return name;
}

// Only noted, on a thread of Aravis; the next fetch tells it. The device keeps the note, which does not keep the
// device.
using LossNote = std::shared_ptr<std::atomic<bool>>;

void noteLoss(ArvDevice*, gpointer note)
{
    **static_cast<LossNote*>(note) = true;
}

void forgetNote(gpointer note, GClosure*)
{
    delete static_cast<LossNote*>(note);
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

    std::size_t framesQueued() const override;
    std::size_t framesFilled() const override;
    std::size_t framesDropped() const override;
    std::size_t framesDelivered() const override { return m_recent.delivered(); }

    bool getNextFrame(Vistrel::RawImage* const image, Vistrel::ScopedLock* const lock) override;
    Vistrel::ScopedLock getFrameLock(const Vistrel::RawImage& image) override { return m_recent.lock(image); }

private:
    bool startRun(Length length);
    bool finishFrame(const Playback::Run& run, std::size_t made);
    ArvBuffer* popNewest(std::size_t* popped);
    bool holdsFrame(ArvBuffer* buffer) const;
    void giveUp(const char* why);

    const std::shared_ptr<Device> m_device = std::make_shared<Device>();
    Vistrel::Format m_format{};
    ArvPixelFormat m_cameraFormat = 0; // what each frame must come in
    const LossNote m_isLost = std::make_shared<std::atomic<bool>>(false);
    std::atomic<std::size_t> m_leftOut{0}; // older than the newest one when the display asked
    RecentFrames m_recent;
    std::mutex m_commandMutex; // one command at a time: the camera runs exactly while the playback does
};

CameraSource::CameraSource(const QByteArray& name, std::optional<Vistrel::Format> format)
{
    Error error;
    ArvCamera* const camera = m_device->camera =
        arv_camera_new(name.isEmpty() ? nullptr : name.constData(), error.target());
    error.check(name.isEmpty() ? "no camera" : name.constData());

    if (format)
        arv_camera_set_pixel_format_from_string(camera, cameraFormat(*format).constData(), error.target());
    error.check("pixel format");
    const QByteArray formatText = arv_camera_get_pixel_format_as_string(camera, error.target());
    error.check("pixel format");
    const std::optional<Vistrel::Format> shown = displayFormat(formatText);
    if (!shown)
        fail(formatText, "the camera's pixel format cannot be shown as it is; choose another with --format");
    m_format = *shown;
    m_cameraFormat = arv_camera_get_pixel_format(camera, error.target());
    error.check("pixel format");

    const guint frameBytes = arv_camera_get_payload(camera, error.target());
    error.check("frame size");
    arv_camera_set_acquisition_mode(camera, ARV_ACQUISITION_MODE_CONTINUOUS, error.target());
    error.check("acquisition mode");
    m_device->stream = arv_camera_create_stream(camera, nullptr, nullptr, error.target());
    error.check("stream");
    for (int i = 0; i < bufferCount; ++i)
        arv_stream_push_buffer(m_device->stream, arv_buffer_new_allocate(frameBytes));

    g_signal_connect_data(arv_camera_get_device(camera), "control-lost", G_CALLBACK(noteLoss), new LossNote(m_isLost),
                          forgetNote, GConnectFlags(0));

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

CameraSource::~CameraSource()
{
    // A lost camera would let each command run into its timeout.
    if (m_playback.isRunning() && !*m_isLost)
        arv_camera_stop_acquisition(m_device->camera, nullptr);
}

// Commands ------------------------------------------------------------------------------------------------------------

bool CameraSource::startRun(Length length)
{
    const std::lock_guard<std::mutex> guard(m_commandMutex);
    if (!isRunning()) {
        // Frames from before the last stop are not to be shown now.
        while (ArvBuffer* const buffer = arv_stream_try_pop_buffer(m_device->stream))
            arv_stream_push_buffer(m_device->stream, buffer);
        Error error;
        arv_camera_start_acquisition(m_device->camera, error.target());
        error.check("start");
    }
    return m_playback.start(length);
}

bool CameraSource::stop()
{
    const std::lock_guard<std::mutex> guard(m_commandMutex);
    if (!m_playback.stop())
        return false;
    Error error;
    arv_camera_stop_acquisition(m_device->camera, error.target());
    error.check("stop");
    return true;
}

// Frames --------------------------------------------------------------------------------------------------------------

bool CameraSource::getNextFrame(Vistrel::RawImage* const image, Vistrel::ScopedLock* const lock)
{
    if (hasFailed())
        return false;
    if (*m_isLost) {
        giveUp("the camera was lost");
        return false;
    }
    const std::optional<Playback::Run> run = m_playback.run();
    std::size_t popped = 0;
    ArvBuffer* const buffer = run ? popNewest(&popped) : nullptr;
    if (!buffer)
        return false;

    // From here on the buffer goes back to the camera when nobody refers to it any more.
    const LentBuffer lent(
        buffer, [device = m_device](ArvBuffer* returned) { arv_stream_push_buffer(device->stream, returned); });
    if (arv_buffer_get_status(buffer) != ARV_BUFFER_STATUS_SUCCESS)
        return false; // the stream counts it as a failure
    gint rowPadding = 0;
    gint framePadding = 0;
    arv_buffer_get_image_padding(buffer, &rowPadding, &framePadding);
    if (rowPadding != 0 || arv_buffer_get_image_pixel_format(buffer) != m_cameraFormat) {
        giveUp(rowPadding != 0 ? "the camera pads its rows, which cannot be shown as it is"
                               : "the camera has changed its pixel format");
        return false;
    }
    if (!holdsFrame(buffer)) {
        ++m_leftOut;
        return false;
    }
    if (!finishFrame(*run, popped))
        return false;
    const Vistrel::RawImage frame{static_cast<const std::uint8_t*>(arv_buffer_get_image_data(buffer, nullptr)),
                                  std::size_t(arv_buffer_get_image_width(buffer)),
                                  std::size_t(arv_buffer_get_image_height(buffer)), m_format, nullptr};
    m_recent.deliver(frame, lent, image, lock);
    return true;
}

bool CameraSource::finishFrame(const Playback::Run& run, std::size_t made)
{
    const std::lock_guard<std::mutex> guard(m_commandMutex);
    if (!m_playback.finishFrame(run, made))
        return false;
    if (!isRunning()) // it was a single one
        arv_camera_stop_acquisition(m_device->camera, nullptr);
    return true;
}

// The newest filled buffer; older ones go back unseen. Null when none comes in time.
ArvBuffer* CameraSource::popNewest(std::size_t* popped)
{
    ArvBuffer* newest = arv_stream_timeout_pop_buffer(m_device->stream, longestWait);
    for (*popped = 1; ArvBuffer* const newer = newest ? arv_stream_try_pop_buffer(m_device->stream) : nullptr;
         ++*popped) {
        arv_stream_push_buffer(m_device->stream, newest);
        ++m_leftOut;
        newest = newer;
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

// Statistics ----------------------------------------------------------------------------------------------------------

std::size_t CameraSource::framesQueued() const
{
    gint queued = 0;
    arv_stream_get_n_buffers(m_device->stream, &queued, nullptr);
    return std::size_t(std::max(queued, 0));
}

std::size_t CameraSource::framesFilled() const
{
    gint filled = 0;
    arv_stream_get_n_buffers(m_device->stream, nullptr, &filled);
    return std::size_t(std::max(filled, 0));
}

std::size_t CameraSource::framesDropped() const
{
    guint64 completed = 0;
    guint64 failures = 0;
    guint64 underruns = 0; // packets, not frames, for which no buffer was free
    arv_stream_get_statistics(m_device->stream, &completed, &failures, &underruns);
    return std::size_t(failures) + m_leftOut;
}

std::unique_ptr<Vistrel::AbstractAcquisitionInterface> openCamera(const QString& name,
                                                                  std::optional<Vistrel::Format> format)
{
    return std::make_unique<CameraSource>(name.toLocal8Bit(), format);
}
