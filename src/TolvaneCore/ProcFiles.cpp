#include "TolvaneCore/ProcFiles.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

namespace tolvane {

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

std::string_view firstLine(std::string_view text) {
    return text.substr(0, text.find('\n'));
}

std::string_view skipBlanks(std::string_view text) {
    std::size_t at = 0;
    while (at < text.size() && isBlank(text[at])) {
        ++at;
    }
    return text.substr(at);
}

// Takes the next blank-separated word off the front of `text`.
std::string_view takeWord(std::string_view& text) {
    text = skipBlanks(text);
    std::size_t end = 0;
    while (end < text.size() && !isBlank(text[end])) {
        ++end;
    }
    const std::string_view word = text.substr(0, end);
    text = text.substr(end);
    return word;
}

// The whole word as an unsigned decimal: no sign, no fraction, no trailing characters, no
// overflow.
std::optional<std::uint64_t> decimal(std::string_view word) {
    std::uint64_t value = 0;
    const char* end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, value);
    if (word.empty() || error != std::errc() || stop != end) {
        return std::nullopt;
    }
    return value;
}

std::optional<std::uint64_t> sum(std::uint64_t a, std::uint64_t b) {
    std::uint64_t result = 0;
    if (__builtin_add_overflow(a, b, &result)) {
        return std::nullopt;
    }
    return result;
}

std::optional<std::uint64_t> product(std::uint64_t a, std::uint64_t b) {
    std::uint64_t result = 0;
    if (__builtin_mul_overflow(a, b, &result)) {
        return std::nullopt;
    }
    return result;
}

// The value of one "Key:   1234 kB" line in bytes; absent for any other unit or a bad number.
std::optional<std::uint64_t> meminfoBytes(std::string_view rest) {
    const auto amount = decimal(takeWord(rest));
    const std::string_view unit = takeWord(rest);
    if (!amount || !skipBlanks(rest).empty()) {
        return std::nullopt;
    }
    if (unit.empty()) {
        return amount;
    }
    if (unit == "kB") {
        return product(*amount, 1024);
    }
    return std::nullopt;
}

} // namespace

std::optional<TickPair> cpuTicksFromProcStat(std::string_view text) {
    std::string_view line = firstLine(text);
    if (takeWord(line) != "cpu") {
        return std::nullopt;
    }
    enum Column { user, nice, system, idle, iowait, irq, softirq, steal, read };
    std::array<std::uint64_t, read> ticks{};
    int found = 0;
    for (; found < read; ++found) {
        const std::string_view word = takeWord(line);
        if (word.empty()) {
            break;
        }
        const auto value = decimal(word);
        if (!value) {
            return std::nullopt;
        }
        ticks[std::size_t(found)] = *value;
    }
    if (found <= idle) {
        return std::nullopt;
    }

    std::optional<std::uint64_t> busy = ticks[user];
    for (Column column : {nice, system, irq, softirq, steal}) {
        busy = busy ? sum(*busy, ticks[column]) : std::nullopt;
    }
    std::optional<std::uint64_t> total = busy ? sum(*busy, ticks[idle]) : std::nullopt;
    total = total ? sum(*total, ticks[iowait]) : std::nullopt;
    if (!total) {
        return std::nullopt;
    }
    return TickPair{*busy, *total};
}

std::optional<MemoryInfo> memoryInfoFromProcMeminfo(std::string_view text) {
    std::optional<std::uint64_t> total;
    std::optional<std::uint64_t> available;
    bool totalSeen = false;
    bool availableSeen = false;
    while (!text.empty() && !(totalSeen && availableSeen)) {
        const std::string_view line = firstLine(text);
        text.remove_prefix(std::min(text.size(), line.size() + 1));
        const std::size_t colon = line.find(':');
        if (colon == std::string_view::npos) {
            continue;
        }
        const std::string_view key = line.substr(0, colon);
        if (key == "MemTotal" && !totalSeen) {
            totalSeen = true;
            total = meminfoBytes(line.substr(colon + 1));
        } else if (key == "MemAvailable" && !availableSeen) {
            availableSeen = true;
            available = meminfoBytes(line.substr(colon + 1));
        }
    }
    if (!total || *total == 0) {
        return std::nullopt;
    }
    return MemoryInfo{*total, available};
}

std::optional<std::uint64_t> memoryUsedBytes(const MemoryInfo& info) {
    if (!info.availableBytes || *info.availableBytes > info.totalBytes) {
        return std::nullopt;
    }
    return info.totalBytes - *info.availableBytes;
}

std::optional<VolumeBytes> volumeBytes(std::uint64_t blocks, std::uint64_t availableBlocks,
                                       std::uint64_t fragmentSize) {
    constexpr auto largest = std::uint64_t(std::numeric_limits<std::int64_t>::max());
    const auto capacity = product(blocks, fragmentSize);
    const auto available = product(availableBlocks, fragmentSize);
    if (!capacity || !available || *capacity > largest || *available > largest) {
        return std::nullopt;
    }
    return VolumeBytes{std::int64_t(*capacity), std::int64_t(*available)};
}

} // namespace tolvane
