// Times the statistics the menu shows: SystemStats::sample() on the real /proc and root file
// system, which takes all three readings (processor, memory, storage), in a loop of 10,000,
// and each reading of ProcHostStatistics on its own. Prints one line per figure:
//   stats: NAME per_call_us=T calls=N
// and fails when a reading the menu needs is absent.
#include "Tolvane/gauges/SystemStats.h"
#include "platform/linux/ProcHostStatistics.h"

#include <chrono>
#include <cstdio>
#include <functional>

namespace {

constexpr int calls = 10000;

double microsPerCall(const std::function<void()>& call) {
    for (int i = 0; i < 100; ++i) {
        call(); // the first reads open files and fault pages in
    }
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < calls; ++i) {
        call();
    }
    const std::chrono::duration<double, std::micro> spent =
        std::chrono::steady_clock::now() - start;
    return spent.count() / calls;
}

void print(const char* name, double micros) {
    std::printf("stats: %s per_call_us=%.2f calls=%d\n", name, micros, calls);
}

} // namespace

int main() {
    tolvane::oslinux::ProcHostStatistics host;
    tolvane::SystemStats stats(host);
    print("sample", microsPerCall([&] { stats.sample(); }));
    const tolvane::Reading none;
    if (stats.cpu() == none || stats.memory() == none || stats.storage() == none) {
        std::fprintf(stderr, "stats-sample: a reading is missing\n");
        return 1;
    }
    print("cpu_ticks", microsPerCall([&] { host.cpuTicks(); }));
    print("memory_used", microsPerCall([&] { host.memoryUsedBytes(); }));
    print("root_volume", microsPerCall([&] { host.rootVolume(); }));
    return 0;
}
