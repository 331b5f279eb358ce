// SPDX-License-Identifier: MIT
// Defaults, capabilities and setup modes of a source of frames.
#include <Vistrel/AbstractAcquisitionInterface.h>

#include "base/TextOut.h"

#include <Vistrel/AcquisitionSignalHandler.h>

#include <bitset>
#include <set>
#include <string>
#include <vector>

namespace Vistrel {

namespace {

struct SetupMode
{
    std::string name;
    std::string description;
};

enum Capability {
    HasSetup,
    HasSetupMode,
    HasCleanup,
    HasTrigger,
    HasStartSingleReverse,
    HasStartReverse,
    HasStart,
    HasStartFixed,
    HasStartSingle,
    HasPause,
    HasStop,
    HasFrameRate,
    HasFramesQueued,
    HasFramesFilled,
    HasFramesDropped,
    HasFramesDelivered,
    CapabilityCount
};

} // namespace

struct AbstractAcquisitionInterface::PrivateData
{
    explicit PrivateData(AbstractAcquisitionInterface* owner) : signalHandler(owner) {}

    std::bitset<CapabilityCount> has;
    int startFixedMin = 1;
    int startFixedMax = 65536;
    int startFixedInc = 1;
    std::vector<SetupMode> setupModes;
    std::set<std::string> setupModeNames;
    AcquisitionSignalHandler signalHandler;
};

AbstractAcquisitionInterface::AbstractAcquisitionInterface() : m_data(new PrivateData(this)) {}

AbstractAcquisitionInterface::~AbstractAcquisitionInterface() = default;

void AbstractAcquisitionInterface::uxClosed() {}

// Commands ------------------------------------------------------------------------------------------------------------

#define VISTREL_NOT_OFFERED(Function)                                                                                  \
    bool AbstractAcquisitionInterface::Function                                                                        \
    {                                                                                                                  \
        return false;                                                                                                  \
    }
VISTREL_NOT_OFFERED(setup())
VISTREL_NOT_OFFERED(setupMode(const char* const))
VISTREL_NOT_OFFERED(cleanup())
VISTREL_NOT_OFFERED(trigger())
VISTREL_NOT_OFFERED(startSingleReverse())
VISTREL_NOT_OFFERED(startReverse())
VISTREL_NOT_OFFERED(start())
VISTREL_NOT_OFFERED(startFixed(std::size_t))
VISTREL_NOT_OFFERED(startSingle())
VISTREL_NOT_OFFERED(pause())
VISTREL_NOT_OFFERED(stop())

// State and statistics ------------------------------------------------------------------------------------------------

VISTREL_NOT_OFFERED(canSetup() const)
VISTREL_NOT_OFFERED(canSetupMode() const)
VISTREL_NOT_OFFERED(canCleanup() const)
VISTREL_NOT_OFFERED(canTrigger() const)
VISTREL_NOT_OFFERED(canStartSingleReverse() const)
VISTREL_NOT_OFFERED(canStartReverse() const)
VISTREL_NOT_OFFERED(canStart() const)
VISTREL_NOT_OFFERED(canStartFixed() const)
VISTREL_NOT_OFFERED(canStartSingle() const)
VISTREL_NOT_OFFERED(canPause() const)
VISTREL_NOT_OFFERED(canStop() const)
VISTREL_NOT_OFFERED(isRunningSingleReverse() const)
VISTREL_NOT_OFFERED(isRunningReverse() const)
VISTREL_NOT_OFFERED(isRunningFixed() const)
VISTREL_NOT_OFFERED(isRunningSingle() const)
VISTREL_NOT_OFFERED(isPaused() const)
VISTREL_NOT_OFFERED(activeSetupMode(char* const, std::size_t* const) const)

#undef VISTREL_NOT_OFFERED

bool AbstractAcquisitionInterface::isStopped() const
{
    return !isRunning();
}

double AbstractAcquisitionInterface::frameRate() const
{
    return 0.0;
}

std::size_t AbstractAcquisitionInterface::framesQueued() const
{
    return 0;
}

std::size_t AbstractAcquisitionInterface::framesFilled() const
{
    return 0;
}

std::size_t AbstractAcquisitionInterface::framesDropped() const
{
    return 0;
}

std::size_t AbstractAcquisitionInterface::framesDelivered() const
{
    return 0;
}

// Capabilities --------------------------------------------------------------------------------------------------------

#define VISTREL_CAPABILITY(Name)                                                                                       \
    bool AbstractAcquisitionInterface::has##Name() const                                                               \
    {                                                                                                                  \
        return m_data->has[Has##Name];                                                                                 \
    }                                                                                                                  \
    void AbstractAcquisitionInterface::setHas##Name(bool has)                                                          \
    {                                                                                                                  \
        m_data->has[Has##Name] = has;                                                                                  \
    }
VISTREL_CAPABILITY(Setup)
VISTREL_CAPABILITY(SetupMode)
VISTREL_CAPABILITY(Cleanup)
VISTREL_CAPABILITY(Trigger)
VISTREL_CAPABILITY(StartSingleReverse)
VISTREL_CAPABILITY(StartReverse)
VISTREL_CAPABILITY(Start)
VISTREL_CAPABILITY(StartFixed)
VISTREL_CAPABILITY(StartSingle)
VISTREL_CAPABILITY(Pause)
VISTREL_CAPABILITY(Stop)
VISTREL_CAPABILITY(FrameRate)
VISTREL_CAPABILITY(FramesQueued)
VISTREL_CAPABILITY(FramesFilled)
VISTREL_CAPABILITY(FramesDropped)
VISTREL_CAPABILITY(FramesDelivered)
#undef VISTREL_CAPABILITY

int AbstractAcquisitionInterface::startFixedMin() const
{
    return m_data->startFixedMin;
}

void AbstractAcquisitionInterface::setStartFixedMin(int frames)
{
    m_data->startFixedMin = frames;
}

int AbstractAcquisitionInterface::startFixedMax() const
{
    return m_data->startFixedMax;
}

void AbstractAcquisitionInterface::setStartFixedMax(int frames)
{
    m_data->startFixedMax = frames;
}

int AbstractAcquisitionInterface::startFixedInc() const
{
    return m_data->startFixedInc;
}

void AbstractAcquisitionInterface::setStartFixedInc(int frames)
{
    m_data->startFixedInc = frames;
}

// Setup modes ---------------------------------------------------------------------------------------------------------

bool AbstractAcquisitionInterface::addSetupMode(const char* const name, const char* const description)
{
    if (!name || !description || m_data->setupModeNames.count(name) != 0)
        return false;
    m_data->setupModes.push_back({name, description});
    try {
        m_data->setupModeNames.insert(name);
    } catch (...) {
        m_data->setupModes.pop_back();
        throw;
    }
    return true;
}

bool AbstractAcquisitionInterface::addSetupMode(const char* const name)
{
    return addSetupMode(name, "");
}

void AbstractAcquisitionInterface::clearSetupModes()
{
    m_data->setupModes.clear();
    m_data->setupModeNames.clear();
}

std::size_t AbstractAcquisitionInterface::setupModeCount() const
{
    return m_data->setupModes.size();
}

bool AbstractAcquisitionInterface::setupModeName(std::size_t index, char* const buffer, std::size_t* const size) const
{
    return index < m_data->setupModes.size() && textOut(m_data->setupModes[index].name, buffer, size);
}

bool AbstractAcquisitionInterface::setupModeDescription(std::size_t index, char* const buffer,
                                                        std::size_t* const size) const
{
    return index < m_data->setupModes.size() && textOut(m_data->setupModes[index].description, buffer, size);
}

// Signals -------------------------------------------------------------------------------------------------------------

AcquisitionSignalHandler* AbstractAcquisitionInterface::signalHandler()
{
    return &m_data->signalHandler;
}

const AcquisitionSignalHandler* AbstractAcquisitionInterface::signalHandler() const
{
    return &m_data->signalHandler;
}

void AbstractAcquisitionInterface::signalAcquisitionStateChange()
{
    Q_EMIT m_data->signalHandler.acquisitionStateChanged();
}

void AbstractAcquisitionInterface::signalFeatureSetChange()
{
    Q_EMIT m_data->signalHandler.featureSetChanged();
}

void AbstractAcquisitionInterface::signalGetFrameNow()
{
    Q_EMIT m_data->signalHandler.getFrameNow();
}

} // namespace Vistrel
