#pragma once

#include <string>
#include <string_view>

namespace tolvane {

// The desktop entry that starts Tolvane at login, for the program at `executablePath`.
std::string autostartEntryText(std::string_view executablePath);

// Whether an autostart entry with this content is Tolvane's and switched on: it has a
// [Desktop Entry] group that is Tolvane's (marked so, or running a program named tolvane)
// and is not Hidden=true.
bool autostartEntryEnabled(std::string_view content);

// The Exec value for one program path, quoted as desktop entries require where needed.
std::string quoteExecArgument(std::string_view path);

} // namespace tolvane
