#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tolvane {

// "2026-11-18T15:44:21Z": UTC, whole seconds, no fraction.
std::string isoTimestamp(std::int64_t secondsSinceEpoch);

// The message as valid UTF-8 (see withValidUtf8) with every control character (C0, DEL, C1)
// and the line and paragraph separators written as an escape: "\n", "\r", "\t", "\x1b",
// "\u0085", "\u2028". A device name cannot forge a second line or make the log binary.
std::string escapedControls(std::string_view message);

// One line of the log file: timestamp, one blank, the escaped message, one line feed.
std::string logFileLine(std::int64_t secondsSinceEpoch, std::string_view message);

// The system log's entry for the same message, escaped alike.
std::string systemLogEntry(std::string_view message);

// "true" or "false", as every log line spells a Bool.
std::string_view boolText(bool value);

} // namespace tolvane
