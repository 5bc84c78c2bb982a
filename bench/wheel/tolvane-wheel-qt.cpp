// Tolvane's input layer as the application runs it: on Qt's event loop through LinuxInput,
// every wheel device taken and each frame through the wheel filter with inverting on. For
// the wheel benchmark, inside the test kernel with Qt's libraries copied in.
#include "TolvaneCore/WheelEvents.h"
#include "platform/linux/LinuxInput.h"

#include <QCoreApplication>

#include <cstdio>

namespace {

void invert(void*, tolvane::InputEvent* events, std::size_t count) {
    tolvane::negateWheelAxes(events, count);
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    tolvane::oslinux::LinuxInput input;
    if (!input.router().create(&invert, nullptr)) {
        std::fprintf(stderr, "tolvane-wheel-qt: the wheel devices cannot be taken\n");
        return 1;
    }
    return app.exec();
}
