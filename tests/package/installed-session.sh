#!/bin/bash
# The installed Tolvane on a desktop of its own (Xvfb and trayer, tests/desktops/session-lib.sh),
# run inside installed-view.sh. Stand-ins for pkexec, xdg-open, udevadm and modprobe come first
# in PATH and write down how they were called; the pkexec stand-in then runs what it was given,
# as an administrator who agrees would.
#
#   installed-session.sh first|again WORK PACKAGE_FILES
#
# first:  starts the program named by the application list's entry, answers the input access
#         alert with Open Help, switches Launch at login on and quits.
# again:  starts the program named by the autostart entry that the first run wrote, answers the
#         alert with Later, and quits.
set -euo pipefail
phase=$1 work=$2 packaged=$3 session=x11 width=1280 height=800
here=$(cd "$(dirname "$0")" && pwd)
source "$here/package-lib.sh"
source "$here/../desktops/session-lib.sh"
[[ ${TOLVANE_INSIDE_SESSION:-} == 1 ]] || { run_in_session "$0" "$@"; exit; }
enter_session

mkdir -p "$work/stubs" "$work/calls"
for name in pkexec xdg-open udevadm modprobe; do
    printf '#!/bin/sh\necho "$*" >>"%s/calls/%s"\n' "$work" "$name" >"$work/stubs/$name"
    chmod +x "$work/stubs/$name"
done
echo 'exec "$@"' >>"$work/stubs/pkexec"
export PATH=$work/stubs:$PATH
autostart=$XDG_CONFIG_HOME/autostart/tolvane.desktop
is_packaged() { grep -qx -- "$1" "$packaged"; }

entry=/usr/share/applications/tolvane.desktop
[[ $phase == first ]] || entry=$autostart
tolvane=$(exec_program "$(desktop_value "$entry" Exec)")
is_packaged "$tolvane" || fail "the entry starts $tolvane, which the package does not hold"
start_trayer
[[ $phase == again ]] || alert_key=Return # Open Help
start_tolvane

if [[ $phase == first ]]; then
    step "Tolvane asked pkexec to run the packaged helper, and the helper wrote the rule"
    wait_for "pkexec's call" test -s "$work/calls/pkexec"
    helper=$(head -n1 "$work/calls/pkexec")
    is_packaged "$helper" || fail "pkexec was asked to run '$helper', which is not packaged"
    wait_for "the udev rule" test -s /etc/udev/rules.d/70-tolvane-input-access.rules
    grep -qx 'uinput' /etc/modules-load.d/tolvane-uinput.conf || fail "uinput is not loaded at boot"
    grep -q -- '--reload-rules' "$work/calls/udevadm" || fail "the helper did not reload udev"

    step "Open Help opens the packaged help page"
    wait_for "xdg-open's call" test -s "$work/calls/xdg-open"
    url=$(head -n1 "$work/calls/xdg-open")
    [[ $url == file:///* ]] || fail "Open Help opened '$url', not a local file"
    is_packaged "${url#file://}" || fail "Open Help opened $url, which the package does not hold"

    step "Launch at login writes an autostart entry for the packaged program"
    open_again
    choose_rich_item 2
    wait_for "the autostart entry" test -s "$autostart"
    desktop-file-validate "$autostart" || fail "the autostart entry does not validate"
    for key in Exec TryExec; do
        [[ $(desktop_value "$autostart" $key) == "$tolvane" ]] || fail "autostart $key is not $tolvane"
    done
fi
quit_from_menu
echo "PASS ($phase session)"
