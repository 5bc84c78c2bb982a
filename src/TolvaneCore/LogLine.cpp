#include "TolvaneCore/LogLine.h"

#include "TolvaneCore/Utf8Text.h"

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

std::string escapedControls(std::string_view raw) {
    static constexpr char hex[] = "0123456789abcdef";
    const std::string valid = withValidUtf8(raw);
    const std::string_view message = valid;
    std::string text;
    text.reserve(message.size());
    for (std::size_t at = 0; at < message.size(); ++at) {
        const auto byte = static_cast<unsigned char>(message[at]);
        // U+0080 to U+009F (NEL among them) arrive as 0xC2 and one byte of 0x80 to 0x9F.
        const bool c1 = byte == 0xc2 && at + 1 < message.size() &&
                        (static_cast<unsigned char>(message[at + 1]) & 0xe0) == 0x80;
        // U+2028 and U+2029, which editors and JSON readers take for line ends.
        if (byte == 0xe2 && message.substr(at + 1, 2) == "\x80\xa8") {
            text += "\\u2028";
            at += 2;
            continue;
        }
        if (byte == 0xe2 && message.substr(at + 1, 2) == "\x80\xa9") {
            text += "\\u2029";
            at += 2;
            continue;
        }
        if (byte >= 0x20 && byte != 0x7f && !c1) {
            text += char(byte);
            continue;
        }
        const unsigned code = c1 ? static_cast<unsigned char>(message[++at]) : byte;
        if (code == '\n') {
            text += "\\n";
        } else if (code == '\r') {
            text += "\\r";
        } else if (code == '\t') {
            text += "\\t";
        } else {
            text += c1 ? "\\u00" : "\\x";
            text += hex[code >> 4];
            text += hex[code & 0xf];
        }
    }
    return text;
}

std::string logFileLine(std::int64_t secondsSinceEpoch, std::string_view message) {
    std::string line = isoTimestamp(secondsSinceEpoch);
    line += ' ';
    line += escapedControls(message);
    line += '\n';
    return line;
}

std::string systemLogEntry(std::string_view message) {
    std::string entry = "Tolvane: ";
    entry += escapedControls(message);
    return entry;
}

std::string_view boolText(bool value) {
    return value ? "true" : "false";
}

} // namespace tolvane
