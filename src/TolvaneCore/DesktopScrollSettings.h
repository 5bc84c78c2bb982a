#pragma once

#include <optional>
#include <string_view>

namespace tolvane {

// Whose natural-scroll setting for mice applies: the desktop named first in
// XDG_CURRENT_DESKTOP ("ubuntu:GNOME", "KDE", "XFCE"). GNOME's is read for every other desktop,
// as the GNOME-based ones keep theirs in its schema.
enum class ScrollSettingSource { gnome, kde, xfce };
ScrollSettingSource scrollSettingSource(std::string_view currentDesktop);

// KDE Plasma's kcminputrc. On X11 the mouse settings write one value for every mouse,
// [Mouse] XLbInptNaturalScroll; on Wayland KWin keeps one group per device,
// [Libinput][vendor][product][name] with NaturalScroll. Touchpads share those groups and are
// left out. Natural when any mouse has it on; absent when no mouse has the key.
std::optional<bool> kdeMouseNaturalScroll(std::string_view kcminputrc, bool wayland);

// XFCE's xfconf channel "pointers" (pointers.xml): one property per device, named after it,
// holding a Boolean "ReverseScrolling". Touchpads are left out; natural when any mouse has it
// on; absent when no mouse has it.
std::optional<bool> xfceMouseReverseScrolling(std::string_view pointersXml);

} // namespace tolvane
