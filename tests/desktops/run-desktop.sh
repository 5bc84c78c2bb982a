#!/bin/bash
# The real tolvane binary on a real desktop shell, started headless in a session of its own:
# Xvfb or mutter's headless Wayland back end, a D-Bus session from dbus-run-session, an empty
# system bus, a temporary HOME. It checks what a new user meets: the tray icon stands out from
# its panel, every click opens Tolvane's menu in the form this desktop gets, a choice there is
# stored, and starting Tolvane again opens the menu of the one that runs.
#
#   run-desktop.sh DESKTOP TOLVANE PROBE SCREENSHOT_DIR
#
# DESKTOP is gnome-appindicator, gnome (no tray), gnome-wayland, xfce or plasma; PROBE is
# tolvane_desktop_probe. Screenshots and logs of a failed run stay in SCREENSHOT_DIR, of every
# run with TOLVANE_KEEP_SCREENSHOTS=1. Tolvane has no input access here: its alert is answered
# with Escape ("Later").
set -euo pipefail
desktop=$1 tolvane=$2 probe=$3 shots=$4

# What each desktop is: its session, panel (edge and height) and what a left and a right
# click on the icon open: the rich menu, the host-drawn menu, or nothing to check.
session=x11 edge=top panel_height=32 left=host right=none
case $desktop in
gnome-appindicator) ;;
gnome) left=none ;;
gnome-wayland) session=wayland ;;
xfce) panel_height=28 left=rich right=host ;;
plasma) edge=bottom panel_height=44 left=rich ;;
*) echo "unknown desktop $desktop" >&2 && exit 2 ;;
esac
width=1280 height=800 panel_y=0
[[ $edge == top ]] || panel_y=$((height - panel_height))
# The part of the screen the panel takes, and the rest, as ImageMagick geometry.
panel_area="${width}x${panel_height}+0+${panel_y}"
screen_area="${width}x$((height - panel_height))+0+$((panel_y ? 0 : panel_height))"
# Screenshots stay uncompressed while the test runs; only those kept become PNG.
ext=ppm
[[ $session == x11 ]] || ext=png

step() { echo "--- [${SECONDS}s] $*"; }
fail() {
    echo "FAIL ($desktop): $*" >&2
    exit 1
}
now_ms() { echo $(($(date +%s%N) / 1000000)); }

# wait_for DESCRIPTION COMMAND...: retries COMMAND for up to ten seconds (or $patience).
wait_for() {
    local what=$1 until=$((SECONDS + ${patience:-10}))
    shift
    until "$@" >/dev/null 2>&1; do
        ((SECONDS < until)) || fail "timed out waiting for $what"
        sleep 0.1
    done
    echo "    [${SECONDS}s] $what" >&2
}

