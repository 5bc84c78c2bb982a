#pragma once

#include "TolvaneCore/StatsReadings.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <optional>

namespace tolvane {

namespace platform {
class HostStatistics;
}

// Measures CPU load, memory in use and storage in use while the menu is open, and tells its
// observers before each new reading.
class SystemStats : public QObject {
    Q_OBJECT

public:
    using Reading = tolvane::Reading;

    explicit SystemStats(platform::HostStatistics& host);

    void start();
    void stop();
    void sample();

    const Reading& cpu() const { return cpuValue; }
    const Reading& memory() const { return memoryValue; }
    const Reading& storage() const { return storageValue; }
    bool isSampling() const { return !timer.isNull(); }

signals:
    void willChange();

private:
    void setCpu(Reading reading);
    void setMemory(Reading reading);
    void setStorage(Reading reading);

    platform::HostStatistics& host;
    Reading cpuValue;
    Reading memoryValue;
    Reading storageValue;
    QPointer<QTimer> timer;
    std::optional<TickPair> lastTicks;
};

} // namespace tolvane
