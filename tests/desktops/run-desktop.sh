#!/bin/bash
# The real tolvane binary on a real desktop shell, started headless in a session of its own
# (session-lib.sh), doing what a new user does; each step says what it checks.
#
#   run-desktop.sh DESKTOP TOLVANE PROBE SCREENSHOT_DIR
#
# DESKTOP is one of the case below (CMakeLists.txt says what each is); PROBE is
# tolvane_desktop_probe. Screenshots and logs of a failed run stay in SCREENSHOT_DIR, of every
# run with TOLVANE_KEEP_SCREENSHOTS=1.
set -euo pipefail
desktop=$1 tolvane=$2 probe=$3 shots=$4
here=$(cd "$(dirname "$0")" && pwd)
source "$here/session-lib.sh"

# What each desktop is: its session, panel (edge and height) and what a left and a right
# click on the icon open: the rich menu, the host-drawn menu, or nothing to check.
session=x11 edge=top panel_height=32 left=host right=none
case $desktop in
trayer) panel_height=28 left=rich right=rich ;;
gnome-appindicator) ;;
gnome) left=none ;;
gnome-wayland) session=wayland ;;
gnome-wayland-no-tray) session=wayland left=none ;;
xfce) panel_height=28 left=rich right=host ;;
plasma | plasma-wayland) edge=bottom panel_height=44 left=rich ;;
*) echo "unknown desktop $desktop" >&2 && exit 2 ;;
esac
width=1280 height=800 panel_y=0
[[ $edge == top ]] || panel_y=$((height - panel_height))
# The part of the screen the panel takes, and the rest, as ImageMagick geometry.
panel_area="${width}x${panel_height}+0+${panel_y}"
screen_area="${width}x$((height - panel_height))+0+$((panel_y ? 0 : panel_height))"

if [[ "${TOLVANE_INSIDE_SESSION:-}" != 1 ]]; then
    work=$(mktemp -d /tmp/tolvane-desktops.XXXXXX)
    status=0
    run_in_session "$0" "$@" || status=$?
    rm -rf "$work" || true # a late client of the bus may still be making runtime/pulse
    exit $status
fi
enter_session
declare -A accent

# choose_host_item LABEL: the open host-drawn menu closed, its entry LABEL chosen through
# the click event its host sends.
choose_host_item() {
    key Escape
    ask items "$1" || fail "no enabled item '$1' in the host-drawn menu"
}

# open_by_click BUTTON FORM: the icon clicked, FORM's menu shown; a host-drawn menu's
# "Open Tolvane" must then open the rich menu.
open_by_click() {
    pointer_to "$icon_x" "$icon_y"
    shot closed >/dev/null
    click "$1"
    wait_menu "$2" "click $1"
    # Beside the panel, where a window manager says where the panel is (trayer has none).
    read -r w h x y <<<"$menu_box"
    [[ $2 != rich || $desktop == trayer ]] || ((y >= panel_y + panel_height || y + h <= panel_y)) ||
        fail "the rich menu ${w}x${h} at $x,$y covers the panel"
    # Under Wayland it is seen above the panel only: running over it, it would reach it; placed
    # by the compositor, it would stand off it. Only a build with LayerShellQt lays it there.
    [[ $2 != rich || $desktop != plasma-wayland || -z ${TOLVANE_MENU_ON_EDGE:-} ]] ||
        ((y + h < panel_y && y + h >= panel_y - 16)) ||
        fail "the rich menu ${w}x${h} at $x,$y is not just above the panel"
    if [[ $2 == host && ${3:-} == open ]]; then
        shot closed >/dev/null
        choose_host_item "Open Tolvane"
        wait_menu rich "Open Tolvane"
    fi
}

# spawn COMMAND...: a part of the desktop, in the background, logging to desktop.log.
spawn() {
    "$@" >>"$work/desktop.log" 2>&1 &
    pids+=($!)
}

