// The subject of a wheel benchmark round as a process group. The thing easy to get wrong: a
// pipeline's processes outlive the shell that started them for a moment, and their virtual
// devices with them; only when every process of the group has been reaped are its devices
// gone, so the next round cannot mistake them for its own.
#include "bench/wheel/SubjectProcess.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace tolvane::bench {

namespace {

// The names in a directory that are numbers: processes in /proc, threads in task/.
std::vector<std::string> numberedEntries(const std::string& path) {
    std::vector<std::string> names;
    DIR* dir = ::opendir(path.c_str());
    while (const dirent* entry = dir ? ::readdir(dir) : nullptr) {
        if (entry->d_name[0] >= '0' && entry->d_name[0] <= '9') {
            names.emplace_back(entry->d_name);
        }
    }
    if (dir) {
        ::closedir(dir);
    }
    return names;
}

// The process group of a process, from /proc/PID/stat (the field after state and parent,
// counted from the end of the command name, which may hold spaces).
pid_t processGroupOf(const std::string& process) {
    std::ifstream stat("/proc/" + process + "/stat");
    std::string line;
    if (!std::getline(stat, line) || line.rfind(')') == std::string::npos) {
        return -1;
    }
    std::istringstream fields(line.substr(line.rfind(')') + 1));
    std::string state;
    pid_t parent = 0;
    pid_t group = -1;
    fields >> state >> parent >> group;
    return group;
}

} // namespace

SubjectProcess::SubjectProcess(const std::string& command, const std::string& device)
    : pid(::fork()) {
    if (pid == 0) {
        ::setpgid(0, 0);
        ::setenv("BENCH_DEVICE", device.c_str(), 1);
        ::execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
        ::_exit(127);
    }
    if (pid > 0) {
        ::setpgid(pid, pid); // as well as the child, whichever runs first
    }
}

SubjectProcess::~SubjectProcess() {
    if (pid <= 0) {
        return;
    }
    ::kill(-pid, SIGKILL); // grabs and virtual devices go with their descriptors
    while (::waitpid(-pid, nullptr, 0) > 0) {
    }
}

std::optional<int> SubjectProcess::ended() {
    int status = 0;
    if (pid > 0 && !leaderStatus && ::waitpid(pid, &status, WNOHANG) == pid) {
        leaderStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    return leaderStatus;
}

std::vector<std::string> SubjectProcess::threadDirectories() const {
    std::vector<std::string> threads;
    for (const std::string& process : numberedEntries("/proc")) {
        if (pid <= 0 || processGroupOf(process) != pid) {
            continue;
        }
        const std::string tasks = "/proc/" + process + "/task/";
        for (const std::string& thread : numberedEntries(tasks)) {
            threads.push_back(tasks + thread);
        }
    }
    return threads;
}

SubjectProcess::ProcessorClock SubjectProcess::processorClock() const {
    ProcessorClock clock;
    for (const std::string& thread : threadDirectories()) {
        const int fd = ::open((thread + "/schedstat").c_str(), O_RDONLY | O_CLOEXEC);
        if (fd >= 0) {
            clock.files.push_back(fd);
        }
    }
    return clock;
}

long SubjectProcess::voluntarySwitches() const {
    long total = 0;
    for (const std::string& thread : threadDirectories()) {
        std::ifstream status(thread + "/status");
        std::string line;
        while (std::getline(status, line)) {
            if (line.rfind("voluntary_ctxt_switches:", 0) == 0) {
                total += std::atol(line.c_str() + line.find(':') + 1);
            }
        }
    }
    return total;
}

SubjectProcess::ProcessorClock::~ProcessorClock() {
    for (int fd : files) {
        ::close(fd);
    }
}

SubjectProcess::ProcessorClock::ProcessorClock(ProcessorClock&& other) noexcept
    : files(std::move(other.files)) {
    other.files.clear();
}

std::uint64_t SubjectProcess::ProcessorClock::nanoseconds() const {
    std::uint64_t total = 0;
    std::array<char, 96> text;
    for (int fd : files) {
        const ssize_t n = ::pread(fd, text.data(), text.size(), 0);
        std::uint64_t onCpu = 0;
        if (n > 0) {
            std::from_chars(text.data(), text.data() + n, onCpu);
        }
        total += onCpu;
    }
    return total;
}

} // namespace tolvane::bench
