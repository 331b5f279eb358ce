// SPDX-License-Identifier: MIT
// The object behind a C host's window handle.
#include "app/c/WindowWrapper.h"

#include "base/LentMemory.h"

#include <Vistrel/WindowQt.h>

#include <QtCore/QObject>

#include <utility>

namespace Vistrel {

CallbackAcquisition& WindowGate::checked()
{
    if (!m_isGood || !m_acquisition)
        throw VTWindowWrapper::WindowExpiredException();
    return *m_acquisition;
}

LentFramePtr WindowGate::push(const VTRawImage* image)
{
    std::shared_ptr<LentFrame> frame;
    const std::lock_guard<std::mutex> guard(m_mutex);
    CallbackAcquisition& acquisition = checked();
    if (image) {
        frame = std::make_shared<LentFrame>(acquisition.functions());
        frame->image = *image;
        frame->memory = lentMemoryAt(image->data);
        frame->isLent = true;
    }
    return acquisition.push(std::move(frame));
}

void WindowGate::send(VTSignal signal)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    checked().send(signal);
}

bool WindowGate::isGood()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_isGood;
}

void WindowGate::setAcquisition(CallbackAcquisition* acquisition)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_acquisition = acquisition;
}

void WindowGate::windowHasGone()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_isGood = false;
}

VTWindowWrapper::VTWindowWrapper(void* userData) : m_userData(userData)
{
    const auto functions = std::make_shared<HostFunctions>(userData);
    auto* const acquisition = new CallbackAcquisition(functions, m_gate);
    ScopedAcquisitionInterface source(acquisition);
    m_owned =
        std::make_shared<WindowParts>(std::move(source), ScopedFileInterface(new CallbackFileInterface(functions)));
    m_owned->acquisition = acquisition;
    m_parts = m_owned;
    QObject::connect(qobject_cast<WindowQt*>(m_owned->window.qt_handle()), &WindowQt::partsGoing,
                     [gate = m_gate] { gate->windowHasGone(); });
}

VTWindowWrapper::~VTWindowWrapper()
{
    m_gate->windowHasGone();
}

std::shared_ptr<WindowParts> VTWindowWrapper::parts() const
{
    std::shared_ptr<WindowParts> parts = m_parts.lock();
    if (!parts || !parts->window.good())
        throw WindowExpiredException();
    return parts;
}

} // namespace Vistrel
