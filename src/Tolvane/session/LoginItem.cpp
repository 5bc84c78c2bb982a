#include "Tolvane/session/LoginItem.h"

#include "Tolvane/session/Log.h"
#include "platform/LoginRegistration.h"

namespace tolvane {

void LoginItem::setEnabled(bool enabled, platform::LoginRegistration& registration) {
    std::string failure;
    if (registration.setEnabled(enabled, failure)) {
        return;
    }
    Log::line("login item change failed: " + failure);
}

} // namespace tolvane
