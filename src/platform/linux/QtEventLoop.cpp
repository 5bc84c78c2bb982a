// Descriptors of the input layer are watched with QSocketNotifier. The thing easy to get
// wrong: a device that vanishes is unwatched from inside its own notifier's signal, so the
// notifier is disabled at once and deleted later, never deleted in place.
#include "platform/linux/QtEventLoop.h"

#include <QSocketNotifier>

namespace tolvane::oslinux {

QtEventLoop::~QtEventLoop() {
    for (auto& [fd, notifier] : notifiers) {
        delete notifier;
    }
}

void QtEventLoop::watchReadable(int fd, std::function<void()> onReadable) {
    unwatch(fd);
    auto* notifier = new QSocketNotifier(fd, QSocketNotifier::Read);
    QObject::connect(notifier, &QSocketNotifier::activated, notifier,
                     [callback = std::move(onReadable)] { callback(); });
    notifiers[fd] = notifier;
}

void QtEventLoop::unwatch(int fd) {
    const auto found = notifiers.find(fd);
    if (found == notifiers.end()) {
        return;
    }
    found->second->setEnabled(false);
    found->second->deleteLater();
    notifiers.erase(found);
}

} // namespace tolvane::oslinux
