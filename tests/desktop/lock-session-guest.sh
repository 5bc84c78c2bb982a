#!/bin/sh
# The keyboard cleaning lock, end to end, inside the test kernel (run by the guest's /init):
# Xvfb with two monitors and no tray, so that Tolvane's menu comes as its window, xev as an
# ordinary window that should get the typing, the input service and the real tolvane binary as
# its client, and a virtual USB keyboard whose taps a plain reader of its node counts.
#
# Lines for the host: steps ("--- ..."), "TOLVANE-FAIL: why", and screen dumps between
# "TOLVANE-SHOT NAME" and "TOLVANE-SHOT-END", gzipped and in base64.
set -u
# shellcheck source=../script-steps.sh
. /script-steps.sh
default_patience=20 # emulation is slow

width=1024 height=600
fb=/tmp/fb/Xvfb_screen0
log=/tmp/home/.local/state/Tolvane/Tolvane.log
export HOME=/tmp/home XDG_CONFIG_HOME=/tmp/home/.config XDG_STATE_HOME=/tmp/home/.local/state
export XDG_RUNTIME_DIR=/tmp/runtime DISPLAY=:0 QT_QPA_PLATFORM=xcb
export ASAN_OPTIONS=detect_leaks=0:abort_on_error=0 UBSAN_OPTIONS=print_stacktrace=1
mkdir -p /tmp/fb "$XDG_STATE_HOME" "$XDG_CONFIG_HOME" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"

shot() {
    echo "TOLVANE-SHOT $1"
    gzip -1 -c "$fb" | base64
    echo "TOLVANE-SHOT-END"
}

fail() {
    echo "TOLVANE-FAIL: $*"
    [ -e "$fb" ] && shot failure
    for f in /tmp/tolvane.out /tmp/inputd.out /tmp/xvfb.log "$log"; do
        [ -e "$f" ] && echo "--- $f" && tail -n 30 "$f"
    done
    exit 1
}

# "ID X Y WIDTH HEIGHT" for each viewable window of Tolvane.
tolvane_windows() {
    for id in $(xdotool search --onlyvisible --pid "$tolvane_pid" 2>/dev/null); do
        X='' Y='' WIDTH='' HEIGHT=''
        eval "$(xdotool getwindowgeometry --shell "$id")"
        echo "$id $X $Y $WIDTH $HEIGHT"
    done
}

# The menu's window: at least 300x200, and not an overlay.
menu_window() {
    tolvane_windows | awk -v w=$width -v h=$height '$4 >= 300 && $5 >= 200 && ($4 != w || $5 != h) {
        print; found = 1; exit} END {exit !found}'
}

# The overlays, one line each, as "X Y WIDTH HEIGHT", sorted from left to right.
overlays() {
    tolvane_windows | awk -v w=$width -v h=$height '$4 == w && $5 == h {print $2, $3, $4, $5}' |
        sort -n
}
two_overlays() { [ "$(overlays | tr '\n' ' ')" = "0 0 $width $height $width 0 $width $height " ]; }

in_log() { grep -q "$1" "$log"; }
# tap_keyboard: six keys tapped on the USB keyboard; prints how many a plain reader saw.
tap_keyboard() {
    echo >&3
    # shellcheck disable=SC2016 # expanded by eval, on each try
    patience=5 wait_for "the keyboard's reader" eval '[ $(grep -c "^seen" /tmp/keyboard.out) -gt ${taps:-0} ]'
    taps=$((${taps:-0} + 1))
    grep '^seen' /tmp/keyboard.out | tail -n 1 | cut -d' ' -f2
}
key_presses() { grep -c '^KeyPress event' /tmp/xev.log; }

# click_cyan WHAT X Y WIDTH HEIGHT: a click in the middle of the cyan (the Clean Keyboard
# row's disc, the unlock button) inside the rectangle of the screen.
click_cyan() {
    what=$1
    shift
    # shellcheck disable=SC2046 # the answer is four numbers, one word each
    set -- $(tolvane-lock-guest "$fb" 22c1ee 24 "$@")
    [ "${1:-0}" -ge 20 ] || fail "no $what ($*)"
    xdotool mousemove $((($2 + $4) / 2)) $((($3 + $5) / 2))
    sleep 0.3
    xdotool click 1
}

