#pragma once

#include "InputService/router/InputRouter.h"

#include <memory>
#include <string>

namespace tolvane::oslinux {

class QtEventLoop;
class LogindSession;

// The input devices of this machine on Qt's event loop: the router (the wheel tap, the pointer
// devices and the keyboard grab in one) and the login session that turns it off while another
// user's session is active.
class LinuxInput {
public:
    explicit LinuxInput(const std::string& deviceRoot = "/dev");
    ~LinuxInput();

    LinuxInput(const LinuxInput&) = delete;
    LinuxInput& operator=(const LinuxInput&) = delete;

    InputRouter& router() { return *routerOnLoop; }

private:
    std::unique_ptr<QtEventLoop> loop;
    std::unique_ptr<InputRouter> routerOnLoop;
    std::unique_ptr<LogindSession> session;
};

} // namespace tolvane::oslinux
