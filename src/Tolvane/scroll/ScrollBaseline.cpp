#include "Tolvane/scroll/ScrollBaseline.h"

#include "platform/ScrollSetting.h"

namespace tolvane {

bool ScrollBaseline::naturalOn(platform::ScrollSetting& setting) {
    return setting.naturalScroll().value_or(false);
}

} // namespace tolvane
