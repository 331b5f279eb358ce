// SPDX-License-Identifier: MIT
// A connected camera: how it is found, its settings, and its filled buffers.
#include "CameraConnection.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace {

// Two frames stay readable, one or two may still be locked; the camera fills the others meanwhile.
constexpr int bufferCount = 10;
constexpr guint64 mostMissing = 10000; // after a larger gap the numbers have restarted

// The settings, by GenICam's standard and older names, that change the pictures and that a camera loses without power.
// Each stands after those that limit it.
constexpr const char* settingNames[] = {"BinningHorizontal",
                                        "BinningVertical",
                                        "DecimationHorizontal",
                                        "DecimationVertical",
                                        "PixelFormat",
                                        "Width",
                                        "Height",
                                        "OffsetX",
                                        "OffsetY",
                                        "ReverseX",
                                        "ReverseY",
                                        "TriggerMode",
                                        "TriggerSource",
                                        "TriggerActivation",
                                        "ExposureMode",
                                        "ExposureAuto",
                                        "ExposureTime",
                                        "ExposureTimeAbs",
                                        "ExposureTimeRaw",
                                        "GainAuto",
                                        "Gain",
                                        "GainRaw",
                                        "BlackLevel",
                                        "BlackLevelRaw",
                                        "Gamma",
                                        "BalanceWhiteAuto",
                                        "AcquisitionFrameRateEnable",
                                        "AcquisitionFrameRate",
                                        "AcquisitionFrameRateAbs",
                                        "AcquisitionMode"};

template <class Object>
Owned<Object> own(Object* object)
{
    return object ? Owned<Object>(object, g_object_unref) : nullptr;
}

Owned<GInetAddress> inetAddress(GSocketAddress* address)
{
    if (!G_IS_INET_SOCKET_ADDRESS(address))
        return nullptr;
    GInetAddress* const inet = g_inet_socket_address_get_address(G_INET_SOCKET_ADDRESS(address));
    return own(static_cast<GInetAddress*>(g_object_ref(inet)));
}

QByteArray serialOf(ArvCamera* camera)
{
    CameraError ignored;
    return arv_camera_get_device_serial_number(camera, ignored.target());
}

// The value of an available setting; null for any other.
QByteArray valueOf(ArvCamera* camera, const char* name)
{
    ArvGcNode* const node = arv_device_get_feature(arv_camera_get_device(camera), name);
    CameraError none;
    if (!ARV_IS_GC_FEATURE_NODE(node) || !arv_gc_feature_node_is_available(ARV_GC_FEATURE_NODE(node), none.target()))
        return {};
    CameraError unread;
    return arv_gc_feature_node_get_value_as_string(ARV_GC_FEATURE_NODE(node), unread.target());
}

// Settings that the camera computes cannot be set, and need not be.
void restoreSettings(ArvCamera* camera, const KnownCamera& known)
{
    for (const auto& [name, value] : known.settings) {
        if (valueOf(camera, name) == value)
            continue;
        ArvGcNode* const node = arv_device_get_feature(arv_camera_get_device(camera), name);
        CameraError refused;
        if (ARV_IS_GC_FEATURE_NODE(node))
            arv_gc_feature_node_set_value_from_string(ARV_GC_FEATURE_NODE(node), value.constData(), refused.target());
    }
}

void noteLoss(ArvDevice*, gpointer data)
{
    CameraWatch& watch = **static_cast<std::shared_ptr<CameraWatch>*>(data);
    const std::lock_guard<std::mutex> guard(watch.mutex);
    watch.isLost = true;
    watch.changed.notify_all();
}

void forgetWatch(gpointer data, GClosure*)
{
    delete static_cast<std::shared_ptr<CameraWatch>*>(data);
}

} // namespace

void CameraError::check(const char* what) const
{
    if (m_error)
        throw std::runtime_error(std::string(what) + ": " + m_error->message);
}

// Finding -------------------------------------------------------------------------------------------------------------

Owned<ArvCamera> findCamera(const QByteArray& name)
{
    arv_update_device_list();
    CameraError error;
    const Owned<ArvCamera> camera = own(arv_camera_new(name.isEmpty() ? nullptr : name.constData(), error.target()));
    error.check(name.isEmpty() ? "no camera" : name.constData());
    return camera;
}

bool waitsForTrigger(ArvCamera* camera)
{
    const QByteArray mode = valueOf(camera, "TriggerMode");
    return !mode.isNull() && mode != "Off";
}

KnownCamera rememberCamera(ArvCamera* camera, const QByteArray& name)
{
    KnownCamera known;
    known.id = name;
    known.serial = serialOf(camera);
    for (unsigned int i = 0; i < arv_get_n_devices(); ++i) {
        if (known.serial == arv_get_device_serial_nbr(i))
            known.id = arv_get_device_id(i);
    }
    ArvDevice* const device = arv_camera_get_device(camera);
    if (ARV_IS_GV_DEVICE(device)) {
        known.interfaceAddress = inetAddress(arv_gv_device_get_interface_address(ARV_GV_DEVICE(device)));
        known.address = inetAddress(arv_gv_device_get_device_address(ARV_GV_DEVICE(device)));
    }
    for (const char* const setting : settingNames) {
        const QByteArray value = valueOf(camera, setting);
        if (!value.isNull())
            known.settings.emplace_back(setting, value);
    }
    return known;
}

