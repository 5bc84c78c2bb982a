# shellcheck shell=bash disable=SC2034
# Helpers of the package tier's scripts. Sourced, not run.
# shellcheck source=../script-steps.sh
source "$(dirname "${BASH_SOURCE[0]}")/../script-steps.sh"

# use_package BUILD_DIR WORK_DIR: `deb`, the one package that scripts/package left in
# BUILD_DIR, and `work`, WORK_DIR made anew.
use_package() {
    local debs=("$1"/tolvane_*.deb)
    [[ ${#debs[@]} -eq 1 && -f ${debs[0]} ]] || fail "expected one tolvane_*.deb in $1"
    deb=${debs[0]} work=$(realpath -m "$2")
    rm -rf "$work"
    mkdir -p "$work"
}

# desktop_value FILE KEY: KEY's value in the [Desktop Entry] group of FILE; nothing if absent.
desktop_value() { sed -n "/^\[Desktop Entry\]/,/^\[/{s/^$2=//;T;p;q}" "$1"; }

# make_root ROOT: `root`, an empty throwaway root that dpkg --root can install into.
make_root() {
    root=$1
    mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates"
    touch "$root/var/lib/dpkg/status"
}

# dpkg on the throwaway root: maintainer scripts run outside a chroot, with DPKG_ROOT set, and
# the dependencies, which this root does not hold, are not checked here.
in_root() {
    local as_root=()
    [[ $(id -u) -eq 0 ]] || as_root=(fakeroot)
    PATH=$PATH:/usr/sbin:/sbin "${as_root[@]}" dpkg --root="$root" --log=/dev/null --force-not-root \
        --force-script-chrootless --force-depends "$@" >"$work/dpkg.log" 2>&1 ||
        fail "$(cat "$work/dpkg.log")"
}
