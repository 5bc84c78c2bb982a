#!/bin/bash
# The package's life on a machine, in a throwaway root that dpkg --root installs into and
# installed-view.sh lays over this machine: install, a first start from the application list,
# an upgrade, a start from the autostart entry, removal and purge. Purge must take back what
# the access helper wrote to /etc and leave the user's settings, log and autostart entry.
#
#   install-upgrade-purge.sh BUILD_DIR WORK_DIR
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
source "$here/package-lib.sh"
use_package "$@"
root=$work/root
# The folders that udev and kmod, both dependencies, would have made.
mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates" "$root/etc/udev/rules.d" \
    "$root/etc/modules-load.d"
touch "$root/var/lib/dpkg/status"
rule=$root/etc/udev/rules.d/70-tolvane-input-access.rules
modules=$root/etc/modules-load.d/tolvane-uinput.conf
home=$work/session/home
user_files=("$home/.config/Tolvane/Tolvane.conf" "$home/.local/state/Tolvane/Tolvane.log"
    "$home/.config/autostart/tolvane.desktop")

status_of() { dpkg --root="$root" --status tolvane 2>/dev/null | sed -n "s/^${1:-Status}: //p"; }
# dpkg on the throwaway root: maintainer scripts run outside a chroot, with DPKG_ROOT set, and
# the dependencies, which this root does not hold, are not checked here.
in_root() {
    local as_root=()
    [[ $(id -u) -eq 0 ]] || as_root=(fakeroot)
    PATH=$PATH:/usr/sbin:/sbin "${as_root[@]}" dpkg --root="$root" --log=/dev/null --force-not-root \
        --force-script-chrootless --force-depends "$@" >"$work/dpkg.log" 2>&1 ||
        fail "$(cat "$work/dpkg.log")"
}
session() {
    "$here/installed-view.sh" "$root" "$here/installed-session.sh" "$1" "$work/session" \
        "$work/packaged"
}

step "install $(basename "$deb") into $root"
in_root --install "$deb"
[[ $(status_of) == "install ok installed" ]] || fail "status after install: $(status_of)"
dpkg --root="$root" --listfiles tolvane >"$work/packaged"
[[ ! -e $rule ]] || fail "installing wrote the udev rule; only the helper may"

session first
[[ -s $rule && -s $modules ]] || fail "the helper's files did not reach the root's /etc"
for file in "${user_files[@]}"; do
    [[ -s $file ]] || fail "the first session left no $file"
done
cp "${user_files[1]}" "$work/first-log"

step "upgrade to a later version of the same package"
dpkg-deb --raw-extract "$deb" "$work/next"
version=$(status_of Version)
sed -i "s/^Version: .*/Version: $version+1/" "$work/next/DEBIAN/control"
dpkg-deb --root-owner-group --build "$work/next" "$work/next.deb" >/dev/null
in_root --install "$work/next.deb"
[[ $(status_of Version) == "$version+1" ]] || fail "version after the upgrade: $(status_of Version)"
[[ -s $rule && -s $modules ]] || fail "the upgrade took away the input access"

session again
size=$(stat -c %s "$work/first-log")
[[ $(stat -c %s "${user_files[1]}") -gt $size ]] || fail "the second start wrote nothing to the log"
cmp -s -n "$size" "$work/first-log" "${user_files[1]}" || fail "the log was not appended to"
sha256sum "${user_files[@]}" >"$work/user-files.sha256"

step "remove: the program goes, the input access stays until purge"
in_root --remove tolvane
[[ $(status_of) == "deinstall ok config-files" ]] || fail "status after remove: $(status_of)"
left=$(find "$root" -path "$root/var/lib/dpkg" -prune -o -path "$root/etc" -prune -o \
    -not -type d -print)
[[ -z $left ]] || fail "files left after remove: $left"
[[ -s $rule && -s $modules ]] || fail "remove took the input access back; only purge does"

step "purge: the helper's files go, the user's files stay as they were"
in_root --purge tolvane
[[ -z $(status_of) ]] || fail "status after purge: $(status_of)"
[[ ! -e $rule ]] || fail "purge left $rule"
[[ ! -e $modules ]] || fail "purge left $modules"
sha256sum --check --quiet "$work/user-files.sha256" || fail "purge changed the user's files"
echo PASS
