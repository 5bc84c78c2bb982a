#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tolvane::bench {

// A command under /bin/sh -c, as the leader of a process group of its own, so that every
// process of a pipeline is ended and reaped with it. The caller must be a child subreaper
// (prctl PR_SET_CHILD_SUBREAPER) for the pipeline's processes to come back to it.
class SubjectProcess {
public:
    // `device` goes to the command as $BENCH_DEVICE.
    SubjectProcess(const std::string& command, const std::string& device);
    ~SubjectProcess(); // ends the whole group and waits for every process of it

    SubjectProcess(const SubjectProcess&) = delete;
    SubjectProcess& operator=(const SubjectProcess&) = delete;

    bool started() const { return pid > 0; }

    // The leader's exit status once it has ended.
    std::optional<int> ended();

    // The processor time of the group's threads, read from their schedstat files. The files
    // are opened once, by open(), and each read costs one pread per thread.
    class ProcessorClock {
    public:
        ProcessorClock() = default;
        ~ProcessorClock();
        ProcessorClock(ProcessorClock&& other) noexcept;
        ProcessorClock& operator=(ProcessorClock&&) = delete;

        std::uint64_t nanoseconds() const;
        std::size_t threads() const { return files.size(); }

    private:
        friend class SubjectProcess;
        std::vector<int> files;
    };

    // Every thread of the group as it is now; threads started later are not counted.
    ProcessorClock processorClock() const;

    // The voluntary context switches of every thread of the group so far: its wake-ups.
    long voluntarySwitches() const;

private:
    std::vector<std::string> threadDirectories() const;

    pid_t pid;
    std::optional<int> leaderStatus;
};

} // namespace tolvane::bench
