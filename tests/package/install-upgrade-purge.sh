#!/bin/bash
# The package's life on a machine, in a throwaway root that dpkg --root installs into and
# installed-view.sh lays over this machine: install, a first session, an upgrade, removal and
# purge. Purge must take back what the access helper wrote to /etc and leave the user's
# settings, log and autostart entry.
#
# The session runs the installed Tolvane on Xvfb and trayer (tests/desktops/session-lib.sh)
# inside installed-view.sh, with stand-ins for pkexec, xdg-open, udevadm and modprobe first in
# PATH that write down how they were called; the pkexec stand-in then runs what it was given,
# as an administrator who agrees would. It starts the program named by the application list's
# entry, answers the input access alert with Open Help, switches Launch at login on and quits.
#
#   install-upgrade-purge.sh BUILD_DIR WORK_DIR
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
source "$here/package-lib.sh"

if [[ $1 == --session ]]; then
    work=$2 packaged=$3 session=x11 width=1280 height=800
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

    # Exec is one packaged path and nothing else: the only form Tolvane's entries need.
    tolvane=$(desktop_value /usr/share/applications/tolvane.desktop Exec)
    is_packaged "$tolvane" || fail "the entry's Exec is '$tolvane', not a program of the package"
    start_trayer
    alert_key=Return start_tolvane # Open Help

    step "Tolvane asked pkexec to run the packaged helper, and the helper wrote the rule"
    wait_for "pkexec's call" test -s "$work/calls/pkexec"
    helper=$(head -n1 "$work/calls/pkexec")
    is_packaged "$helper" || fail "pkexec was asked to run '$helper', which is not packaged"
    # Its last step; the rule it wrote is checked outside the session.
    wait_for "the helper's reload of udev" grep -q -- '--reload-rules' "$work/calls/udevadm"
    grep -qx 'uinput' /etc/modules-load.d/tolvane-uinput.conf || fail "uinput is not loaded at boot"

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
    quit_from_menu
    exit 0
fi
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
step "install $(basename "$deb") into $root"
in_root --install "$deb"
[[ $(status_of) == "install ok installed" ]] || fail "status after install: $(status_of)"
dpkg --root="$root" --listfiles tolvane >"$work/packaged"
[[ ! -e $rule ]] || fail "installing wrote the udev rule; only the helper may"

# A log line of an earlier launch, which the session must append to, and a symlink at the
# rule's path, which the helper, run as root, must replace and not write through.
mkdir -p "$(dirname "${user_files[1]}")"
echo "an earlier launch" >"${user_files[1]}"
echo target >"$work/target"
ln -s "$work/target" "$rule"
"$here/installed-view.sh" "$root" "$0" --session "$work/session" "$work/packaged"
[[ -s $rule && ! -L $rule && -s $modules ]] || fail "the helper's files did not reach the root's /etc"
[[ $(cat "$work/target") == target ]] || fail "the helper wrote through a symlink"
[[ $(stat -c %a "$rule") == 644 ]] || fail "the rule's mode is $(stat -c %a "$rule"), not 644"
for file in "${user_files[@]}"; do
    [[ -s $file ]] || fail "the session left no $file"
done
[[ $(head -n1 "${user_files[1]}") == "an earlier launch" ]] || fail "the log was not appended to"
sha256sum "${user_files[@]}" >"$work/user-files.sha256"

step "upgrade to a later version of the same package"
dpkg-deb --raw-extract "$deb" "$work/next"
version=$(status_of Version)
sed -i "s/^Version: .*/Version: $version+1/" "$work/next/DEBIAN/control"
dpkg-deb --root-owner-group --build "$work/next" "$work/next.deb" >/dev/null
in_root --install "$work/next.deb"
[[ $(status_of Version) == "$version+1" ]] || fail "version after the upgrade: $(status_of Version)"
[[ -s $rule && -s $modules ]] || fail "the upgrade took away the input access"

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
