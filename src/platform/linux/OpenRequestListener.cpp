// The request socket of the running Tolvane. Whoever connects is checked to be the same user
// (SO_PEERCRED), then read without blocking: a local program that connects and says nothing, or
// connects many times over, costs the main thread nothing but a descriptor for a second.
#include "platform/linux/OpenRequestListener.h"

#include <QDateTime>
#include <QSocketNotifier>

#include <algorithm>
#include <cerrno>

#include <sys/socket.h>
#include <unistd.h>

namespace tolvane::oslinux {

bool peerIsUser(int descriptor) {
    ucred peer{};
    socklen_t size = sizeof peer;
    return ::getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
           peer.uid == ::geteuid();
}

OpenRequestListener::OpenRequestListener(int listening, std::function<void()> onRequest)
    : listening(listening), onRequest(std::move(onRequest)),
      incoming(std::make_unique<QSocketNotifier>(listening, QSocketNotifier::Read)) {
    QObject::connect(incoming.get(), &QSocketNotifier::activated, incoming.get(),
                     [this] { acceptAll(); });
    silence.setSingleShot(true);
    QObject::connect(&silence, &QTimer::timeout, &silence, [this] { closeSilent(); });
    acceptAll();
}

OpenRequestListener::~OpenRequestListener() {
    incoming.reset();
    while (!waiting.empty()) {
        close(waiting.begin()->first);
    }
    ::close(listening);
}

void OpenRequestListener::acceptAll() {
    for (int connection; (connection = ::accept4(listening, nullptr, nullptr,
                                                 SOCK_CLOEXEC | SOCK_NONBLOCK)) >= 0;) {
        if (!peerIsUser(connection)) {
            ::close(connection);
            continue;
        }
        if (int(waiting.size()) >= waitingLimit) {
            const auto oldest = std::ranges::min_element(
                waiting, {}, [](const auto& entry) { return entry.second.since; });
            close(oldest->first);
        }
        auto readable = std::make_unique<QSocketNotifier>(connection, QSocketNotifier::Read);
        QObject::connect(readable.get(), &QSocketNotifier::activated, readable.get(),
                         [this, connection] { readFrom(connection); });
        waiting[connection] = {std::move(readable), QDateTime::currentMSecsSinceEpoch()};
        readFrom(connection);
    }
}

void OpenRequestListener::readFrom(int connection) {
    char request = 0;
    const ssize_t got = ::recv(connection, &request, 1, MSG_DONTWAIT);
    if (got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
        if (!silence.isActive()) {
            silence.start(silenceLimitMs);
        }
        return;
    }
    close(connection);
    if (got == 1 && request == openRequest && onRequest) {
        onRequest();
    }
}

void OpenRequestListener::close(int connection) {
    // The notifier may be the one whose signal runs this: it goes once control is back.
    QSocketNotifier* readable = waiting[connection].readable.release();
    readable->setEnabled(false);
    readable->deleteLater();
    waiting.erase(connection);
    ::close(connection);
}

void OpenRequestListener::closeSilent() {
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    qint64 nextDue = -1;
    for (auto entry = waiting.begin(); entry != waiting.end();) {
        const int connection = entry->first;
        const qint64 due = entry->second.since + silenceLimitMs;
        ++entry;
        if (due <= now) {
            close(connection);
        } else if (nextDue < 0 || due < nextDue) {
            nextDue = due;
        }
    }
    if (nextDue >= 0) {
        silence.start(int(nextDue - now));
    }
}

} // namespace tolvane::oslinux
