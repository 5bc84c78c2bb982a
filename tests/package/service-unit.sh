#!/bin/bash
# The packaged unit under systemd itself, sandbox and all: this machine's own system booted
# read-only in a container (systemd-nspawn, a network of its own, a fresh /run) with the
# package's /usr laid over its /usr and a polkit rule that allows root laid over its /etc. The
# unit is not even enabled: the bus activates it (SystemdService=). The devices' part of the
# sandbox (DevicePolicy=) a container's systemd may not apply, and the container has no input
# devices: the service answers with no mice.
#
#   service-unit.sh BUILD_DIR WORK_DIR
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
source "$here/package-lib.sh"

if [[ $1 == --in-container ]]; then
    exec >>/var/check-log/checks.log 2>&1
    trap 'systemctl --no-block poweroff' EXIT
    step "a call starts the service through the bus, and it answers"
    reply=$(busctl call org.tolvane.Input1 /org/tolvane/Input1 org.tolvane.Input1 ListMice) ||
        fail "no answer: $(journalctl --no-pager -u tolvane-inputd.service)"
    [[ $reply == "a(ss) 0" ]] || fail "the answer was: $reply"
    step "it runs without capabilities or new privileges, and with its system-call filter"
    pid=$(systemctl show --property=MainPID --value tolvane-inputd.service)
    for line in $'CapEff:\t0000000000000000' $'CapBnd:\t0000000000000000' $'NoNewPrivs:\t1' $'Seccomp:\t2'; do
        grep -qxF "$line" "/proc/$pid/status" || fail "not '$line': $(grep -E 'Cap|NoNew|Seccomp' "/proc/$pid/status")"
    done
    step "the watchdog is kept fed"
    sleep 7
    [[ $(systemctl show --property=MainPID --value tolvane-inputd.service) == "$pid" ]] ||
        fail "the service was restarted: $(journalctl --no-pager -u tolvane-inputd.service)"
    echo PASS
    exit 0
fi

[[ $(id -u) -eq 0 ]] || fail "needs root: it boots this machine's system in a container"
use_package "$@"
dpkg-deb --extract "$deb" "$work/tree"
units=$work/etc/systemd/system
# A short watchdog period for the test only, so that a few seconds prove it is fed.
mkdir -p "$units/tolvane-inputd.service.d"
printf '[Service]\nWatchdogSec=3s\n' >"$units/tolvane-inputd.service.d/watchdog.conf"
mkdir -p "$units" "$work/etc/polkit-1/rules.d" "$work/log" "$work/root"
printf '[Unit]\nWants=dbus.socket polkit.service tolvane-checks.service\n' >"$units/tolvane-checks.target"
printf '[Unit]\nAfter=dbus.socket polkit.service\n[Service]\nType=oneshot\nExecStart=%s\n' \
    "/var/tests/package/$(basename "$0") --in-container" >"$units/tolvane-checks.service"
cat >"$work/etc/polkit-1/rules.d/50-tolvane-checks.rules" <<'RULE'
polkit.addRule(function (action, subject) {
    if (action.id == "org.tolvane.input.use" && subject.user == "root") return polkit.Result.YES;
});
RULE
step "boot this machine's system with the package laid over it"
# shellcheck disable=SC2016 # $1 and $2 are the inner shell's
unshare --mount --propagation private -- sh -c '
    mount --bind / "$1/root" && mount -o remount,bind,ro "$1/root" && mount -t tmpfs tolvane-run /run &&
    timeout 90 systemd-nspawn --quiet --directory="$1/root" --volatile=state --boot --private-network \
        --register=no --keep-unit --link-journal=no --console=pipe \
        --overlay-ro=+/usr:"$1/tree/usr":/usr --overlay-ro=+/etc:"$1/etc":/etc \
        --bind-ro="$2":/var/tests --bind="$1/log":/var/check-log systemd.unit=tolvane-checks.target' \
    - "$work" "$(dirname "$here")" >"$work/nspawn.log" 2>&1 || fail "the container failed: $(tail -n 20 "$work/nspawn.log")"
cat "$work/log/checks.log" 2>/dev/null
grep -qx PASS "$work/log/checks.log" 2>/dev/null || fail "the checks did not pass in the container"
echo PASS
