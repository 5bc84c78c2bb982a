#pragma once

#include <string>
#include <string_view>

namespace tolvane {

// The desktop entry that starts Tolvane at login, for the program at `executablePath`.
std::string autostartEntryText(std::string_view executablePath);

// What a file at the autostart entry's place is: Tolvane's when it has a [Desktop Entry] group
// that is Tolvane's (marked so, or running a program named tolvane), and then switched on
// unless it is Hidden=true. A foreign file is the user's and is never replaced or removed.
enum class AutostartEntryState { foreign, hidden, enabled };
AutostartEntryState autostartEntryState(std::string_view content);

// The Exec value for one program path, quoted as desktop entries require where needed.
std::string quoteExecArgument(std::string_view path);

} // namespace tolvane