start_desktop() {
    step "start $desktop"
    # Tolvane's icons where its package puts them, in the user's own share of the icon theme.
    local icons=$XDG_DATA_HOME/icons/hicolor data
    data=$(dirname "$0")/../../data/icons
    mkdir -p "$icons/scalable/status" "$icons/symbolic/apps"
    cp "$data/tolvane.svg" "$icons/scalable/status/tolvane-mouse.svg"
    cp "$data/tolvane-symbolic.svg" "$icons/symbolic/apps/"
    gsettings set org.gnome.desktop.interface enable-hot-corners false 2>/dev/null || true
    case $desktop in
    trayer) start_trayer ;;
    gnome*)
        export XDG_CURRENT_DESKTOP=GNOME
        if [[ $left != none ]]; then
            gsettings set org.gnome.shell enabled-extensions "['ubuntu-appindicators@ubuntu.com']"
            gsettings set org.gnome.shell disable-user-extensions false
        fi
        if [[ $session == x11 ]]; then
            spawn gnome-shell --x11 --sm-disable
        else
            export WAYLAND_DISPLAY=tolvane-wayland
            spawn env LIBGL_ALWAYS_SOFTWARE=1 gnome-shell --headless --wayland --no-x11 \
                --wayland-display "$WAYLAND_DISPLAY" --virtual-monitor "${width}x${height}"
        fi
        patience=30 wait_for "GNOME Shell" grep -q "GNOME Shell started" "$work/desktop.log"
        [[ $session == x11 ]] || start_probe --screenshot-name
        sleep 1
        key Escape # out of the Activities overview
        ;;
    xfce)
        local conf=$XDG_CONFIG_HOME/xfce4/xfconf/xfce-perchannel-xml
        mkdir -p "$conf"
        cp "$(dirname "$0")/xfce4-panel.xml" "$conf/"
        export XDG_CURRENT_DESKTOP=XFCE
        spawn xfwm4
        spawn xfce4-panel
        ;;
    plasma*)
        export XDG_CURRENT_DESKTOP=KDE
        # kded first, without its configuration updates (a minute on a new HOME), and its tray
        # watcher loaded, as a Plasma session's start does; plasmashell came up without it here.
        # Plasma 5's is kded5, Plasma 6's kded6, each with a bus name and config of its own.
        local kded=kded5
        command -v kded6 >/dev/null && kded=kded6
        mkdir -p "$XDG_CONFIG_HOME"
        printf '[General]\nCheckUpdates=false\n' >"$XDG_CONFIG_HOME/${kded}rc"
        spawn "$kded"
        patience=30 wait_for "$kded" gdbus call --session --dest "org.kde.$kded" --object-path /kded \
            --method "org.kde.$kded.loadModule" statusnotifierwatcher
        if [[ $desktop == plasma ]]; then
            spawn kwin_x11
        else
            # KWin's Wayland session in a window of the X server, which the X11 tools drive
            # and photograph; Plasma and Tolvane are its Wayland clients.
            # Debian 12 gives kwin_wayland a capability that a container may not grant; through
            # the loader it starts without, and then needs telling that it is KWin.
            local kwin=(kwin_wayland)
            kwin_wayland --help >/dev/null 2>&1 ||
                kwin=(env KWIN_FORCE_OWN_QPA=1 /lib64/ld-linux-x86-64.so.2 "$(command -v kwin_wayland)")
            export WAYLAND_DISPLAY=tolvane-wayland QT_QPA_PLATFORM=wayland XDG_SESSION_TYPE=wayland
            spawn "${kwin[@]}" --x11-display "$DISPLAY" --width "$width" --height "$height" \
                --socket "$WAYLAND_DISPLAY" --no-lockscreen
            wait_for "KWin" test -S "$XDG_RUNTIME_DIR/$WAYLAND_DISPLAY"
        fi
        spawn plasmashell
        ;;
    esac
    [[ $session == wayland ]] || start_probe
    [[ $left == none || $desktop == trayer ]] || patience=60 wait_for "a tray host" ask items
    # The panel is drawn when two screenshots a second apart agree on it.
    local tries=0
    shot panel-a >/dev/null
    until sleep 1 && shot panel-b >/dev/null && ! changed panel-a panel-b "$panel_area" >/dev/null &&
        [[ $(convert "$work/panel-b.$ext" -crop "$panel_area" -format '%[fx:maxima>0]' info:) == 1 ]]; do
        mv "$work/panel-b.$ext" "$work/panel-a.$ext"
        ((++tries < 30)) || fail "the panel never settled"
    done
    echo "    [$(seconds)s] the panel is drawn"
}

