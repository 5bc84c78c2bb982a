// The wheel benchmark's program inside the test kernel:
//   wheel-latency FRAMES ROUNDS IDLE_SECONDS SUBJECT...
// Each subject is one argument, "LABEL DEVICES same|negated COMMAND...", and the first subject
// is the floor the others are compared with. One line per subject on stdout:
//   wheel: LABEL devices=D sent=N arrived=A wrong=W grabbed=G start_ms=S cpu_us=C median_us=M
//          p99_us=P median_x=M/floor p99_x=P/floor
//          idle_wakeups=W
// where C is the median of the subject's processor time per frame, all its processes and
// threads, and W its wake-ups over IDLE_SECONDS after the last round (-1 when not measured).
// or "wheel: LABEL devices=D error=..." when its rounds could not all run.
#include "bench/wheel/WheelLatency.h"

#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace {

bool parseSubject(const char* text, tolvane::bench::WheelSubject& subject) {
    std::istringstream in(text);
    std::string expect;
    in >> subject.label >> subject.devices >> expect;
    std::getline(in >> std::ws, subject.command);
    subject.negates = expect == "negated";
    return in.eof() && !subject.command.empty() && subject.devices > 0 &&
           (expect == "same" || expect == "negated");
}

} // namespace

int main(int argc, char** argv) {
    using namespace tolvane::bench;
    std::vector<WheelSubject> subjects(argc > 4 ? std::size_t(argc - 4) : 0);
    bool usable =
        argc > 4 && std::atoi(argv[1]) > 0 && std::atoi(argv[2]) > 0 && std::atoi(argv[3]) >= 0;
    for (std::size_t i = 0; usable && i < subjects.size(); ++i) {
        usable = parseSubject(argv[i + 4], subjects[i]);
    }
    if (!usable) {
        std::fprintf(stderr, "usage: wheel-latency FRAMES ROUNDS IDLE_SECONDS 'LABEL DEVICES "
                             "same|negated COMMAND'...\n");
        return 2;
    }
    const auto figures =
        measureWheelPath(subjects, std::atoi(argv[1]), std::atoi(argv[2]), std::atoi(argv[3]));
    const double floorMedian = percentile(figures[0].micros, 0.5);
    const double floorP99 = percentile(figures[0].micros, 0.99);
    bool complete = true;
    for (std::size_t i = 0; i < figures.size(); ++i) {
        const WheelFigures& f = figures[i];
        if (!f.error.empty()) {
            std::printf("wheel: %s devices=%d error=%s\n", subjects[i].label.c_str(),
                        subjects[i].devices, f.error.c_str());
            complete = false;
            continue;
        }
        const double median = percentile(f.micros, 0.5);
        const double p99 = percentile(f.micros, 0.99);
        std::printf("wheel: %s devices=%d sent=%d arrived=%d wrong=%d grabbed=%d start_ms=%.0f "
                    "cpu_us=%.1f median_us=%.1f p99_us=%.1f median_x=%.2f p99_x=%.2f "
                    "idle_wakeups=%ld\n",
                    subjects[i].label.c_str(), subjects[i].devices, f.sent, f.arrived, f.wrong,
                    f.grabbed, f.slowestStartMs, percentile(f.cpuMicros, 0.5), median, p99,
                    floorMedian > 0 ? median / floorMedian : 0, floorP99 > 0 ? p99 / floorP99 : 0,
                    f.idleWakeUps);
        complete = complete && f.arrived == f.sent;
    }
    return complete ? 0 : 1;
}
