#include "Tolvane/gauges/SystemStats.h"

#include "platform/HostStatistics.h"

namespace tolvane {

namespace {
constexpr int sampleIntervalMs = 1500;
}

SystemStats::SystemStats(platform::HostStatistics& host) : host(host) {}

void SystemStats::start() {
    if (timer) {
        return;
    }
    sample();
    auto* repeating = new QTimer(this);
    repeating->setInterval(sampleIntervalMs);
    connect(repeating, &QTimer::timeout, this, &SystemStats::sample);
    repeating->start();
    timer = repeating;
}

void SystemStats::stop() {
    if (timer) {
        timer->stop();
        timer->deleteLater();
    }
    timer = nullptr;
}

void SystemStats::sample() {
    if (const auto now = host.cpuTicks()) {
        if (auto reading = cpuReading(lastTicks, *now, host.activeProcessorCount())) {
            setCpu(std::move(*reading));
        }
        lastTicks = now;
    }

    const std::uint64_t total = host.physicalMemoryBytes();
    if (const auto used = host.memoryUsedBytes()) {
        if (auto reading = memoryReading(*used, total)) {
            setMemory(std::move(*reading));
        }
    }

    if (const auto volume = host.rootVolume()) {
        if (const auto use = storageUse(volume->totalBytes, volume->availableBytes)) {
            setStorage(storageReading(*use));
        }
    }
}

void SystemStats::setCpu(Reading reading) {
    emit willChange();
    cpuValue = std::move(reading);
}

void SystemStats::setMemory(Reading reading) {
    emit willChange();
    memoryValue = std::move(reading);
}

void SystemStats::setStorage(Reading reading) {
    emit willChange();
    storageValue = std::move(reading);
}

} // namespace tolvane
