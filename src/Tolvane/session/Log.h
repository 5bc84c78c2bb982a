#pragma once

#include <string>

namespace tolvane::platform {
class SystemLog;
}

namespace tolvane::Log {

// Appends "{timestamp} {message}" to the log file and hands "Tolvane: {message}" to the
// system log. Never fails towards its caller.
void line(const std::string& message);

// Where the system log entries go; set once at start, before the first line.
void setSystemLog(platform::SystemLog* systemLog);

// $XDG_STATE_HOME/Tolvane/Tolvane.log, with ~/.local/state when the variable is unset.
std::string filePath();

} // namespace tolvane::Log
