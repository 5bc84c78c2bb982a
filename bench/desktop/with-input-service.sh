#!/bin/bash
# Runs COMMAND as a Tolvane whose input service answers, on a machine that has no input device
# and no system bus of its own to spare: a private system bus (the kernel tier's configuration,
# in a folder of its own), the kernel tier's stand-in for polkit and logind with every session
# active, and tolvane-inputd in a namespace whose /dev has uinput but no input device
# (with-input-access.sh). COMMAND keeps this script's process id (exec), so a caller's $! stays
# the program's; the bus, the stand-in and the service end when it does. Needs root.
#
#   TOLVANE_INPUTD=... TOLVANE_STAND_IN=... with-input-service.sh COMMAND...
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
: "${TOLVANE_INPUTD:?the tolvane-inputd binary}" "${TOLVANE_STAND_IN:?tolvane-stand-in-authority}"
bus=$(mktemp -d /tmp/tolvane-bench-bus.XXXXXX)
mkdir "$bus/system.d"
cp "$here/../../data/service/org.tolvane.Input1.conf" "$bus/system.d/"
sed -e "s#/run/tolvane-bus/socket#$bus/socket#" \
    -e "s#<includedir>.*</includedir>#<includedir>$bus/system.d</includedir>#" \
    "$here/../../tests/kernel/guest-bus.conf" >"$bus/bus.conf"
daemon=$(dbus-daemon --config-file="$bus/bus.conf" --fork --print-pid --nopidfile --nosyslog)
export DBUS_SYSTEM_BUS_ADDRESS=unix:path=$bus/socket

serving() {
    dbus-send --system --print-reply --dest=org.freedesktop.DBus /org/freedesktop/DBus \
        org.freedesktop.DBus.NameHasOwner "string:$1" 2>/dev/null | grep -q 'boolean true'
}
wait_for() {
    for _ in $(seq 50); do
        serving "$1" && return 0
        sleep 0.1
    done
    echo "with-input-service: $1 did not come on the bus" >&2
    return 1
}

"$TOLVANE_STAND_IN" --everyone-active &
stand_in=$!
wait_for org.freedesktop.login1
"$here/with-input-access.sh" "$TOLVANE_INPUTD" &
service=$!
wait_for org.tolvane.Input1
# Everything ends with the program: a watcher outside it waits for this process to go.
(
    tail --pid=$$ -f /dev/null
    kill "$service" "$stand_in" "$daemon" 2>/dev/null
    rm -rf "$bus"
) >/dev/null 2>&1 &
exec "$@"