step "Xvfb with two monitors side by side"
Xvfb :0 -screen 0 $((2 * width))x${height}x24 -wr -noreset -nolisten tcp -extension GLX \
    -fbdir /tmp/fb >/tmp/xvfb.log 2>&1 &
wait_for "the X server" xdotool getmouselocation
# The left monitor takes the server's one output, "screen", so that the server drops the
# monitor it would otherwise keep over the whole framebuffer; -noreset keeps both monitors
# when the last client leaves.
xrandr --setmonitor left $width/271x$height/159+0+0 screen
xrandr --setmonitor right $width/271x$height/159+$width+0 none
xrandr --listmonitors
[ "$(xrandr --listmonitors | head -n 1)" = "Monitors: 2" ] || fail "not two monitors"

step "a virtual USB keyboard"
mkfifo /tmp/keys
tolvane-lock-guest keyboard </tmp/keys >/tmp/keyboard.out 2>&1 &
exec 3>/tmp/keys
wait_for "the keyboard's node" grep -q '^keyboard /dev/input/event' /tmp/keyboard.out

step "xev, an ordinary window with the keyboard focus"
xev -geometry 240x120+40+440 >/tmp/xev.log 2>&1 &
wait_for "xev's window" xdotool search --name '^Event Tester$'
xev_window=$(xdotool search --name '^Event Tester$' | head -n 1)
xdotool windowfocus --sync "$xev_window"

step "the input service, with a stand-in for polkit and logind that finds every caller active"
tolvane-stand-in-authority --everyone-active &
tolvane-inputd >/tmp/inputd.out 2>&1 &
wait_for "the service on the system bus" dbus-send --system --print-reply --dest=org.tolvane.Input1 \
    /org/tolvane/Input1 org.tolvane.Input1.ListMice

step "start tolvane; with no tray, its menu comes as a window on the left monitor"
xdotool mousemove 200 100
tolvane >/tmp/tolvane.out 2>&1 &
tolvane_pid=$!
patience=40 wait_for "the window 'Tolvane'" menu_window
in_log "tap creation failed" && fail "tolvane could not take the input devices"

step "choose Clean Keyboard"
sleep 1
# shellcheck disable=SC2046 # the window's id and geometry, one word each
set -- $(menu_window)
click_cyan "Clean Keyboard row with its cyan disc in the menu" "$2" "$3" "$4" "$5"
wait_for "the window to close" eval '! menu_window'
wait_for "the log line of the lock" in_log "keyboard lock: locked"
wait_for "an overlay on each monitor" two_overlays
sleep 1.5
shot locked

step "type while locked"
presses=$(key_presses)
xdotool type --delay 50 secret
xdotool key ctrl+q
seen=$(tap_keyboard)
[ "$seen" = 0 ] || fail "a plain reader of the USB keyboard saw $seen key events while locked"
[ "$(key_presses)" = "$presses" ] || fail "xev got $(($(key_presses) - presses)) key presses while locked"
kill -0 "$tolvane_pid" || fail "tolvane ended while locked"
two_overlays || fail "the overlays changed while typing: $(overlays | tr '\n' ' ')"

step "click Unlock keyboard on the right monitor"
click_cyan "unlock button on the right monitor" $width $((height / 2 + 50)) $width $((height / 2 - 50))
wait_for "the log line of the unlock" in_log "keyboard lock: unlocked"
# shellcheck disable=SC2016 # expanded by eval, on each try
wait_for "both overlays to go" eval '[ -z "$(overlays)" ]'
seen=$(tap_keyboard)
[ "$seen" = 12 ] || fail "a plain reader of the USB keyboard saw $seen of 12 key events after the unlock"

step "type after the unlock"
presses=$(key_presses)
xdotool windowfocus --sync "$xev_window"
xdotool type --delay 50 abc
wait_for "xev's key presses again" sh -c "[ \$(grep -c '^KeyPress event' /tmp/xev.log) -ge $((presses + 3)) ]"
kill -0 "$tolvane_pid" || fail "tolvane ended"

echo "TOLVANE-LOG-BEGIN"
cat "$log"
echo "TOLVANE-LOG-END"
kill "$tolvane_pid"
step "done"
