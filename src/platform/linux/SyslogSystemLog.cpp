// The system log through syslog(3). The text is passed as an argument to "%s", never as the
// format itself: a device name with a percent sign in it must not be read as a conversion.
#include "platform/linux/SyslogSystemLog.h"

#include <syslog.h>

namespace tolvane::oslinux {

SyslogSystemLog::SyslogSystemLog() {
    openlog("tolvane", LOG_PID, LOG_USER);
}

void SyslogSystemLog::write(const std::string& text) {
    syslog(LOG_NOTICE, "%s", text.c_str());
}

} // namespace tolvane::oslinux
