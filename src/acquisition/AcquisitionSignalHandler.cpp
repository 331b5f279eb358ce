// SPDX-License-Identifier: MIT
// A source's announcements as signals, and its commands as slots.
#include <Vistrel/AcquisitionSignalHandler.h>

#include "base/HostCall.h"

#include <Vistrel/AbstractAcquisitionInterface.h>

#include <QtCore/QMetaType>

namespace Vistrel {

struct AcquisitionSignalHandler::PrivateData
{
    AbstractAcquisitionInterface* source;
};

AcquisitionSignalHandler::AcquisitionSignalHandler(AbstractAcquisitionInterface* const acquisitionInterface)
    : m_data(new PrivateData{acquisitionInterface})
{
    qRegisterMetaType<size_t>("size_t");
}

AcquisitionSignalHandler::~AcquisitionSignalHandler() = default;

void AcquisitionSignalHandler::setup()
{
    hostCall("setup", false, [&] { return m_data->source->setup(); });
}

void AcquisitionSignalHandler::cleanup()
{
    hostCall("cleanup", false, [&] { return m_data->source->cleanup(); });
}

void AcquisitionSignalHandler::startSingleReverse()
{
    hostCall("startSingleReverse", false, [&] { return m_data->source->startSingleReverse(); });
}

void AcquisitionSignalHandler::startReverse()
{
    hostCall("startReverse", false, [&] { return m_data->source->startReverse(); });
}

void AcquisitionSignalHandler::start()
{
    hostCall("start", false, [&] { return m_data->source->start(); });
}

void AcquisitionSignalHandler::startFixed(size_t cnt)
{
    hostCall("startFixed", false, [&] { return m_data->source->startFixed(cnt); });
}

void AcquisitionSignalHandler::startSingle()
{
    hostCall("startSingle", false, [&] { return m_data->source->startSingle(); });
}

void AcquisitionSignalHandler::pause()
{
    hostCall("pause", false, [&] { return m_data->source->pause(); });
}

void AcquisitionSignalHandler::stop()
{
    hostCall("stop", false, [&] { return m_data->source->stop(); });
}

} // namespace Vistrel
