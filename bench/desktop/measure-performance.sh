#!/bin/bash
# Measures a tolvane binary on the desktop of the desktop tier (Xvfb, trayer, a D-Bus session,
# a temporary home: tests/desktops/session-lib.sh) and prints the figures Tolvane is held to:
#   start to tray icon < 150 ms, resident memory after start < 30 MB,
#   menu closed: no wake-ups in 10 s, menu open: < 0.5 % of one core over 10 s.
# Measure a build without sanitizers:
#   cmake -S . -B build-perf -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTOLVANE_BUILD_TESTS=OFF
#   cmake --build build-perf --target tolvane
#   bench/desktop/measure-performance.sh build-perf/src/Tolvane/tolvane [TRAY_ICON_TIMER [WRAPPER]]
# With bench/desktop/tray-icon-timer (scripts/bench builds it) the start is timed from the
# X server's own notifications; without it, by polling every 0.1 s. WRAPPER, a command that
# execs the program it is given (bench/desktop/with-input-access.sh), changes what it runs in.
# Not a test: the figures depend on the machine. Wake-ups are voluntary context switches of
# every thread of the process (/proc/PID/task/*/status).
set -euo pipefail
tolvane=$1 timer=${2:-} wrapper=${3:-} session=x11 width=1280 height=800
source "$(dirname "$0")/../../tests/desktops/session-lib.sh"
if [[ ${TOLVANE_INSIDE_SESSION:-} != 1 ]]; then
    work=$(mktemp -d /tmp/tolvane-measure.XXXXXX)
    status=0
    run_in_session "$0" "$@" 2> >(grep -v 'fd limit' >&2) || status=$?
    rm -rf "$work"
    exit $status
fi
enter_session

wakeups() {
    cat /proc/"$tolvane_pid"/task/*/status | awk '/^voluntary_ctxt_switches/{n += $2} END{print n}'
}
# Nanoseconds on a processor, all threads together.
cpu_ns() {
    cat /proc/"$tolvane_pid"/task/*/schedstat | awk '{n += $1} END{printf "%d", n}'
}
# The icon: a window of Tolvane no larger than 64x64, embedded in the tray.
icon_shown() {
    local id
    for id in $(xdotool search --onlyvisible --pid "$tolvane_pid" 2>/dev/null); do
        xwininfo -id "$id" | awk '/Width:/{w=$NF} /Height:/{h=$NF} END{exit !(w <= 64 && h <= 64)}' &&
            return 0
    done
    return 1
}

start_trayer
# The wrapper first, so that the timer starts its clock when the program starts.
launcher=(${wrapper:+"$wrapper"} ${timer:+"$timer" "$work/icon-shown"})
started=$(now_ms)
${launcher[@]+"${launcher[@]}"} "$tolvane" >"$work/tolvane.log" 2>&1 &
tolvane_pid=$!
pids+=("$tolvane_pid")
wait_for "the tray icon" icon_shown
echo "start to tray icon: $(($(now_ms) - started)) ms (polled)"
if [[ -n $timer ]]; then
    wait_for "the timer's figure" test -s "$work/icon-shown"
    echo "start to tray icon: $(cat "$work/icon-shown")"
fi
if alert=$(xdotool search --onlyvisible --pid "$tolvane_pid" --name '^Tolvane$' | grep .); then
    echo "the input access alert is up: answered with Later"
    xdotool windowfocus --sync "$(head -n1 <<<"$alert")" key --clearmodifiers Escape
fi
sleep 2
echo "resident memory after start: $(awk '/^VmRSS/{print $2 / 1024 " MB"}' /proc/"$tolvane_pid"/status)"

pointer_to 5 795
before=$(wakeups)
sleep 10
echo "menu closed, 10 s: $(($(wakeups) - before)) wake-ups"

open_again
sleep 1
before_cpu=$(cpu_ns)
before=$(wakeups)
sleep 10
used=$(($(cpu_ns) - before_cpu))
echo "menu open, 10 s: $(awk -v ns="$used" 'BEGIN{printf "%.3f", ns / 1e10 * 100}') % of one core ($((used / 1000000)) ms), $(($(wakeups) - before)) wake-ups"
key Escape
