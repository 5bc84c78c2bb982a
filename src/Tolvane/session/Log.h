#pragma once

#include <string>

namespace tolvane::platform {
class SystemLog;
}

namespace tolvane::Log {

// Appends "{timestamp} {message}" to the log file and hands "Tolvane: {message}" to the
// system log. Never fails towards its caller.
void line(const std::string& message);

// Where the lines go; each set once at start, before the first line. Without a file the lines
// go to the system log only. The file's folder is made on the first line.
void setFile(const std::string& path);
void setSystemLog(platform::SystemLog* systemLog);

} // namespace tolvane::Log
