#pragma once

#include "platform/InputAccess.h"
#include "platform/KeyboardGrab.h"
#include "platform/ScrollTap.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QTimer>

#include <optional>
#include <string>

namespace tolvane::oslinux {

// The program's side of the input service, org.tolvane.Input1 on the system bus (another bus
// where one is given, as in tests): the trust check, the wheel tap and the keyboard hold are
// calls to the service, which alone opens input devices.
class InputServiceClient final : public platform::InputAccess,
                                 public platform::ScrollTap,
                                 public platform::KeyboardGrab {
public:
    explicit InputServiceClient(const QDBusConnection& bus = QDBusConnection::systemBus());

    // True when the service answers and lets this session use it.
    bool isTrusted() override;
    void requestAccess() override;
    bool openHelp() override;
    std::string helpPage() override;

    bool create(bool inverting) override;
    void setInverting(bool inverting) override;

    // While the keyboards are held, a keep-alive goes to the service every half second.
    bool grab() override;
    void release() override;

private:
    // Waits for the answer a moment at most: false on an error or when none came in time.
    bool callAndWait(const QDBusMessage& call);
    // Returns at once; the answer, if any, is not looked at.
    void send(const QString& method, const QVariantList& arguments = {});

    QDBusConnection bus;
    QTimer keepAlive;
    QDBusServiceWatcher serviceStarts;
    std::optional<bool> tapInverting; // the setting of the tap, once the service accepted it
};

} // namespace tolvane::oslinux