if [[ "${TOLVANE_INSIDE_SESSION:-}" != 1 ]]; then
    work=$(mktemp -d /tmp/tolvane-desktops.XXXXXX)
    rm -rf "$shots"
    mkdir -p "$shots" "$work/home" "$work/runtime"
    chmod 700 "$work/runtime"
    # Set before the bus starts: the services it starts (dconf, xfconfd) get its environment.
    export HOME=$work/home XDG_CONFIG_HOME=$work/home/.config XDG_STATE_HOME=$work/home/.local/state
    export XDG_DATA_HOME=$work/home/.local/share XDG_CACHE_HOME=$work/home/.cache
    export XDG_RUNTIME_DIR=$work/runtime XDG_SESSION_TYPE=$session NO_AT_BRIDGE=1
    unset QT_QPA_PLATFORM QT_QPA_PLATFORMTHEME WAYLAND_DISPLAY XDG_CURRENT_DESKTOP
    # An empty system bus of its own: gnome-shell ends at once where logind's seats exist
    # but no system bus does, and nothing here may talk to the machine's own.
    dbus-daemon --session --address="unix:path=$work/system-bus" --nofork --nopidfile \
        >/dev/null 2>&1 &
    bus_pid=$!
    if [[ $session == x11 ]]; then
        Xvfb -displayfd 3 -screen 0 "${width}x${height}x24" -nolisten tcp 3>"$work/display" \
            2>"$work/xvfb.log" &
        xvfb_pid=$!
        wait_for "the X server" test -s "$work/display"
        DISPLAY=":$(head -n1 "$work/display")"
        export DISPLAY
    fi
    status=0
    TOLVANE_INSIDE_SESSION=1 TOLVANE_WORK="$work" DBUS_SYSTEM_BUS_ADDRESS="unix:path=$work/system-bus" \
        timeout 170 dbus-run-session -- "$0" "$@" || status=$?
    kill "${xvfb_pid:-}" "$bus_pid" 2>/dev/null || true
    if [[ $status -ne 0 || "${TOLVANE_KEEP_SCREENSHOTS:-}" == 1 ]]; then
        for image in "$work"/*.ppm; do convert "$image" "$shots/$(basename "${image%.*}").png"; done || true
        cp "$work"/*.png "$work"/*.log "$shots"/ 2>/dev/null || true
        echo "screenshots and logs: $shots"
    fi
    rm -rf "$work"
    exit $status
fi

# Inside the D-Bus session from here on.
work=$TOLVANE_WORK
settings=$XDG_CONFIG_HOME/Tolvane/Tolvane.conf
log=$XDG_STATE_HOME/Tolvane/Tolvane.log
pids=()

on_exit() {
    local status=$?
    if [[ $status -ne 0 ]]; then
        shot failure >/dev/null 2>&1 || true
        echo "--- tolvane's output:" >&2
        tail -n 30 "$work/tolvane.log" >&2 2>/dev/null || true
        cp "$log" "$work/Tolvane.log" 2>/dev/null || true
    fi
    kill "${pids[@]}" 2>/dev/null || true
    exit $status
}
trap on_exit EXIT

# The probe: one command a line in, answers ending in "ok" or "failed" out.
start_probe() {
    mkfifo "$work/probe-in"
    "$probe" "$@" <"$work/probe-in" >"$work/probe.log" 2>&1 &
    pids+=($!)
    exec 8>"$work/probe-in"
    wait_for "the probe" grep -q ready "$work/probe.log"
}
ask() {
    local before
    before=$(wc -l <"$work/probe.log")
    echo "$*" >&8
    while sleep 0.05; do
        case $(tail -n +$((before + 1)) "$work/probe.log" | grep -xE 'ok|failed' | head -n1) in
        ok) return 0 ;;
        failed) return 1 ;;
        esac
    done
}

# The screen, the pointer and the keyboard: X11 tools, or the probe on Wayland.
shot() { if [[ $session == x11 ]]; then import -window root "$work/$1.$ext"; else ask shot "$work/$1.$ext"; fi; }
pointer_to() {
    if [[ $session == x11 ]]; then xdotool mousemove "$1" "$2"; else ask move "$1" "$2"; fi
    sleep 0.2
}
click() { if [[ $session == x11 ]]; then xdotool click "$1"; else ask click "$1"; fi; }
key() {
    declare -A keysym=([Escape]=0xff1b [Up]=0xff52 [Down]=0xff54 [Return]=0xff0d)
    if [[ $session == x11 ]]; then xdotool key --clearmodifiers "$1"; else ask key "${keysym[$1]}"; fi
    sleep 0.1
}

# changed BEFORE AFTER AREA: "W H X Y" of what changed between two screenshots inside AREA,
# in screen coordinates; fails when nothing did.
changed() {
    local found area_x area_y
    found=$(convert "$work/$1.$ext" "$work/$2.$ext" -crop "$3" +repage -compose difference \
        -composite -colorspace gray -threshold 4% -format '%[fx:mean>0] %@' info: 2>/dev/null)
    [[ $found == 1* ]] || return 1
    IFS=+ read -r _ area_x area_y <<<"$3"
    awk -v a="$area_x" -v b="$area_y" '{split($2, g, /[x+]/); print g[1], g[2], g[3] + a, g[4] + b}' \
        <<<"$found"
}

# Windows of the first Tolvane at least 300x200, on X11: "ID W H X Y".
rich_window() {
    local id
    for id in $(xdotool search --onlyvisible --pid "$tolvane_pid" 2>/dev/null); do
        xwininfo -id "$id" | awk -v id="$id" '/Absolute upper-left X/{x=$NF} /Absolute upper-left Y/{y=$NF}
            /Width:/{w=$NF} /Height:/{h=$NF} END{if (w >= 300 && h >= 200) print id, w, h, x, y}'
    done | head -n1 | grep .
}

# menu_shown FORM: the rich menu as a window of Tolvane (on Wayland: a large change on the
# screen), or the host's menu as a change next to the panel; sets menu_box "W H X Y".
menu_shown() {
    if [[ $1 == rich && $session == x11 ]]; then
        menu_box=$(rich_window | cut -d' ' -f2-) && seen=$(now_ms)
    else
        shot now >/dev/null && seen=$(now_ms) && menu_box=$(changed closed now "$screen_area") || return 1
        read -r w h _ <<<"$menu_box"
        if [[ $1 == rich ]]; then ((w >= 300 && h >= 200)); else ((w >= 60 && h >= 40)); fi
    fi
}

# Prints when the menu came: after the last look that missed it began, before the look that
# saw it had its picture.
wait_menu() {
    local started missed=0 looked patience=5
    started=$(now_ms) looked=$started
    until menu_shown "$1"; do
        missed=$((looked - started)) looked=$(now_ms)
        ((looked - started < patience * 1000)) || fail "no $1 menu ($2)"
    done
    echo "    $2: $1 menu after $missed-$((seen - started)) ms"
}

# The rich menu's rows: the header's blue badge, the three gauges in their colours.
check_rich_rows() {
    sleep 1 # the first sample, and the rings' 0.6 s ease
    shot rich-menu-screen >/dev/null
    read -r w h x y <<<"$menu_box"
    convert "$work/rich-menu-screen.$ext" -crop "${w}x${h}+${x}+${y}" +repage "$work/rich-menu.png"
    local colour count
    for colour in 'rgb(59,91,255) 10 30' 'rgb(110,112,255) 12 10' 'rgb(47,203,147) 15 10' \
        'rgb(247,136,54) 15 10'; do
        read -r colour fuzz least <<<"$colour"
        count=$(convert "$work/rich-menu.png" -alpha off -fuzz "$fuzz%" -fill black +opaque "$colour" \
            -fill white -opaque "$colour" -colorspace gray -format '%[fx:round(mean*w*h)]' info:)
        ((count >= least)) || fail "rich menu ${w}x${h} at $x,$y: $count pixels of $colour"
    done
}

# choose_host_item LABEL: the open host-drawn menu closed, its entry LABEL chosen through
# the click event its host sends.
choose_host_item() {
    key Escape
    ask items "$1" || fail "no enabled item '$1' in the host-drawn menu"
}

# Keyboard choice of the rich menu's n-th item from the bottom (1 is Quit), pointer away.
choose_rich_item() {
    pointer_to 5 300
    for _ in $(seq "$1"); do key Up; done
    key Return
}

# open_by_click BUTTON FORM: the icon clicked, FORM's menu shown; a host-drawn menu's
# "Open Tolvane" must then open the rich menu.
open_by_click() {
    pointer_to "$icon_x" "$icon_y"
    shot closed >/dev/null
    click "$1"
    wait_menu "$2" "click $1"
    if [[ $2 == host && ${3:-} == open ]]; then
        shot closed >/dev/null
        choose_host_item "Open Tolvane"
        wait_menu rich "Open Tolvane"
    fi
}
close_menu() {
    key Escape
    sleep 0.5
}

start_desktop() {
    step "start $desktop"
    # Tolvane's icons where its package puts them, in the user's own share of the icon theme.
    local icons=$XDG_DATA_HOME/icons/hicolor data
    data=$(dirname "$0")/../../data/icons
    mkdir -p "$icons/scalable/apps" "$icons/symbolic/apps"
    cp "$data/tolvane.svg" "$icons/scalable/apps/"
    cp "$data/tolvane-symbolic.svg" "$icons/symbolic/apps/"
    gsettings set org.gnome.desktop.interface enable-hot-corners false 2>/dev/null || true
    case $desktop in
    gnome*)
        if [[ $desktop != gnome ]]; then
            gsettings set org.gnome.shell enabled-extensions "['ubuntu-appindicators@ubuntu.com']"
            gsettings set org.gnome.shell disable-user-extensions false
        fi
        export XDG_CURRENT_DESKTOP=GNOME
        if [[ $session == x11 ]]; then
            gnome-shell --x11 --sm-disable >"$work/desktop.log" 2>&1 &
        else
            export WAYLAND_DISPLAY=tolvane-wayland
            LIBGL_ALWAYS_SOFTWARE=1 gnome-shell --headless --wayland --no-x11 --wayland-display \
                "$WAYLAND_DISPLAY" --virtual-monitor "${width}x${height}" >"$work/desktop.log" 2>&1 &
        fi
        pids+=($!)
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
        xfwm4 >"$work/desktop.log" 2>&1 &
        pids+=($!)
        xfce4-panel >>"$work/desktop.log" 2>&1 &
        pids+=($!)
        ;;
    plasma)
        export XDG_CURRENT_DESKTOP=KDE
        # kded first, without its configuration updates (a minute on a new HOME), and its tray
        # watcher loaded, as a Plasma session's start does; plasmashell came up without it here.
        mkdir -p "$XDG_CONFIG_HOME"
        printf '[General]\nCheckUpdates=false\n' >"$XDG_CONFIG_HOME/kded5rc"
        kded5 >"$work/desktop.log" 2>&1 &
        pids+=($!)
        patience=30 wait_for "kded" gdbus call --session --dest org.kde.kded5 --object-path /kded \
            --method org.kde.kded5.loadModule statusnotifierwatcher
        kwin_x11 >>"$work/desktop.log" 2>&1 &
        pids+=($!)
        plasmashell >>"$work/desktop.log" 2>&1 &
        pids+=($!)
        ;;
    esac
    [[ $session == wayland ]] || start_probe
    if [[ $left != none ]]; then
        patience=60 wait_for "a tray host" ask items
    fi
    # The panel is drawn when two screenshots a second apart agree on it.
    local tries=0
    shot panel-a >/dev/null
    until sleep 1 && shot panel-b >/dev/null && ! changed panel-a panel-b "$panel_area" >/dev/null &&
        [[ $(convert "$work/panel-b.$ext" -crop "$panel_area" -format '%[fx:maxima>0]' info:) == 1 ]]; do
        mv "$work/panel-b.$ext" "$work/panel-a.$ext"
        ((++tries < 30)) || fail "the panel never settled"
    done
    echo "    [${SECONDS}s] the panel is drawn"
}

start_tolvane() {
    step "start $tolvane"
    # The panel's clock must not change while the icon is looked for.
    while [[ $desktop != xfce ]] && (($(date +%-S) > 30)); do sleep 1; done
    shot before >/dev/null
    "$tolvane" >"$work/tolvane.log" 2>&1 &
    tolvane_pid=$!
    pids+=("$tolvane_pid")
    wait_for "the launch" grep -q "=== launch" "$log"
    sleep 1.5
    if [[ $session == x11 ]]; then
        local alert
        alert=$(xdotool search --onlyvisible --pid "$tolvane_pid" --name '^Tolvane$' | head -n1) ||
            true
        [[ -n $alert ]] && xdotool windowactivate --sync "$alert" 2>/dev/null
    fi
    key Escape # the input access alert: Later
    sleep 1
}

# The icon is where the panel changed; its contrast is the WCAG ratio of its most distinct
# pixel against the panel's own pixels there.
find_icon() {
    step "find the icon"
    local box contrast
    for _ in $(seq 20); do
        shot after >/dev/null
        box=$(changed before after "$panel_area") && break
        sleep 0.5
    done
    [[ -n $box ]] || fail "nothing new in the panel: no icon"
    # Neighbours may shift by a pixel: the icon is the run of changed columns that changed most.
    local columns
    columns=$(convert "$work/before.$ext" "$work/after.$ext" -crop "$panel_area" +repage -compose \
        difference -composite -colorspace gray -threshold 4% -scale "${width}x1!" -depth 16 txt:- |
        awk -F'[,:() ]+' 'BEGIN {last = -10} NR > 1 && $3 > 0 {if ($1 - last > 3) {start = $1; sum = 0}
            sum += $3; last = $1; if (sum > best) {best = sum; from = start; to = $1}}
            END {print from, to}')
    read -r from to <<<"$columns"
    box=$(changed before after "$((to - from + 1))x${panel_height}+${from}+$panel_y") ||
        fail "no icon in columns $from-$to"
    read -r w h x y <<<"$box"
    ((w <= 64 && h <= 64)) || fail "the panel changed in ${w}x${h} at $x,$y, more than an icon"
    icon_x=$((x + w / 2)) icon_y=$((y + h / 2))
    local background extremes
    background=$(convert "$work/before.$ext" -crop "${w}x${h}+${x}+${y}" -colorspace LinearGray \
        -format '%[fx:mean]' info:)
    extremes=$(convert "$work/after.$ext" -crop "${w}x${h}+${x}+${y}" -colorspace LinearGray \
        -format '%[fx:minima] %[fx:maxima]' info:)
    contrast=$(awk -v b="$background" '{d = (b + 0.05) / ($1 + 0.05); l = ($2 + 0.05) / (b + 0.05);
        printf "%.2f", (d > l ? d : l)}' <<<"$extremes")
    echo "    icon ${w}x${h} at $x,$y: contrast $contrast:1"
    awk -v c="$contrast" 'BEGIN{exit !(c >= 3)}' || fail "icon contrast $contrast:1 is below 3:1"
}

choose_auto_switch() {
    step "choose Auto-switch when mouse connects in the $1 menu"
    if [[ $1 == rich ]]; then choose_rich_item 3; else choose_host_item "Auto-switch when mouse connects"; fi
    wait_for "the setting autoEnabled=false" grep -qx 'autoEnabled=false' "$settings"
}

start_desktop
start_tolvane
if [[ $left == none ]]; then
    step "the window of a desktop without a tray"
    patience=15 wait_for "the window 'Tolvane'" rich_window
    menu_box=$(rich_window | cut -d' ' -f2-)
    check_rich_rows
    xdotool windowactivate --sync "$(rich_window | cut -d' ' -f1)"
    choose_auto_switch rich
    wait_for "the window again" rich_window
    xdotool windowactivate --sync "$(rich_window | cut -d' ' -f1)" key Escape
    wait_for "the window to close" eval '! rich_window'

else
    find_icon
    step "left click, twice"
    open_by_click 1 "$left" open
    check_rich_rows
    close_menu
    open_by_click 1 "$left"
    choose_auto_switch "$left"
    if [[ $right != none ]]; then
        step "right click"
        open_by_click 3 "$right" open
        close_menu
    fi
fi
sleep 0.5
step "start Tolvane again"
shot closed >/dev/null
timeout 10 "$tolvane" >"$work/second-start.log" 2>&1 || fail "the second start ended with status $?"
wait_menu rich "second start"
check_rich_rows
echo "PASS ($desktop)"
