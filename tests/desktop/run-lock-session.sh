#!/bin/bash
# The keyboard cleaning lock of the real binary on a two-monitor Xvfb, inside the test kernel
# under qemu: only there are /dev/uinput and real event nodes, so only there may the lock
# take the keyboards. The host copies Xvfb, xrandr, xdotool, xev, Tolvane and every library,
# plugin, font and keymap they load into an initramfs, boots it, and checks the screen dumps
# that lock-session-guest.sh sends back over the serial console.
#
#   run-lock-session.sh TOLVANE GUEST_TOOL WORK_DIR
#
# The screenshots (PNG) and the guest's log stay in WORK_DIR.
set -euo pipefail

tolvane=$(realpath "$1")
guest_tool=$(realpath "$2")
mkdir -p "$3"
work=$(realpath "$3")
here=$(cd "$(dirname "$0")" && pwd)
tier=desktop
# shellcheck source=../kernel/guest-lib.sh
source "$here/../kernel/guest-lib.sh"

width=1024
height=600

build_root() {
    local root=$work/root program
    command -v convert >/dev/null || fail "convert is missing on the host (scripts/install-deps --tests)"
    start_guest_root "$root"
    for program in Xvfb xkbcomp xrandr xdotool xev; do
        command -v "$program" >/dev/null ||
            fail "$program is missing on the host (scripts/install-deps --tests)"
        add_dynamic "$root" "$(command -v "$program")" "/usr/bin/$program"
    done
    add_dynamic "$root" "$tolvane" /usr/bin/tolvane
    cp "$guest_tool" "$root/usr/bin/tolvane-lock-guest"
    add_x_session "$root"
    cp "$here/lock-session-guest.sh" "$root/lock-session.sh"
}

# Each dump between its markers in the guest's log becomes NAME.png.
extract_shots() {
    local name
    for name in $(sed -n 's/^TOLVANE-SHOT \(.*\)$/\1/p' "$work/guest.txt"); do
        sed -n "/^TOLVANE-SHOT $name\$/,/^TOLVANE-SHOT-END\$/p" "$work/guest.txt" |
            sed '1d;$d' | base64 -d | gunzip >"$work/$name.xwd" || fail "cannot decode $name"
        convert "xwd:$work/$name.xwd" "$work/$name.png" || fail "cannot convert $name"
        rm -f "$work/$name.xwd"
    done
}

# Pixels of FILE's rectangle W H X Y within FUZZ percent of COLOUR, which must not be black.
count_in() {
    convert "$1" -crop "$2x$3+$4+$5" +repage -alpha off -fuzz "$7%" -fill black +opaque "$6" \
        -fill white -opaque "$6" -colorspace gray -format '%[fx:round(mean*w*h)]' info:
}

# Each monitor of the locked screen is covered edge to edge by a darkened picture of itself
# (white turns grey), with the unlock capsule and the white heading in the middle; before the
# lock and after it, the same monitor is the white root window again.
check_shots() {
    local area=$((width * height)) left white grey capsule heading
    for left in 0 $width; do
        white=$(count_in "$work/locked.png" $width $height $left 0 white 2)
        grey=$(count_in "$work/locked.png" $width $height $left 0 'rgb(166,166,166)' 6)
        capsule=$(count_in "$work/locked.png" $width $((height / 2)) $left $((height / 2)) \
            'rgb(34,193,238)' 10)
        heading=$(count_in "$work/locked.png" 400 60 $((left + width / 2 - 200)) \
            $((height / 2 - 60)) white 2)
        echo "locked, monitor at x=$left: white $white, darkened $grey, capsule $capsule," \
            "heading $heading"
        [[ $white -lt $((area / 100)) ]] || fail "the monitor at x=$left is not covered"
        [[ $grey -gt $((area * 8 / 10)) ]] || fail "the monitor at x=$left is not darkened"
        [[ $capsule -ge 50 ]] || fail "no unlock button on the monitor at x=$left"
        [[ $heading -ge 300 ]] || fail "no heading on the monitor at x=$left"
        white=$(count_in "$work/unlocked.png" $width $height $left 0 white 2)
        echo "unlocked, monitor at x=$left: white $white"
        [[ $white -gt $((area * 9 / 10)) ]] || fail "the monitor at x=$left stays covered"
    done
    white=$(count_in "$work/menu.png" $width $height $width 0 white 2)
    [[ $white -gt $((area * 9 / 10)) ]] || fail "the right monitor was not white before the lock"
}

mkdir -p "$work"
exec 9>"$work/.lock"
flock 9
rm -f "$work"/*.png
prepare_guest
build_root
# Uncompressed: the guest would spend longer unpacking it than the host saves in copying.
GUEST_PACK=plain boot_guest "$work/root" 1536 150 "sh /lock-session.sh"
grep -E '^TOLVANE-(STEP|FAIL|GUEST)|^Monitors|^ [0-9]:' "$work/guest.txt" || true
sed -n '/^TOLVANE-LOG-BEGIN$/,/^TOLVANE-LOG-END$/p' "$work/guest.txt" | sed '1d;$d'
extract_shots
result=$(guest_result) || exit 1
[ "$result" = 0 ] || fail "the lock session failed in the guest (see $work/guest.txt)"
check_shots
echo "PASS (lock session; screenshots in $work)"
