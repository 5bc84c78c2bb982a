#pragma once

#include "platform/HostStatistics.h"
#include "platform/InputAccess.h"
#include "platform/KeyboardGrab.h"
#include "platform/LoginRegistration.h"
#include "platform/PointerDevices.h"
#include "platform/ScrollSetting.h"
#include "platform/ScrollTap.h"
#include "platform/SystemLog.h"

namespace tolvane::platform {

// Everything the application asks of the operating system, handed to it in one piece.
struct Platform {
    InputAccess& access;
    ScrollTap& scrollTap;
    PointerDevices& pointers;
    KeyboardGrab& keyboard;
    HostStatistics& host;
    LoginRegistration& login;
    ScrollSetting& scrollSetting;
    SystemLog& systemLog;
};

} // namespace tolvane::platform
