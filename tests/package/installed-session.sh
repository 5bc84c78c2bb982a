#!/bin/bash
# The installed Tolvane on a desktop of its own (Xvfb, trayer, a D-Bus session, a temporary
# HOME), run inside installed-view.sh. Stand-ins for pkexec, xdg-open, udevadm and modprobe
# come first in PATH and write down how they were called; the pkexec stand-in then runs what
# it was given, as an administrator who agrees would.
#
#   installed-session.sh first|again WORK PACKAGE_FILES
#
# first:  starts the program named by the application list's entry, answers the input access
#         alert with Open Help, switches Launch at login on and quits.
# again:  starts the program named by the autostart entry that the first run wrote, answers the
#         alert with Later, and quits.
set -euo pipefail

phase=$1
export TOLVANE_WORK=$2
packaged=$3
here=$(cd "$(dirname "$0")" && pwd)
source "$here/package-lib.sh"
source "$here/../desktop/tray-session-lib.sh"

work=$TOLVANE_WORK
tray=xembed
if [[ ${TOLVANE_INSIDE_SESSION:-} != 1 ]]; then
    mkdir -p "$work/home" "$work/runtime" "$work/calls" "$work/x-$phase"
    chmod 700 "$work/runtime"
    start_x_server "$work/x-$phase"
    status=0
    TOLVANE_INSIDE_SESSION=1 DISPLAY="$DISPLAY" dbus-run-session -- "$0" "$@" || status=$?
    stop_x_server
    exit $status
fi

stubs=$work/stubs
mkdir -p "$stubs"
for name in pkexec xdg-open udevadm modprobe; do
    printf '#!/bin/sh\necho "$*" >>"%s/calls/%s"\n' "$work" "$name" >"$stubs/$name"
    chmod +x "$stubs/$name"
done
echo 'exec "$@"' >>"$stubs/pkexec"
export PATH=$stubs:$PATH
use_session_folders "$work"
autostart=$XDG_CONFIG_HOME/autostart/tolvane.desktop
trap 'on_exit' EXIT

is_packaged() { grep -qx -- "$1" "$packaged"; }

if [[ $phase == first ]]; then
    tolvane=$(exec_program "$(desktop_value /usr/share/applications/tolvane.desktop Exec)")
else
    tolvane=$(exec_program "$(desktop_value "$autostart" Exec)")
fi
is_packaged "$tolvane" || fail "the entry starts $tolvane, which the package does not hold"

start_tray_host xembed
start_tolvane
wait_for "the alert" alert_window
alert=$(alert_window)

if [[ $phase == first ]]; then
    step "Tolvane asked pkexec to run the packaged helper, and the helper wrote the rule"
    wait_for "pkexec's call" test -s "$work/calls/pkexec"
    helper=$(head -n1 "$work/calls/pkexec")
    is_packaged "$helper" || fail "pkexec was asked to run '$helper', which is not packaged"
    wait_for "the udev rule" test -s /etc/udev/rules.d/70-tolvane-input-access.rules
    grep -qx 'uinput' /etc/modules-load.d/tolvane-uinput.conf || fail "uinput is not loaded at boot"
    grep -q -- '--reload-rules' "$work/calls/udevadm" || fail "the helper did not reload udev"

    step "Open Help opens the packaged help page"
    xdotool windowfocus --sync "$alert" key --clearmodifiers Return
    wait_for "xdg-open's call" test -s "$work/calls/xdg-open"
    url=$(head -n1 "$work/calls/xdg-open")
    [[ $url == file:///* ]] || fail "Open Help opened '$url', not a local file"
    is_packaged "${url#file://}" || fail "Open Help opened $url, which the package does not hold"
    echo "help: $url"

    step "Launch at login writes an autostart entry for the packaged program"
    find_tray_icon
    open_menu_by_click 1
    choose_item_from_bottom 2
    wait_for "the autostart entry" test -s "$autostart"
    desktop-file-validate "$autostart" || fail "the autostart entry does not validate"
    [[ $(desktop_value "$autostart" Exec) == "$tolvane" ]] || fail "autostart Exec is not $tolvane"
    [[ $(desktop_value "$autostart" TryExec) == "$tolvane" ]] ||
        fail "autostart TryExec is not $tolvane"
else
    step "the program the autostart entry names starts after the upgrade"
    xdotool windowfocus --sync "$alert" key --clearmodifiers Escape
    find_tray_icon
fi

quit_from_menu
echo "PASS ($phase session)"
