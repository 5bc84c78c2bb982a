#pragma once

#include <string>
#include <string_view>

namespace tolvane {

// The text with every byte that does not belong to well-formed UTF-8 (a stray continuation,
// a truncated or overlong sequence, a surrogate, a code point past U+10FFFF) replaced by
// U+FFFD. Device names come from hardware and may be anything; D-Bus and the log take text.
std::string withValidUtf8(std::string_view text);

} // namespace tolvane
