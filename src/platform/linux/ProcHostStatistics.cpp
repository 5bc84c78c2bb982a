// The host's figures come from files the kernel writes anew on each read: /proc/stat for
// processor ticks and /proc/meminfo for memory. Both are read into a buffer on the stack with
// plain open/read, so a sample costs a few system calls and no allocation. The easy thing to
// get wrong is a short read: a file longer than the buffer is cut at its last whole line, so
// a number is never taken from half a line. Anything that cannot be read or parsed gives an
// absent figure, never a guess.
#include "platform/linux/ProcHostStatistics.h"

#include "TolvaneCore/ProcFiles.h"

#include <array>
#include <cerrno>
#include <string_view>

#include <fcntl.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace tolvane::oslinux {

namespace {

// The summed "cpu" line and MemTotal/MemAvailable all stand within the first lines.
constexpr std::size_t bufferSize = 4096;
using Buffer = std::array<char, bufferSize>;

// The file's text up to the buffer's size, cut after the last line feed when the file goes
// on; absent when the file cannot be opened or read.
std::optional<std::string_view> readStart(const std::string& path, Buffer& buffer) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return std::nullopt;
    }
    std::size_t length = 0;
    bool failed = false;
    while (length < buffer.size()) {
        const ssize_t got = ::read(fd, buffer.data() + length, buffer.size() - length);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            failed = true;
        }
        if (got <= 0) {
            break;
        }
        length += std::size_t(got);
    }
    ::close(fd);
    if (failed) {
        return std::nullopt;
    }
    std::string_view text(buffer.data(), length);
    if (length == buffer.size()) {
        const std::size_t lastLineFeed = text.rfind('\n');
        text = lastLineFeed == std::string_view::npos ? std::string_view()
                                                      : text.substr(0, lastLineFeed + 1);
    }
    return text;
}

} // namespace

ProcHostStatistics::ProcHostStatistics(const std::string& procRoot, std::string volumePath)
    : statPath(procRoot + "/stat"), meminfoPath(procRoot + "/meminfo"),
      volumePath(std::move(volumePath)) {}

std::optional<TickPair> ProcHostStatistics::cpuTicks() {
    Buffer buffer;
    const auto text = readStart(statPath, buffer);
    return text ? cpuTicksFromProcStat(*text) : std::nullopt;
}

std::optional<std::uint64_t> ProcHostStatistics::memoryUsedBytes() {
    Buffer buffer;
    const auto text = readStart(meminfoPath, buffer);
    const auto info = text ? memoryInfoFromProcMeminfo(*text) : std::nullopt;
    if (!info) {
        return std::nullopt;
    }
    installedMemory = info->totalBytes;
    return tolvane::memoryUsedBytes(*info);
}

// MemTotal changes only when memory is hot-plugged, so the value of the last read of
// /proc/meminfo serves; the file is read here only until that first succeeds.
std::uint64_t ProcHostStatistics::physicalMemoryBytes() {
    if (!installedMemory) {
        Buffer buffer;
        const auto text = readStart(meminfoPath, buffer);
        if (const auto info = text ? memoryInfoFromProcMeminfo(*text) : std::nullopt) {
            installedMemory = info->totalBytes;
        }
    }
    return installedMemory.value_or(0);
}

// glibc reads /sys/devices/system/cpu/online and falls back on its own; a result below one
// can only come from a broken system, and one processor is the least a running program has.
int ProcHostStatistics::activeProcessorCount() {
    const long online = ::sysconf(_SC_NPROCESSORS_ONLN);
    return online < 1 ? 1 : int(online);
}

std::optional<platform::RootVolume> ProcHostStatistics::rootVolume() {
    struct statvfs volume {};
    if (::statvfs(volumePath.c_str(), &volume) != 0) {
        return std::nullopt;
    }
    const auto bytes = volumeBytes(volume.f_blocks, volume.f_bavail, volume.f_frsize);
    if (!bytes) {
        return std::nullopt;
    }
    return platform::RootVolume{bytes->capacity, bytes->available};
}

} // namespace tolvane::oslinux
