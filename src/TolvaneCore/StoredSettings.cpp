#include "TolvaneCore/StoredSettings.h"

namespace tolvane {

bool loadAutoEnabled(const StoredValue& stored) {
    switch (stored.type) {
    case StoredValue::Type::boolean:
        return stored.boolean;
    case StoredValue::Type::text:
        if (stored.text == "true") {
            return true;
        }
        if (stored.text == "false") {
            return false;
        }
        return true;
    case StoredValue::Type::absent:
    case StoredValue::Type::other:
        break;
    }
    return true;
}

ScrollMode loadMode(const StoredValue& stored) {
    if (stored.type == StoredValue::Type::text && stored.text == modeName(ScrollMode::mouse)) {
        return ScrollMode::mouse;
    }
    return ScrollMode::trackpad;
}

} // namespace tolvane
