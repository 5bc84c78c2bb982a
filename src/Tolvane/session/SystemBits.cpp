#include "Tolvane/session/SystemBits.h"

#include "platform/LoginRegistration.h"
#include "platform/ScrollSetting.h"
#include "platform/SystemLog.h"

namespace tolvane {

bool ScrollBaseline::naturalOn(platform::ScrollSetting& setting) {
    return setting.naturalScroll().value_or(false);
}

void LoginItem::setEnabled(bool enabled, platform::LoginRegistration& registration,
                           platform::SystemLog& systemLog) {
    std::string failure;
    if (registration.setEnabled(enabled, failure)) {
        return;
    }
    systemLog.write("Tolvane: login item change failed: " + failure);
}

} // namespace tolvane
