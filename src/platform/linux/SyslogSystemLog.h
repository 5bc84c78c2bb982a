#pragma once

#include "platform/SystemLog.h"

namespace tolvane::oslinux {

// syslog(3), one entry per call at notice level, under the program's name.
class SyslogSystemLog final : public platform::SystemLog {
public:
    SyslogSystemLog();
    void write(const std::string& text) override;
};

} // namespace tolvane::oslinux
