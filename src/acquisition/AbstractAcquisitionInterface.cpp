// SPDX-License-Identifier: MIT
// Defaults, capabilities and setup modes of a source of frames.
#include <Vistrel/AbstractAcquisitionInterface.h>

#include "base/TextOut.h"

#include <Vistrel/AcquisitionSignalHandler.h>

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

} // namespace

struct AbstractAcquisitionInterface::PrivateData
{
    explicit PrivateData(AbstractAcquisitionInterface* owner) : signalHandler(owner) {}

    bool hasSetup = false;
    bool hasSetupMode = false;
    bool hasCleanup = false;
    bool hasTrigger = false;
    bool hasStartSingleReverse = false;
    bool hasStartReverse = false;
    bool hasStart = false;
    bool hasStartFixed = false;
    bool hasStartSingle = false;
    bool hasPause = false;
    bool hasStop = false;
    bool hasFrameRate = false;
    bool hasFramesQueued = false;
    bool hasFramesFilled = false;
    bool hasFramesDropped = false;
    bool hasFramesDelivered = false;
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

bool AbstractAcquisitionInterface::setup()
{
    return false;
}

bool AbstractAcquisitionInterface::setupMode(const char* const)
{
    return false;
}

bool AbstractAcquisitionInterface::cleanup()
{
    return false;
}

bool AbstractAcquisitionInterface::trigger()
{
    return false;
}

bool AbstractAcquisitionInterface::startSingleReverse()
{
    return false;
}

bool AbstractAcquisitionInterface::startReverse()
{
    return false;
}

bool AbstractAcquisitionInterface::start()
{
    return false;
}

bool AbstractAcquisitionInterface::startFixed(std::size_t)
{
    return false;
}

bool AbstractAcquisitionInterface::startSingle()
{
    return false;
}

bool AbstractAcquisitionInterface::pause()
{
    return false;
}

bool AbstractAcquisitionInterface::stop()
{
    return false;
}

// State and statistics ------------------------------------------------------------------------------------------------

bool AbstractAcquisitionInterface::canSetup() const
{
    return false;
}

bool AbstractAcquisitionInterface::canSetupMode() const
{
    return false;
}

bool AbstractAcquisitionInterface::canCleanup() const
{
    return false;
}

bool AbstractAcquisitionInterface::canTrigger() const
{
    return false;
}

bool AbstractAcquisitionInterface::canStartSingleReverse() const
{
    return false;
}

bool AbstractAcquisitionInterface::canStartReverse() const
{
    return false;
}

bool AbstractAcquisitionInterface::canStart() const
{
    return false;
}

bool AbstractAcquisitionInterface::canStartFixed() const
{
    return false;
}

bool AbstractAcquisitionInterface::canStartSingle() const
{
    return false;
}

bool AbstractAcquisitionInterface::canPause() const
{
    return false;
}

bool AbstractAcquisitionInterface::canStop() const
{
    return false;
}

bool AbstractAcquisitionInterface::isRunningSingleReverse() const
{
    return false;
}

bool AbstractAcquisitionInterface::isRunningReverse() const
{
    return false;
}

bool AbstractAcquisitionInterface::isRunningFixed() const
{
    return false;
}

bool AbstractAcquisitionInterface::isRunningSingle() const
{
    return false;
}

bool AbstractAcquisitionInterface::isPaused() const
{
    return false;
}

bool AbstractAcquisitionInterface::isStopped() const
{
    return !isRunning();
}

bool AbstractAcquisitionInterface::activeSetupMode(char* const, std::size_t* const) const
{
    return false;
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

bool AbstractAcquisitionInterface::hasSetup() const
{
    return m_data->hasSetup;
}

void AbstractAcquisitionInterface::setHasSetup(bool has)
{
    m_data->hasSetup = has;
}

bool AbstractAcquisitionInterface::hasSetupMode() const
{
    return m_data->hasSetupMode;
}

void AbstractAcquisitionInterface::setHasSetupMode(bool has)
{
    m_data->hasSetupMode = has;
}

bool AbstractAcquisitionInterface::hasCleanup() const
{
    return m_data->hasCleanup;
}

void AbstractAcquisitionInterface::setHasCleanup(bool has)
{
    m_data->hasCleanup = has;
}

bool AbstractAcquisitionInterface::hasTrigger() const
{
    return m_data->hasTrigger;
}

void AbstractAcquisitionInterface::setHasTrigger(bool has)
{
    m_data->hasTrigger = has;
}

bool AbstractAcquisitionInterface::hasStartSingleReverse() const
{
    return m_data->hasStartSingleReverse;
}

void AbstractAcquisitionInterface::setHasStartSingleReverse(bool has)
{
    m_data->hasStartSingleReverse = has;
}

bool AbstractAcquisitionInterface::hasStartReverse() const
{
    return m_data->hasStartReverse;
}

void AbstractAcquisitionInterface::setHasStartReverse(bool has)
{
    m_data->hasStartReverse = has;
}

bool AbstractAcquisitionInterface::hasStart() const
{
    return m_data->hasStart;
}

void AbstractAcquisitionInterface::setHasStart(bool has)
{
    m_data->hasStart = has;
}

bool AbstractAcquisitionInterface::hasStartFixed() const
{
    return m_data->hasStartFixed;
}

void AbstractAcquisitionInterface::setHasStartFixed(bool has)
{
    m_data->hasStartFixed = has;
}

bool AbstractAcquisitionInterface::hasStartSingle() const
{
    return m_data->hasStartSingle;
}

void AbstractAcquisitionInterface::setHasStartSingle(bool has)
{
    m_data->hasStartSingle = has;
}

bool AbstractAcquisitionInterface::hasPause() const
{
    return m_data->hasPause;
}

void AbstractAcquisitionInterface::setHasPause(bool has)
{
    m_data->hasPause = has;
}

bool AbstractAcquisitionInterface::hasStop() const
{
    return m_data->hasStop;
}

void AbstractAcquisitionInterface::setHasStop(bool has)
{
    m_data->hasStop = has;
}

bool AbstractAcquisitionInterface::hasFrameRate() const
{
    return m_data->hasFrameRate;
}

void AbstractAcquisitionInterface::setHasFrameRate(bool has)
{
    m_data->hasFrameRate = has;
}

bool AbstractAcquisitionInterface::hasFramesQueued() const
{
    return m_data->hasFramesQueued;
}

void AbstractAcquisitionInterface::setHasFramesQueued(bool has)
{
    m_data->hasFramesQueued = has;
}

bool AbstractAcquisitionInterface::hasFramesFilled() const
{
    return m_data->hasFramesFilled;
}

void AbstractAcquisitionInterface::setHasFramesFilled(bool has)
{
    m_data->hasFramesFilled = has;
}

bool AbstractAcquisitionInterface::hasFramesDropped() const
{
    return m_data->hasFramesDropped;
}

void AbstractAcquisitionInterface::setHasFramesDropped(bool has)
{
    m_data->hasFramesDropped = has;
}

bool AbstractAcquisitionInterface::hasFramesDelivered() const
{
    return m_data->hasFramesDelivered;
}

void AbstractAcquisitionInterface::setHasFramesDelivered(bool has)
{
    m_data->hasFramesDelivered = has;
}

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
