#!/bin/bash
# Runs the overlay's scale test on an Xvfb of its own with two monitors of 1200x720 side by
# side, at one scale:
#
#   run-overlay-scale.sh TEST factor=F | dpi=D | screens=F1,F2
#
# factor sets QT_SCALE_FACTOR, dpi the X resource Xft.dpi (as desktops set it), screens a
# factor for each monitor (QT_SCREEN_SCALE_FACTORS).
set -euo pipefail
test_binary=$1 scale=$2
# shellcheck source=../script-steps.sh
source "$(dirname "$0")/../script-steps.sh"
work=$(mktemp -d)
Xvfb -displayfd 3 -screen 0 2400x720x24 -noreset -nolisten tcp 3>"$work/display" \
    >"$work/xvfb.log" 2>&1 &
xvfb=$!
trap 'kill $xvfb; rm -rf "$work"' EXIT
wait_for "Xvfb" test -s "$work/display"
DISPLAY=:$(head -n 1 "$work/display")
export DISPLAY
# The first monitor takes the server's one output, so that the server drops the monitor it
# would otherwise keep over the whole framebuffer.
xrandr --setmonitor left 1200/300x720/180+0+0 screen >/dev/null
xrandr --setmonitor right 1200/300x720/180+1200+0 none >/dev/null
case $scale in
factor=*) export QT_SCALE_FACTOR=${scale#factor=} ;;
dpi=*) echo "Xft.dpi: ${scale#dpi=}" | xrdb -merge ;;
screens=*) export QT_SCREEN_SCALE_FACTORS=${scale#screens=} && QT_SCREEN_SCALE_FACTORS=${QT_SCREEN_SCALE_FACTORS//,/;} ;;
*) echo "unknown scale $scale" && exit 2 ;;
esac
export QT_QPA_PLATFORM=xcb HOME=$work XDG_RUNTIME_DIR=$work XDG_CONFIG_HOME=$work/config \
    XDG_STATE_HOME=$work/state
"$test_binary"
