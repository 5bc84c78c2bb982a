// Qt owns the main loop, so the input layer's descriptors go on it through QtEventLoop. The thing
// easy to get wrong: the router must be destroyed before its loop, because letting go of devices
// unwatches their descriptors.
#include "platform/linux/LinuxInput.h"

#include "platform/linux/LogindSession.h"
#include "platform/linux/QtEventLoop.h"
#include "platform/linux/UserFolders.h"

namespace tolvane::oslinux {

LinuxInput::LinuxInput(const std::string& deviceRoot)
    : loop(std::make_unique<QtEventLoop>()),
      routerOnLoop(std::make_unique<InputRouter>(*loop, deviceRoot)),
      session(std::make_unique<LogindSession>(
          [this](bool active) { routerOnLoop->setSessionActive(active); })) {}

LinuxInput::~LinuxInput() {
    session.reset();
    routerOnLoop.reset();
    loop.reset();
}

} // namespace tolvane::oslinux
