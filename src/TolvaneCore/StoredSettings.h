#pragma once

#include "TolvaneCore/ScrollState.h"

#include <optional>
#include <string>
#include <string_view>

namespace tolvane {

// How the two stored settings read back. A value is usable only in the exact form the
// program writes; anything else gives the default, in silence.
struct StoredValue {
    enum class Type { absent, boolean, text, other };
    Type type = Type::absent;
    bool boolean = false;
    std::string text;
};

// The keys of Tolvane.conf. The mode is stored as modeName() spells it.
inline constexpr std::string_view autoKey = "autoEnabled";
inline constexpr std::string_view modeKey = "mode";

bool loadAutoEnabled(const StoredValue& stored);
ScrollMode loadMode(const StoredValue& stored);

} // namespace tolvane
