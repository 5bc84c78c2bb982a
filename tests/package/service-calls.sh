#!/bin/bash
# The installed input service on a system bus, with polkitd deciding each call, as on a
# machine, but started by hand (systemd is not PID 1 here) inside installed-view.sh, with a
# fresh /run so that the bus has its usual socket and nothing reaches this machine's own. The
# bus reads the package's policy, polkitd its action, and a rule in the throwaway root lets one
# test user use the service. This machine has no input devices, so the answer lists no mice.
#
#   service-calls.sh BUILD_DIR WORK_DIR
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
source "$here/package-lib.sh"
allowed=tolvane-allowed refused=tolvane-refused

if [[ $1 == --inside ]]; then
    work=$2
    mount -t tmpfs -o mode=755 tolvane-run /run
    mkdir /run/dbus
    # Users and a rule of the throwaway root: what is written to /etc stays in it.
    printf '%s:x:%s:%s::/nonexistent:/usr/sbin/nologin\n' "$allowed" 4101 4101 "$refused" 4102 4102 \
        >>/etc/passwd
    printf '%s:x:%s:\n' "$allowed" 4101 "$refused" 4102 >>/etc/group
    cat >/etc/polkit-1/rules.d/50-tolvane-test.rules <<RULE
polkit.addRule(function (action, subject) {
    if (action.id == "org.tolvane.input.use" && subject.user == "$allowed")
        return polkit.Result.YES;
});
RULE
    pids=()
    trap 'kill "${pids[@]}" 2>/dev/null || true; wait' EXIT
    dbus-daemon --system --nofork --nopidfile 2>"$work/dbus.log" &
    pids+=($!)
    wait_for "the system bus" test -S /run/dbus/system_bus_socket
    # polkitd, started as root, becomes its own user polkitd.
    /usr/lib/polkit-1/polkitd --no-debug >"$work/polkitd.log" 2>&1 &
    pids+=($!)
    # The program that the bus would start, as its unit runs it: root without capabilities.
    setpriv --bounding-set=-all --inh-caps=-all --no-new-privs \
        "$(sed -n 's/^Exec=//p' /usr/share/dbus-1/system-services/org.tolvane.Input1.service)" \
        >"$work/inputd.log" 2>&1 &
    pids+=($!)
    for name in org.freedesktop.PolicyKit1 org.tolvane.Input1; do
        wait_for "$name on the bus" busctl call org.freedesktop.DBus /org/freedesktop/DBus \
            org.freedesktop.DBus GetNameOwner s "$name"
    done
    as() {
        setpriv --reuid="$1" --regid="$1" --clear-groups dbus-send --system --print-reply "${@:2}" 2>&1
    }
    list_mice=(--dest=org.tolvane.Input1 /org/tolvane/Input1 org.tolvane.Input1.ListMice)

    step "the user that polkit allows gets the list of mice, empty here"
    reply=$(as "$allowed" "${list_mice[@]}") || fail "$allowed was refused: $reply"
    [[ $(tail -n +2 <<<"$reply" | tr -d ' \n') == "array[]" ]] || fail "the answer was: $reply"

    step "another user is refused, with the service's own error"
    ! reply=$(as "$refused" "${list_mice[@]}") || fail "$refused was answered: $reply"
    [[ $reply == *org.tolvane.Input1.Error.NotAuthorized* ]] || fail "the error was: $reply"

    step "only root may own the service's name"
    ! reply=$(as "$allowed" --dest=org.freedesktop.DBus /org/freedesktop/DBus \
        org.freedesktop.DBus.RequestName string:org.tolvane.Input1 uint32:0) ||
        fail "$allowed could ask for the name: $reply"
    [[ $reply == *AccessDenied* ]] || fail "the error was: $reply"
    exit 0
fi

[[ $(id -u) -eq 0 ]] || fail "needs root: the bus and polkitd change to users of their own, and two test users call"
use_package "$@"
make_root "$work/root"
step "install $(basename "$deb") into $root"
in_root --install "$deb"
"$here/installed-view.sh" "$root" "$0" --inside "$work" || {
    tail -n 20 "$work"/{dbus,polkitd,inputd}.log >&2
    exit 1
}
echo PASS
