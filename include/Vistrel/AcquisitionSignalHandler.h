// SPDX-License-Identifier: MIT
// A source's announcements as signals, and its commands as slots.
#pragma once

#include <Vistrel/Export.h>

#include <QtCore/QObject>

#include <cstddef>
#include <memory>

namespace Vistrel {

class AbstractAcquisitionInterface;

/// Made and owned by its source. Bound to the thread that made the source, except for the signals: they are emitted on
/// the thread that the source announces from, so a receiver on another thread connects with queued delivery.
class VISTREL_EXPORT AcquisitionSignalHandler : public QObject
{
    Q_OBJECT

public:
    explicit AcquisitionSignalHandler(AbstractAcquisitionInterface* const acquisitionInterface);
    ~AcquisitionSignalHandler() override;

public Q_SLOTS:
    // Each runs the source's command of the same name and drops its result.
    void setup();
    void cleanup();
    void startSingleReverse();
    void startReverse();
    void start();
    void startFixed(size_t cnt);
    void startSingle();
    void pause();
    void stop();

Q_SIGNALS:
    void acquisitionStateChanged();
    void featureSetChanged();
    void getFrameNow();

private:
    struct VISTREL_LOCAL PrivateData;
    std::unique_ptr<PrivateData> m_data;
};

} // namespace Vistrel
