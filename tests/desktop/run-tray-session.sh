#!/bin/bash
# The real tolvane binary on a desktop of its own: Xvfb, a tray host, a D-Bus session from
# dbus-run-session, and a temporary HOME with its own XDG folders. xdotool drives it as a user
# would, and the checks look at what it draws, what it stores and what it logs.
#
#   run-tray-session.sh xembed|sni TOLVANE SNI_HOST SCREENSHOT_DIR
#
# xembed uses trayer, an XEmbed system tray; sni uses SNI_HOST, a StatusNotifierItem host on
# the session bus. Screenshots of a failed run are kept in SCREENSHOT_DIR; with
# TOLVANE_KEEP_SCREENSHOTS=1 those of a passing run are kept too. Missing tools are installed
# from Debian's packages when the script may (root or password-less sudo).
#
# No access to /dev/uinput here, so Tolvane starts with its "Grant Input Access" alert; the
# script answers it with Escape, which is "Later".
set -euo pipefail

tray=$1
tolvane=$2
sni_host=$3
shots=$4
here=$(cd "$(dirname "$0")" && pwd)
source "$here/tray-session-lib.sh"

if [[ "${TOLVANE_INSIDE_SESSION:-}" != 1 ]]; then
    install_missing_tools
    work=$(mktemp -d /tmp/tolvane-desktop.XXXXXX)
    rm -rf "$shots"
    mkdir -p "$shots" "$work/home" "$work/runtime"
    chmod 700 "$work/runtime"
    start_x_server "$work"
    status=0
    TOLVANE_INSIDE_SESSION=1 TOLVANE_WORK="$work" DISPLAY="$DISPLAY" \
        dbus-run-session -- "$0" "$@" || status=$?
    stop_x_server
    if [[ $status -ne 0 || "${TOLVANE_KEEP_SCREENSHOTS:-}" == 1 ]]; then
        cp "$work"/*.png "$work"/*.log "$shots"/ 2>/dev/null || true
        echo "screenshots and logs: $shots"
    fi
    rm -rf "$work"
    exit $status
fi

# Inside the D-Bus session from here on.
work=$TOLVANE_WORK
use_session_folders "$work"
trap 'on_exit' EXIT

start_tray_host "$tray"
start_tolvane
dismiss_alert_with_later
if [[ $tray == xembed ]]; then
    find_tray_icon
    open_menu_by_click 1
else
    expect_no_embedded_icon
    open_menu_through_host activate
fi
check_menu_rows "menu-open"
close_menu

step "choose Auto-switch when mouse connects"
open_menu
lines_before=$(wc -l <"$log")
choose_item_from_bottom 3
wait_for "the setting autoEnabled=false" grep -qx 'autoEnabled=false' "$settings"
wait_for "the state cycle's log line" \
    bash -c "tail -n +$((lines_before + 1)) '$log' | grep -q 'applyInversion mode=trackpad'"
expect_menu_closed

step "press Ctrl+T in the open menu"
[[ $tray == xembed ]] && icon_before=$(snap_icon icon-natural)
if [[ $tray == xembed ]]; then open_menu_by_click 3; else open_menu_through_host menu; fi
xdotool key --clearmodifiers ctrl+t
wait_for "the setting mode=mouse" grep -qx 'mode=mouse' "$settings"
expect_menu_closed
grep -q 'applyInversion mode=mouse' "$log" || fail "no log line for the mouse mode"
if [[ $tray == xembed ]]; then
    icon_after=$(snap_icon icon-mouse)
    changed=$(compare -metric AE "$icon_before" "$icon_after" null: 2>&1 || true)
    [[ ${changed%%.*} -gt 20 ]] || fail "the tray icon did not change ($changed pixels)"
    [[ $(count_colour "$icon_before" 'rgb(59,91,255)' 12) -eq 0 ]] || fail "natural icon is blue"
    [[ $(count_colour "$icon_after" 'rgb(59,91,255)' 12) -gt 20 ]] || fail "mouse icon not blue"
fi

quit_from_menu
echo "PASS ($tray tray)"
