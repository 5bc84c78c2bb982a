#!/bin/bash
# Measures a tolvane binary on the desktop of the desktop tier (Xvfb, trayer, a D-Bus session,
# a temporary home) and prints the figures Tolvane is held to:
#   start to tray icon < 150 ms, resident memory after start < 30 MB,
#   menu closed: no wake-ups in 10 s, menu open: < 0.5 % of one core over 10 s.
# Measure a build without sanitizers:
#   cmake -S . -B build-perf -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTOLVANE_BUILD_TESTS=OFF
#   cmake --build build-perf --target tolvane
#   tests/desktop/measure-performance.sh build-perf/src/Tolvane/tolvane [TRAY_ICON_TIMER [WRAPPER]]
# With bench/desktop/tray-icon-timer (scripts/bench builds it) the start is timed from the
# X server's own notifications; without it, by polling every 0.1 s. WRAPPER, a command that
# execs the program it is given (bench/desktop/with-input-access.sh), changes what it runs in.
# Not a test: the figures depend on the machine. Wake-ups are voluntary context switches of
# every thread of the process (/proc/PID/task/*/status).
set -euo pipefail

tolvane=$1
timer=${2:-}
wrapper=${3:-}
tray=xembed
sni_host=
here=$(cd "$(dirname "$0")" && pwd)
source "$here/tray-session-lib.sh"

if [[ "${TOLVANE_INSIDE_SESSION:-}" != 1 ]]; then
    install_missing_tools
    work=$(mktemp -d /tmp/tolvane-measure.XXXXXX)
    mkdir -p "$work/home" "$work/runtime"
    chmod 700 "$work/runtime"
    start_x_server "$work"
    status=0
    TOLVANE_INSIDE_SESSION=1 TOLVANE_WORK="$work" DISPLAY="$DISPLAY" \
        dbus-run-session -- "$0" "$@" 2> >(grep -v 'fd limit' >&2) || status=$?
    stop_x_server
    rm -rf "$work"
    exit $status
fi

work=$TOLVANE_WORK
export HOME=$work/home XDG_CONFIG_HOME=$work/home/.config XDG_STATE_HOME=$work/home/.local/state
export XDG_RUNTIME_DIR=$work/runtime QT_QPA_PLATFORM=xcb
unset WAYLAND_DISPLAY QT_QPA_PLATFORMTHEME XDG_CURRENT_DESKTOP
log=$XDG_STATE_HOME/Tolvane/Tolvane.log
trap 'on_exit' EXIT

wakeups() {
    cat /proc/"$tolvane_pid"/task/*/status | awk '/^voluntary_ctxt_switches/{n += $2} END{print n}'
}
# Nanoseconds on a processor, all threads together.
cpu_ns() {
    cat /proc/"$tolvane_pid"/task/*/schedstat | awk '{n += $1} END{printf "%d", n}'
}

start_tray_host xembed
# The wrapper first, so that the timer starts its clock when the program starts.
launcher=()
if [[ -n $wrapper ]]; then
    launcher=("$wrapper")
fi
if [[ -n $timer ]]; then
    launcher+=("$timer" "$work/icon-shown")
fi
start_tolvane
if [[ -n $timer ]]; then
    wait_for "the timer's figure" test -s "$work/icon-shown"
    echo "start to tray icon: $(cat "$work/icon-shown")"
fi
if alert=$(alert_window); then
    echo "the input access alert is up: answered with Later"
    xdotool windowfocus --sync "$alert" key --clearmodifiers Escape
fi
find_tray_icon
sleep 2
echo "resident memory after start: $(awk '/^VmRSS/{print $2 / 1024 " MB"}' /proc/"$tolvane_pid"/status)"

pointer_to 5 795
before=$(wakeups)
sleep 10
echo "menu closed, 10 s: $(($(wakeups) - before)) wake-ups"

open_menu_by_click 1
sleep 1
before_cpu=$(cpu_ns)
before=$(wakeups)
sleep 10
used=$(($(cpu_ns) - before_cpu))
echo "menu open, 10 s: $(awk -v ns="$used" 'BEGIN{printf "%.3f", ns / 1e10 * 100}') % of one core ($((used / 1000000)) ms), $(($(wakeups) - before)) wake-ups"
close_menu
