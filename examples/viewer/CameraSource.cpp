// SPDX-License-Identifier: MIT
// A GigE Vision or USB3 Vision camera, through Aravis.
#include "CameraSource.h"

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

class CameraSource : public Vistrel::AbstractAcquisitionInterface
{
public:
    CameraSource(const QByteArray& name, std::optional<Vistrel::Format> format);
    ~CameraSource() override;

    bool isSetup() const override { return m_isRunning; }
    bool isRunning() const override { return m_isRunning; }
    std::size_t framesDropped() const override { return m_dropped; }
    std::size_t framesDelivered() const override { return m_recent.delivered(); }

    bool getNextFrame(Vistrel::RawImage* const image, Vistrel::ScopedLock* const lock) override;
    Vistrel::ScopedLock getFrameLock(const Vistrel::RawImage& image) override { return m_recent.lock(image); }

private:
    ArvBuffer* popNewest();
    bool isComplete(ArvBuffer* buffer) const;
    void stopRunning(const char* why);

    const std::shared_ptr<Device> m_device = std::make_shared<Device>();
    Vistrel::Format m_format{};
    ArvPixelFormat m_cameraFormat = 0; // what each frame must come in
    const LossNote m_isLost = std::make_shared<std::atomic<bool>>(false);
    std::atomic<bool> m_isRunning{false};
    std::atomic<std::size_t> m_dropped{0}; // incomplete, or older than the newest one when the display asked
    RecentFrames m_recent;
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

    arv_camera_start_acquisition(camera, error.target());
    error.check("start");
    m_isRunning = true;
    setHasFramesDropped(true);
    setHasFramesDelivered(true);
}

CameraSource::~CameraSource()
{
    // A lost camera would let each command run into its timeout.
    if (m_isRunning && !*m_isLost)
        arv_camera_stop_acquisition(m_device->camera, nullptr);
}

bool CameraSource::getNextFrame(Vistrel::RawImage* const image, Vistrel::ScopedLock* const lock)
{
    if (!m_isRunning)
        return false;
    if (*m_isLost) {
        stopRunning("the camera was lost");
        return false;
    }
    ArvBuffer* const buffer = popNewest();
    if (!buffer)
        return false;

    // From here on the buffer goes back to the camera when nobody refers to it any more.
    const LentBuffer lent(
        buffer, [device = m_device](ArvBuffer* returned) { arv_stream_push_buffer(device->stream, returned); });
    if (!isComplete(buffer)) {
        ++m_dropped;
        return false;
    }
    gint rowPadding = 0;
    gint framePadding = 0;
    arv_buffer_get_image_padding(buffer, &rowPadding, &framePadding);
    if (rowPadding != 0 || arv_buffer_get_image_pixel_format(buffer) != m_cameraFormat) {
        stopRunning(rowPadding != 0 ? "the camera pads its rows, which cannot be shown as it is"
                                    : "the camera has changed its pixel format");
        return false;
    }
    const Vistrel::RawImage frame{static_cast<const std::uint8_t*>(arv_buffer_get_image_data(buffer, nullptr)),
                                  std::size_t(arv_buffer_get_image_width(buffer)),
                                  std::size_t(arv_buffer_get_image_height(buffer)), m_format, nullptr};
    m_recent.deliver(frame, lent, image, lock);
    return true;
}

// The newest filled buffer; older ones go back unseen. Null when none comes in time.
ArvBuffer* CameraSource::popNewest()
{
    ArvBuffer* newest = arv_stream_timeout_pop_buffer(m_device->stream, longestWait);
    while (ArvBuffer* const newer = newest ? arv_stream_try_pop_buffer(m_device->stream) : nullptr) {
        arv_stream_push_buffer(m_device->stream, newest);
        ++m_dropped;
        newest = newer;
    }
    return newest;
}

bool CameraSource::isComplete(ArvBuffer* buffer) const
{
    if (arv_buffer_get_status(buffer) != ARV_BUFFER_STATUS_SUCCESS)
        return false;
    size_t bytes = 0;
    const void* const data = arv_buffer_get_image_data(buffer, &bytes);
    const auto width = std::size_t(arv_buffer_get_image_width(buffer));
    const auto height = std::size_t(arv_buffer_get_image_height(buffer));
    return data && width * height * bytesPerPixel(m_format) <= bytes;
}

void CameraSource::stopRunning(const char* why)
{
    std::fprintf(stderr, "viewer: %s\n", why);
    m_isRunning = false;
    signalAcquisitionStateChange();
}

std::unique_ptr<Vistrel::AbstractAcquisitionInterface> openCamera(const QString& name,
                                                                  std::optional<Vistrel::Format> format)
{
    return std::make_unique<CameraSource>(name.toLocal8Bit(), format);
}
