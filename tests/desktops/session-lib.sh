# shellcheck shell=bash disable=SC2154
# A desktop session of its own for the real tolvane binary, and the ways to drive it: used by
# run-desktop.sh, the package tier's install-upgrade-purge.sh and the idle-cost benchmark. Sourced,
# not run. The caller sets `work` (an empty folder), `session` (x11 or wayland), `width` and
# `height`, and optionally `shots` (where a failed run's screenshots and logs go), then:
#   [[ ${TOLVANE_INSIDE_SESSION:-} == 1 ]] || { run_in_session "$0" "$@"; exit; }
#   enter_session
# X11 is driven with xdotool, and so is KWin's Wayland session, which runs in a window of the
# X server; GNOME Shell's Wayland with tolvane_desktop_probe (start_probe). Tolvane has no
# input access in these sessions.

# shellcheck source=../script-steps.sh
source "$(dirname "${BASH_SOURCE[0]}")/../script-steps.sh"
failing=${desktop:-}
now_ms() { echo $(($(date +%s%N) / 1000000)); }

# run_in_session COMMAND...: COMMAND with HOME and the XDG folders in $work, an empty system
# bus of its own (gnome-shell ends at once where logind's seats exist but no system bus does,
# and nothing here may talk to the machine's own), Xvfb on x11, and a D-Bus session bus.
# Returns COMMAND's status.
run_in_session() {
    [[ -z ${shots:-} ]] || rm -rf "$shots"
    mkdir -p "$work/home" "$work/runtime"
    chmod 700 "$work/runtime"
    # Set before the bus starts: the services it starts (dconf, xfconfd) get its environment.
    export HOME=$work/home XDG_CONFIG_HOME=$work/home/.config XDG_STATE_HOME=$work/home/.local/state
    export XDG_DATA_HOME=$work/home/.local/share XDG_CACHE_HOME=$work/home/.cache
    export XDG_RUNTIME_DIR=$work/runtime XDG_SESSION_TYPE=$session NO_AT_BRIDGE=1
    unset QT_QPA_PLATFORM QT_QPA_PLATFORMTHEME WAYLAND_DISPLAY XDG_CURRENT_DESKTOP
    rm -f "$work/system-bus"
    dbus-daemon --session --address="unix:path=$work/system-bus" --nofork --nopidfile \
        >/dev/null 2>&1 &
    local outer status=0 image
    outer=($!)
    if [[ $session == x11 ]]; then
        rm -f "$work/display"
        Xvfb -displayfd 3 -screen 0 "${width}x${height}x24" -nolisten tcp 3>"$work/display" \
            2>"$work/xvfb.log" &
        outer+=($!)
        wait_for "the X server" test -s "$work/display"
        DISPLAY=":$(head -n1 "$work/display")"
        export DISPLAY
    fi
    TOLVANE_INSIDE_SESSION=1 TOLVANE_WORK="$work" DBUS_SYSTEM_BUS_ADDRESS="unix:path=$work/system-bus" \
        timeout 170 dbus-run-session -- "$@" || status=$?
    kill "${outer[@]}" 2>/dev/null || true
    wait "${outer[@]}" 2>/dev/null || true
    if [[ -n ${shots:-} && ($status -ne 0 || ${TOLVANE_KEEP_SCREENSHOTS:-} == 1) ]]; then
        mkdir -p "$shots"
        for image in "$work"/*.ppm; do convert "$image" "$shots/$(basename "${image%.*}").png"; done || true
        cp "$work"/*.png "$work"/*.log "$shots"/ 2>/dev/null || true
        echo "screenshots and logs: $shots"
    fi
    return $status
}

# Inside the session: where Tolvane keeps its files, and everything started with `pids+=`
# ended on the way out.
enter_session() {
    work=$TOLVANE_WORK
    # shellcheck disable=SC2034 # read by the scripts that source this file
    settings=$XDG_CONFIG_HOME/Tolvane/Tolvane.conf
    log=$XDG_STATE_HOME/Tolvane/Tolvane.log
    # Screenshots stay uncompressed while the test runs; only those kept become PNG.
    ext=ppm
    [[ $session == x11 ]] || ext=png
    pids=()
    trap on_exit EXIT
}
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

# The screen, the pointer and the keyboard: X11 tools, or the probe on Wayland. A key may be
# a chord, as ctrl+t.
shot() { if [[ $session == x11 ]]; then import -window root "$work/$1.$ext"; else ask shot "$work/$1.$ext"; fi; }
pointer_to() {
    if [[ $session == x11 ]]; then xdotool mousemove "$1" "$2"; else ask move "$1" "$2"; fi
    sleep 0.2
}
click() { if [[ $session == x11 ]]; then xdotool click "$1"; else ask click "$1"; fi; }
key() {
    declare -A keysym=([Escape]=0xff1b [Up]=0xff52 [Return]=0xff0d [ctrl]=0xffe3 [t]=0x74 [super]=0xffeb
        [h]=0x68)
    if [[ $session == x11 ]]; then
        xdotool key --clearmodifiers "$1"
    else
        local name syms=()
        for name in ${1//+/ }; do syms+=("${keysym[$name]}"); done
        ask key "${syms[@]}"
    fi
    sleep 0.1
}

# start_tolvane [LAUNCHER...]: the program started, its launch logged, its input access alert
# answered with Escape ("Later") or with $alert_key.
start_tolvane() {
    step "start $tolvane"
    local launches
    launches=$(grep -c '=== launch' "$log" 2>/dev/null) || launches=0
    "$@" "$tolvane" >"$work/tolvane.log" 2>&1 &
    tolvane_pid=$!
    pids+=("$tolvane_pid")
    wait_for "the launch" eval "[[ \$(grep -c '=== launch' '$log') -gt $launches ]]"
    sleep 1.5
    if [[ $session == x11 ]]; then
        local alert
        alert=$(xdotool search --onlyvisible --pid "$tolvane_pid" --name '^Tolvane$' | head -n1) ||
            true
        # Where no window manager activates windows, the focus alone.
        [[ -z $alert ]] || xdotool windowactivate --sync "$alert" 2>/dev/null ||
            xdotool windowfocus --sync "$alert"
    fi
    key "${alert_key:-Escape}"
    sleep 1
}

# trayer, an XEmbed tray, along the top edge; it now and then dies at once on a server that
# has just started, so it gets three tries.
start_trayer() {
    for _ in 1 2 3; do
        trayer --edge top --widthtype percent --width 100 --height 28 --SetDockType true \
            --transparent false --tint 0xdddddd >"$work/trayer.log" 2>&1 &
        pids+=($!)
        for _ in $(seq 50); do
            xdotool search --classname trayer >/dev/null 2>&1 && return
            sleep 0.1
        done
    done
    fail "trayer never showed its panel: $(tail -n3 "$work/trayer.log")"
}

# Windows of the first Tolvane at least 300x200, on X11, not minimised: "ID W H X Y".
rich_window() {
    local id
    for id in $(xdotool search --onlyvisible --pid "$tolvane_pid" 2>/dev/null); do
        ! xprop -id "$id" _NET_WM_STATE | grep -q HIDDEN || continue # minimised
        xwininfo -id "$id" | awk -v id="$id" '/Absolute upper-left X/{x=$NF} /Absolute upper-left Y/{y=$NF}
            /Width:/{w=$NF} /Height:/{h=$NF} END{if (w >= 300 && h >= 200) print id, w, h, x, y}'
    done | head -n1 | grep .
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

# menu_shown FORM: the rich menu as a window of Tolvane (on Wayland: a large change on the
# screen since the shot "closed"), or the host's menu as a change outside the panel
# ($screen_area); sets menu_box "W H X Y".
menu_shown() {
    if [[ $1 == rich && -z ${WAYLAND_DISPLAY:-} ]]; then
        menu_box=$(rich_window | cut -d' ' -f2-) && seen=$(now_ms)
    else
        shot now >/dev/null && seen=$(now_ms) &&
            menu_box=$(changed closed now "${screen_area:-${width}x${height}+0+0}") || return 1
        read -r w h _ <<<"$menu_box"
        if [[ $1 == rich ]]; then ((w >= 300 && h >= 200)); else ((w >= 60 && h >= 40)); fi
    fi
}

# wait_menu FORM WHY: prints when the menu came: after the last look that missed it began,
# before the look that saw it had its picture.
wait_menu() {
    local started missed=0 looked patience=${patience:-5}
    started=$(now_ms) looked=$started
    until menu_shown "$1"; do
        missed=$((looked - started)) looked=$(now_ms)
        ((looked - started < patience * 1000)) || fail "no $1 menu ($2)"
    done
    echo "    $2: $1 menu after $missed-$((seen - started)) ms"
}

# count_colour FILE COLOUR FUZZ: pixels of FILE within FUZZ percent of COLOUR (not black).
count_colour() {
    convert "$1" -alpha off -fuzz "$3%" -fill black +opaque "$2" -fill white -opaque "$2" \
        -colorspace gray -format '%[fx:round(mean*w*h)]' info: | awk '{printf "%d", $1}' # not 1e+06
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
        count=$(count_colour "$work/rich-menu.png" "$colour" "$fuzz")
        ((count >= least)) || fail "rich menu ${w}x${h} at $x,$y: $count pixels of $colour"
    done
}

# Keyboard choice of the rich menu's n-th item from the bottom (1 is Quit), with the pointer
# on the other half of the screen than the menu ($menu_box), so that it is over no item.
choose_rich_item() {
    local menu_x
    read -r _ _ menu_x _ <<<"${menu_box:-0 0 0 0}"
    pointer_to $((menu_x > width / 2 ? 5 : width - 5)) $((height / 2))
    for _ in $(seq "$1"); do key Up; done
    key Return
}

# open_again: the rich menu of the running Tolvane, opened by starting it a second time.
open_again() {
    shot closed >/dev/null
    timeout 10 "$tolvane" >"$work/second-start.log" 2>&1 || fail "the second start ended with status $?"
    wait_menu rich "${1:-second start}"
}

# Quit from the rich menu: the process must end, with status 0.
quit_from_menu() {
    step "quit from the menu"
    open_again quit
    choose_rich_item 1
    wait_for "the process to end" eval "! kill -0 $tolvane_pid"
    wait "$tolvane_pid" || fail "tolvane ended with status $?"
}
