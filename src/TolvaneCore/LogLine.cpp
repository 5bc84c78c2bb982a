#include "TolvaneCore/LogLine.h"

#include <chrono>
#include <cstdio>

namespace tolvane {

std::string isoTimestamp(std::int64_t secondsSinceEpoch) {
    using namespace std::chrono;
    const sys_seconds instant{seconds{secondsSinceEpoch}};
    const auto day = floor<days>(instant);
    const year_month_day date{day};
    const hh_mm_ss time{instant - day};
    char text[40];
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02dZ", int(date.year()),
                  unsigned(date.month()), unsigned(date.day()), int(time.hours().count()),
                  int(time.minutes().count()), int(time.seconds().count()));
    return text;
}

std::string logFileLine(std::int64_t secondsSinceEpoch, std::string_view message) {
    std::string line = isoTimestamp(secondsSinceEpoch);
    line += ' ';
    line += message;
    line += '\n';
    return line;
}

std::string systemLogEntry(std::string_view message) {
    std::string entry = "Tolvane: ";
    entry += message;
    return entry;
}

std::string_view boolText(bool value) {
    return value ? "true" : "false";
}

} // namespace tolvane
