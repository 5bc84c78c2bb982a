#include "Tolvane/session/LoginItem.h"

#include "platform/LoginRegistration.h"
#include "platform/SystemLog.h"

namespace tolvane {

void LoginItem::setEnabled(bool enabled, platform::LoginRegistration& registration,
                           platform::SystemLog& systemLog) {
    std::string failure;
    if (registration.setEnabled(enabled, failure)) {
        return;
    }
    systemLog.write("Tolvane: login item change failed: " + failure);
}

} // namespace tolvane
