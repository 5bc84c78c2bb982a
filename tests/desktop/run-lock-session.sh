#!/bin/bash
# The keyboard cleaning lock of the real binary on a two-monitor Xvfb, inside the test kernel
# under qemu: only there may the input service hold real keyboards and make their clones in
# /dev/uinput. The host copies Xvfb, xrandr, xdotool, xev, Tolvane and every library, plugin,
# font and keymap they load into an initramfs, boots it, and checks the screen dump that
# lock-session-guest.sh sends back over the serial console.
#
#   run-lock-session.sh TOLVANE GUEST_TOOL WORK_DIR INPUT_SERVICE STAND_IN BUS_POLICY
#
# The input service runs in the guest on a system bus of its own, with the kernel tier's
# stand-in for polkit and logind, which finds every caller in an active session. The
# screenshots (PNG) and the guest's log stay in WORK_DIR.
set -euo pipefail

tolvane=$1 guest_tool=$2 work=$(realpath -m "$3") service=$4 authority=$5 policy=$6
here=$(cd "$(dirname "$0")" && pwd)
tier=desktop
# shellcheck source=../kernel/guest-lib.sh
source "$here/../kernel/guest-lib.sh"

width=1024 height=600

build_root() {
    local root=$work/root program
    command -v convert >/dev/null || fail "convert is missing on the host (scripts/install-deps --tests)"
    start_guest_root "$root"
    for program in Xvfb xkbcomp xrandr xdotool xev dbus-send; do
        command -v "$program" >/dev/null ||
            fail "$program is missing on the host (scripts/install-deps --tests)"
        add_dynamic "$root" "$(command -v "$program")" "/usr/bin/$program"
    done
    for program in "$tolvane" "$service" "$authority"; do
        add_dynamic "$root" "$program" "/usr/bin/${program##*/}"
    done
    cp "$guest_tool" "$root/usr/bin/tolvane-lock-guest"
    add_x_session "$root"
    add_system_bus "$root" "$policy"
    cp "$here/lock-session-guest.sh" "$root/lock-session.sh"
    cp "$here/../script-steps.sh" "$root/script-steps.sh"
}

# Each dump between its markers in the guest's log becomes NAME.png.
extract_shots() {
    local name
    sed -n 's/^TOLVANE-SHOT \(.*\)$/\1/p' "$work/guest.txt" | while read -r name; do
        sed -n "/^TOLVANE-SHOT $name\$/,/^TOLVANE-SHOT-END\$/p" "$work/guest.txt" |
            sed '1d;$d' | base64 -d | gunzip >"$work/$name.xwd" || fail "cannot decode $name"
        convert "xwd:$work/$name.xwd" "$work/$name.png" || fail "cannot convert $name"
        rm -f "$work/$name.xwd"
    done
}

# Each monitor of the locked screen is covered edge to edge by a darkened picture of itself:
# the white root window turned grey. (Its button and heading, the app tier checks.)
check_shots() {
    local left grey
    for left in 0 $width; do
        grey=$(convert "$work/locked.png" -crop "${width}x$height+$left+0" +repage -alpha off \
            -fuzz 6% -fill black +opaque 'rgb(166,166,166)' -fill white -opaque 'rgb(166,166,166)' \
            -colorspace gray -format '%[fx:round(mean*w*h)]' info:)
        echo "locked, monitor at x=$left: $grey darkened pixels"
        [[ $grey -gt $((width * height * 8 / 10)) ]] || fail "the monitor at x=$left is not darkened"
    done
}

prepare_guest
rm -f "$work"/*.png
build_root
# Uncompressed: the guest would spend longer unpacking it than the host saves in copying.
GUEST_PACK=plain boot_guest "$work/root" 1536 150 "$start_system_bus && sh /lock-session.sh"
grep -E '^(TOLVANE-(FAIL|GUEST)|--- |    \[)|^Monitors|^ [0-9]:' "$work/guest.txt" || true
sed -n '/^TOLVANE-LOG-BEGIN$/,/^TOLVANE-LOG-END$/p' "$work/guest.txt" | sed '1d;$d'
extract_shots
result=$(guest_result) || exit 1
[ "$result" = 0 ] || fail "the lock session failed in the guest (see $work/guest.txt)"
check_shots
echo "PASS (lock session; screenshots in $work)"