# The icon is where the panel changed; its contrast is the WCAG ratio of its most distinct
# pixel against the panel's own pixels there.
find_icon() {
    step "find the icon"
    local box background low high contrast
    for _ in $(seq 20); do
        shot after >/dev/null
        changed before after "$panel_area" >/dev/null && break
        sleep 0.5
    done
    # Neighbours may shift by a pixel: the icon is the run of changed columns that changed most.
    read -r from to < <(convert "$work/before.$ext" "$work/after.$ext" -crop "$panel_area" +repage \
        -compose difference -composite -colorspace gray -threshold 4% -scale "${width}x1!" -depth 16 \
        txt:- | awk -F'[,:() ]+' 'BEGIN {last = -10} NR > 1 && $3 > 0 {if ($1 - last > 3) {start = $1;
            sum = 0} sum += $3; last = $1; if (sum > best) {best = sum; from = start; to = $1}}
            END {print from, to}')
    box=$(changed before after "$((to - from + 1))x${panel_height}+${from}+$panel_y") ||
        fail "nothing new in the panel: no icon"
    read -r w h x y <<<"$box"
    ((w <= 64 && h <= 64)) || fail "the panel changed in ${w}x${h} at $x,$y, more than an icon"
    icon_x=$((x + w / 2)) icon_y=$((y + h / 2)) icon_box="${w}x${h}+${x}+${y}"
    read -r background _ _ _ low high < <(convert "$work/before.$ext" "$work/after.$ext" -crop \
        "$icon_box" -colorspace LinearGray -format '%[fx:mean] %[fx:minima] %[fx:maxima] ' info:; echo)
    contrast=$(awk -v b="$background" -v l="$low" -v h="$high" 'BEGIN {d = (b + 0.05) / (l + 0.05);
        u = (h + 0.05) / (b + 0.05); printf "%.2f", (d > u ? d : u)}')
    echo "    icon ${w}x${h} at $x,$y: contrast $contrast:1"
    awk -v c="$contrast" 'BEGIN{exit !(c >= 3)}' || fail "icon contrast $contrast:1 is below 3:1"
}

# What a screen reader gets of the open rich menu through AT-SPI.
check_accessible_menu() {
    step "the rich menu through AT-SPI"
    local before
    before=$(wc -l <"$work/probe.log")
    ask accessible tolvane || fail "Tolvane is not among AT-SPI's programs"
    tail -n +$((before + 1)) "$work/probe.log" | sed -E 's/[0-9]+(\.[0-9]+)?/N/g' >"$work/accessible.log"
    local line
    for line in '>> label "This desktop shows no tray icons.' '>> label "Tolvane"' \
        '>>> progress bar "CPU N percent, N cores"' '>>> progress bar "Memory N percent, N GB / N GB"' \
        '>>> progress bar "Storage N percent, N GB free"' '>> push button "Clean Keyboard"' \
        '>> menu item "Switch to Mouse scrolling"' '>> menu item "Quit Tolvane"'; do
        grep -qF -- "$line" "$work/accessible.log" || fail "no '$line' through AT-SPI"
    done
}

# The window minimised, as by its title bar; it stays, and a second start must bring it back.
minimise_window() {
    if [[ $session == x11 ]]; then xdotool windowminimize --sync "$(rich_window | cut -d' ' -f1)"; else key super+h; fi
    wait_for "the window minimised" eval '! menu_shown rich'
}

