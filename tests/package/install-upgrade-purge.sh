#!/bin/bash
# The package's life on a machine, in a throwaway root that dpkg --root installs into and
# installed-view.sh lays over this machine: install, a first session, an upgrade, removal and
# purge, each a step below. The session runs the installed Tolvane on Xvfb and trayer
# (tests/desktops/session-lib.sh), with a stand-in for xdg-open first in PATH that writes down
# how it was called; no input service answers there, so the access alert comes.
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
    printf '#!/bin/sh\necho "$*" >>"%s/calls/xdg-open"\n' "$work" >"$work/stubs/xdg-open"
    chmod +x "$work/stubs/xdg-open"
    export PATH=$work/stubs:$PATH
    autostart=$XDG_CONFIG_HOME/autostart/tolvane.desktop
    is_packaged() { grep -qx -- "$1" "$packaged"; }

    # Exec is one packaged path and nothing else: the only form Tolvane's entries need.
    tolvane=$(desktop_value /usr/share/applications/tolvane.desktop Exec)
    is_packaged "$tolvane" || fail "the entry's Exec is '$tolvane', not a program of the package"
    start_trayer
    alert_key=Return start_tolvane # Open Help

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
make_root "$work/root"
wants=$root/etc/systemd/system/multi-user.target.wants/tolvane-inputd.service
rule=$root/etc/udev/rules.d/70-tolvane-input-access.rules
modules=$root/etc/modules-load.d/tolvane-uinput.conf
home=$work/session/home
user_files=("$home/.config/Tolvane/Tolvane.conf" "$home/.local/state/Tolvane/Tolvane.log"
    "$home/.config/autostart/tolvane.desktop")
status_of() { dpkg --root="$root" --status tolvane 2>/dev/null | sed -n "s/^${1:-Status}: //p"; }

step "install $(basename "$deb") into $root"
in_root --install "$deb"
[[ $(status_of) == "install ok installed" ]] || fail "status after install: $(status_of)"
dpkg --root="$root" --listfiles tolvane >"$work/packaged"
[[ $(readlink "$wants") == /usr/lib/systemd/system/tolvane-inputd.service ]] ||
    fail "installing did not enable the input service"

# A log line of an earlier launch, which the session must append to.
mkdir -p "$(dirname "${user_files[1]}")"
echo "an earlier launch" >"${user_files[1]}"
"$here/installed-view.sh" "$root" "$0" --session "$work/session" "$work/packaged"
for file in "${user_files[@]}"; do
    [[ -s $file ]] || fail "the session left no $file"
done
[[ $(head -n1 "${user_files[1]}") == "an earlier launch" ]] || fail "the log was not appended to"
sha256sum "${user_files[@]}" >"$work/user-files.sha256"

step "upgrade to a later version, over the udev rule and module file of versions before the service"
mkdir -p "$(dirname "$rule")" "$(dirname "$modules")"
echo 'KERNEL=="event[0-9]*", SUBSYSTEM=="input", TAG+="uaccess"' >"$rule"
echo uinput >"$modules"
dpkg-deb --raw-extract "$deb" "$work/next"
version=$(status_of Version)
sed -i "s/^Version: .*/Version: $version+1/" "$work/next/DEBIAN/control"
dpkg-deb --root-owner-group --build "$work/next" "$work/next.deb" >/dev/null
in_root --install "$work/next.deb"
[[ $(status_of Version) == "$version+1" ]] || fail "version after the upgrade: $(status_of Version)"
[[ ! -e $rule && ! -e $modules ]] || fail "the upgrade left the old rule or module file"
[[ -L $wants ]] || fail "the upgrade disabled the input service"

step "remove: the program and the service go"
in_root --remove tolvane
[[ $(status_of) == "deinstall ok config-files" ]] || fail "status after remove: $(status_of)"
left=$(find "$root" -path "$root/var/lib/dpkg" -prune -o -path "$root/etc" -prune -o \
    -path "$root/var/lib/systemd" -prune -o -not -type d -print)
[[ -z $left ]] || fail "files left after remove: $left"

step "purge: nothing is left but dpkg's records; the user's files stay as they were"
in_root --purge tolvane
[[ -z $(status_of) ]] || fail "status after purge: $(status_of)"
left=$(find "$root" -path "$root/var/lib/dpkg" -prune -o -not -type d -print)
[[ -z $left ]] || fail "files left after purge: $left"
sha256sum --check --quiet "$work/user-files.sha256" || fail "purge changed the user's files"
echo PASS