Owned<ArvCamera> findAgain(const KnownCamera& known)
{
    Owned<ArvCamera> camera;
    // At its last address the camera is asked twice a second. A discovery waits a second for answers of others.
    if (known.address && known.interfaceAddress) {
        CameraError none;
        const Owned<ArvDevice> device =
            own(arv_gv_device_new(known.interfaceAddress.get(), known.address.get(), none.target()));
        CameraError refused;
        if (device)
            camera = own(arv_camera_new_with_device(device.get(), refused.target()));
    }
    if (!camera || serialOf(camera.get()) != known.serial) {
        camera.reset();
        arv_update_device_list();
        for (unsigned int i = 0; i < arv_get_n_devices() && !camera; ++i) {
            CameraError refused;
            if (known.id == arv_get_device_id(i))
                camera = own(arv_camera_new(known.id.constData(), refused.target()));
        }
    }
    if (camera)
        restoreSettings(camera.get(), known);
    return camera;
}

// Connection ----------------------------------------------------------------------------------------------------------

CameraConnection::CameraConnection(Owned<ArvCamera> camera, std::shared_ptr<CameraWatch> watch)
    : m_camera(std::move(camera))
{
    CameraError error;
    const guint frameBytes = arv_camera_get_payload(m_camera.get(), error.target());
    error.check("frame size");
    m_stream = own(arv_camera_create_stream(m_camera.get(), nullptr, nullptr, error.target()));
    error.check("stream");
    for (int i = 0; i < bufferCount; ++i)
        arv_stream_push_buffer(m_stream.get(), arv_buffer_new_allocate(frameBytes));
    m_returns->stream = m_stream.get();
    g_signal_connect_data(arv_camera_get_device(m_camera.get()), "control-lost", G_CALLBACK(noteLoss),
                          new std::shared_ptr<CameraWatch>(std::move(watch)), forgetWatch, GConnectFlags(0));
}

CameraConnection::~CameraConnection()
{
    const std::lock_guard<std::mutex> guard(m_returns->mutex);
    m_returns->stream = nullptr;
}

void CameraConnection::start()
{
    // Frames from before the last stop must not be shown.
    while (ArvBuffer* const buffer = arv_stream_try_pop_buffer(m_stream.get()))
        giveBack(buffer);
    m_lastId = 0;
    CameraError error;
    arv_camera_start_acquisition(m_camera.get(), error.target());
    error.check("start");
}

void CameraConnection::stop()
{
    CameraError ignored;
    arv_camera_stop_acquisition(m_camera.get(), ignored.target());
}

// Buffers -------------------------------------------------------------------------------------------------------------

ArvBuffer* CameraConnection::pop(guint64 microseconds, FrameCounts& counts)
{
    ArvBuffer* const buffer = microseconds > 0 ? arv_stream_timeout_pop_buffer(m_stream.get(), microseconds)
                                               : arv_stream_try_pop_buffer(m_stream.get());
    if (buffer)
        count(buffer, counts);
    return buffer;
}

// For frames without a buffer, Aravis counts packets, not frames. Like completely lost frames, they are a gap in the
// frame numbers.
void CameraConnection::count(ArvBuffer* buffer, FrameCounts& counts)
{
    const ArvBufferStatus status = arv_buffer_get_status(buffer);
    if (status == ARV_BUFFER_STATUS_SUCCESS)
        ++counts.received;
    else if (status != ARV_BUFFER_STATUS_ABORTED && status != ARV_BUFFER_STATUS_CLEARED)
        ++counts.lost;

    const guint64 id = arv_buffer_get_frame_id(buffer);
    // Numbers of 16 bits skip 0 when they restart.
    const guint64 missing = (id > m_lastId ? id - m_lastId : id + 0xFFFF - m_lastId) - 1;
    if (m_lastId != 0 && missing > 0 && missing < mostMissing) {
        guint64 completed = 0;
        guint64 failures = 0;
        guint64 underruns = 0;
        arv_stream_get_statistics(m_stream.get(), &completed, &failures, &underruns);
        (underruns > m_underrunsCounted ? counts.withoutBuffer : counts.lost) += std::size_t(missing);
        m_underrunsCounted = underruns;
    }
    m_lastId = id;
}

void CameraConnection::giveBack(ArvBuffer* buffer)
{
    arv_stream_push_buffer(m_stream.get(), buffer);
}

LentBuffer CameraConnection::lend(ArvBuffer* buffer) const
{
    return LentBuffer(buffer, [returns = m_returns](ArvBuffer* returned) {
        const std::lock_guard<std::mutex> guard(returns->mutex);
        if (returns->stream)
            arv_stream_push_buffer(returns->stream, returned);
        else
            g_object_unref(returned);
    });
}

std::size_t CameraConnection::queued() const
{
    gint buffers = 0;
    arv_stream_get_n_buffers(m_stream.get(), &buffers, nullptr);
    return std::size_t(std::max(buffers, 0));
}

std::size_t CameraConnection::filled() const
{
    gint buffers = 0;
    arv_stream_get_n_buffers(m_stream.get(), nullptr, &buffers);
    return std::size_t(std::max(buffers, 0));
}