choose_auto_switch() {
    step "choose Auto-switch when mouse connects in the $1 menu"
    local lines
    lines=$(wc -l <"$log")
    if [[ $1 == rich ]]; then choose_rich_item 3; else choose_host_item "Auto-switch when mouse connects"; fi
    wait_for "the setting autoEnabled=false" grep -qx 'autoEnabled=false' "$settings"
    wait_for "its log line" eval "tail -n +$((lines + 1)) '$log' | grep -q 'applyInversion mode=trackpad'"
}

start_desktop
# The panel's clock must not change while the icon is looked for.
while [[ $desktop == gnome* || $desktop == plasma* ]] && (($(date +%-S) > 30)); do sleep 1; done
shot before >/dev/null
if [[ $left == none ]]; then # as a screen reader asks every program for its elements
    gdbus call --session --dest org.a11y.Bus --object-path /org/a11y/bus --method \
        org.freedesktop.DBus.Properties.Set org.a11y.Status IsEnabled '<true>' >/dev/null
fi
start_tolvane
if [[ $left == none ]]; then
    step "the window of a desktop without a tray"
    cp "$work/before.$ext" "$work/closed.$ext"
    patience=15 wait_menu rich "start"
    check_accessible_menu
    [[ $session != x11 ]] || xdotool windowactivate --sync "$(rich_window | cut -d' ' -f1)"
    choose_auto_switch rich
    wait_for "the window again" menu_shown rich
    minimise_window
else
    find_icon
    step "left click, twice"
    open_by_click 1 "$left" open
    key Escape && sleep 0.5 # closed, and its fade over
    open_by_click 1 "$left"
    choose_auto_switch "$left"
    if [[ $right != none ]]; then
        step "right click"
        open_by_click 3 "$right" open
        key Escape && sleep 0.5
    fi
fi
sleep 0.5
step "start Tolvane again, and press Ctrl+T in its menu"
open_again
check_rich_rows
key ctrl+t
wait_for "the setting mode=mouse" grep -qx 'mode=mouse' "$settings"
wait_for "its log line" grep -q 'applyInversion mode=mouse' "$log"
if [[ $left != none ]]; then
    # The icon takes the accent colour in the mouse mode, and only then.
    sleep 1
    shot mouse >/dev/null
    for mode in after mouse; do
        convert "$work/$mode.$ext" -crop "$icon_box" +repage "$work/icon-$mode.png"
        accent[$mode]=$(count_colour "$work/icon-$mode.png" 'rgb(59,91,255)' 12)
    done
    ((accent[after] == 0 && accent[mouse] >= 10)) ||
        fail "accent pixels of the icon: ${accent[after]} before Ctrl+T, ${accent[mouse]} after"
fi
if [[ $desktop == gnome-wayland ]]; then
    # Mutter puts black behind a full-screen window that lets it through: there the cleaning
    # overlay is dark, not see-through (README). A plain window shows it is the compositor.
    step "a half-black window over a green one, in a window and full-screen"
    seen() { shot "cover-$form" && (($(count_colour "$work/cover-$form.$ext" "$1" 10) > $2)); }
    for form in window fullscreen; do
        "$(dirname "$probe")/tolvane_translucent_cover" "$form" &
        wait_for "the green window" seen 'rgb(0,255,0)' 100000
        if [[ $form == window ]]; then
            wait_for "green through the window" seen 'rgb(0,128,0)' 100000
        else
            wait_for "the full-screen window" eval '! seen "rgb(0,255,0)" 0'
            ! seen 'rgb(0,128,0)' 0 || fail "the compositor let green through a full-screen window"
        fi
        kill $!
        wait $! 2>/dev/null || true
    done
fi
[[ $left != none ]] || minimise_window # a choice brings it back
quit_from_menu
echo "PASS ($desktop)"
