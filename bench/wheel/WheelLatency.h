#pragma once

#include <string>
#include <vector>

namespace tolvane::bench {

// A program that passes the frames of a virtual mouse on to a device of the same name. It is
// started with /bin/sh -c and finds the first mouse's node in $BENCH_DEVICE.
struct WheelSubject {
    std::string label;
    int devices = 1;     // virtual mice plugged while it runs; the frames go to the first
    bool negates = true; // whether the wheel values should come out negated
    std::string command;
};

struct WheelFigures {
    int sent = 0;
    int arrived = 0;            // came out whole with the values expected, and timed
    int wrong = 0;              // came out with other events or values
    int grabbed = -1;           // the fewest mice the subject held in any round
    double slowestStartMs = 0;  // from the subject's start to a device of its for every mouse
    long idleWakeUps = -1;      // voluntary context switches while idle, when measured
    std::string error;          // why a round ended early
    std::vector<double> micros; // from the write of each arrived frame to its read
    // The subject's processor time, all its threads, from the end of one frame to the end of
    // the next, for each arrived frame.
    std::vector<double> cpuMicros;
};

// Sends `frames` wheel frames through each subject, one at a time, each waited for on the
// subject's device before the next is written. The frames are split over `rounds` rounds and
// each round takes the subjects in turn, so that a slow spell of the machine falls on all of
// them alike. With `idleSeconds`, the last round then leaves each subject idle twice that long,
// its mice still held, and counts its wake-ups over the second half. The figures come back in the
// order of the subjects.
std::vector<WheelFigures> measureWheelPath(const std::vector<WheelSubject>& subjects, int frames,
                                           int rounds, int idleSeconds = 0);

// The value below which `fraction` of the values lie (nearest rank); 0 when there are none.
double percentile(std::vector<double> values, double fraction);

} // namespace tolvane::bench
