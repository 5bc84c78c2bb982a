# Helpers of run-tray-session.sh: the X server, the tray hosts, Tolvane's windows, the menu,
# screenshots and colour counts. Sourced, not run.

step() { echo "--- [${SECONDS}s] $*"; }

shot() {
    import -window root "$work/$1.png" 2>/dev/null || true
    echo "$work/$1.png"
}

fail() {
    echo "FAIL: $*" >&2
    shot failure >/dev/null
    exit 1
}

# wait_for DESCRIPTION COMMAND...: retries COMMAND for up to ten seconds.
wait_for() {
    local what=$1
    shift
    for _ in $(seq 100); do
        if "$@" >/dev/null 2>&1; then
            echo "    [${SECONDS}s] $what" >&2
            return 0
        fi
        sleep 0.1
    done
    fail "timed out waiting for $what"
}

install_missing_tools() {
    local missing="" pair
    for pair in Xvfb:xvfb xdotool:xdotool xwininfo:x11-utils trayer:trayer import:imagemagick \
        compare:imagemagick dbus-run-session:dbus-daemon; do
        command -v "${pair%%:*}" >/dev/null || missing="$missing ${pair#*:}"
    done
    [[ -e /usr/share/fonts/truetype/dejavu/DejaVuSans.ttf ]] || missing="$missing fonts-dejavu-core"
    [[ -z $missing ]] && return 0
    local as_root=""
    if [[ $(id -u) -ne 0 ]]; then
        sudo -n true 2>/dev/null || fail "desktop tier needs:$missing (apt-get install them)"
        as_root="sudo -n"
    fi
    echo "installing:$missing"
    $as_root apt-get update -qq
    # shellcheck disable=SC2086
    DEBIAN_FRONTEND=noninteractive $as_root apt-get install -y -qq --no-install-recommends $missing
}

start_x_server() {
    Xvfb -displayfd 3 -screen 0 1280x800x24 -nolisten tcp 3>"$1/display" 2>"$1/xvfb.log" &
    xvfb_pid=$!
    work=$1
    wait_for "the X server" test -s "$1/display"
    export DISPLAY=":$(head -n1 "$1/display")"
}

stop_x_server() {
    kill "$xvfb_pid" 2>/dev/null || true
    wait "$xvfb_pid" 2>/dev/null || true
}

start_tray_host() {
    if [[ $1 == xembed ]]; then
        step "start trayer, an XEmbed tray"
        # trayer now and then dies at once on a server that has just started; it gets three tries.
        local attempt
        for attempt in 1 2 3; do
            trayer --edge top --align right --widthtype request --height 28 --SetDockType true \
                --transparent false --tint 0xdddddd >"$work/trayer.log" 2>&1 &
            host_pid=$!
            for _ in $(seq 50); do
                if xdotool search --classname trayer >/dev/null 2>&1; then
                    echo "    [${SECONDS}s] trayer's panel" >&2
                    sleep 0.3
                    return 0
                fi
                kill -0 "$host_pid" 2>/dev/null || break
                sleep 0.1
            done
            echo "trayer, try $attempt: $(tail -n3 "$work/trayer.log" | tr '\n' ' ')" >&2
            kill "$host_pid" 2>/dev/null || true
        done
        fail "timed out waiting for trayer's panel"
    else
        step "start a StatusNotifierItem host"
        mkfifo "$work/host-input"
        "$sni_host" <"$work/host-input" >"$work/sni-host.log" 2>&1 &
        host_pid=$!
        exec 7>"$work/host-input"
        wait_for "the watcher's name" grep -q watching "$work/sni-host.log"
    fi
}

# A desktop session's folders, all below WORK: HOME and the XDG folders in WORK/home, and the
# runtime folder; X11 through xcb and no desktop's own platform theme.
use_session_folders() {
    export HOME=$1/home XDG_CONFIG_HOME=$1/home/.config XDG_STATE_HOME=$1/home/.local/state
    export XDG_DATA_HOME=$1/home/.local/share XDG_CACHE_HOME=$1/home/.cache
    export XDG_RUNTIME_DIR=$1/runtime QT_QPA_PLATFORM=xcb
    unset WAYLAND_DISPLAY QT_QPA_PLATFORMTHEME XDG_CURRENT_DESKTOP
    settings=$XDG_CONFIG_HOME/Tolvane/Tolvane.conf
    log=$XDG_STATE_HOME/Tolvane/Tolvane.log
}

now_ms() { echo $(($(date +%s%N) / 1000000)); }

# `launcher`, when set, is a command that execs the program it is given (tray-icon-timer).
start_tolvane() {
    step "start $tolvane"
    local started
    started=$(now_ms)
    ${launcher[@]+"${launcher[@]}"} "$tolvane" >"$work/tolvane.log" 2>&1 &
    tolvane_pid=$!
    if [[ $tray == xembed ]]; then
        wait_for "the tray icon" tray_icon_window >/dev/null
    else
        wait_for "the item's registration" grep -q registered "$work/sni-host.log"
    fi
    echo "start to tray icon: $(($(now_ms) - started)) ms (polled)"
}

# "ID X Y WIDTH HEIGHT" for each viewable window of Tolvane.
tolvane_windows() {
    local id info
    for id in $(xdotool search --onlyvisible --pid "$tolvane_pid" 2>/dev/null); do
        info=$(xwininfo -id "$id")
        echo "$id $(awk '/Absolute upper-left X/{x=$NF} /Absolute upper-left Y/{y=$NF}
                        /Width:/{w=$NF} /Height:/{h=$NF} END{print x, y, w, h}' <<<"$info")"
    done
}

tray_icon_window() {
    tolvane_windows | awk '$4 <= 64 && $5 <= 64 && !found {print; found=1} END{exit !found}'
}

# The open menu, as "ID X Y WIDTH HEIGHT"; nothing when no menu is open.
menu_window() {
    tolvane_windows | awk '$4 >= 300 && $5 >= 200 && !found {print; found=1} END{exit !found}'
}

# The alert is the one window before any menu that is larger than a tray icon.
alert_window() {
    tolvane_windows | awk '$4 > 100 && $5 > 80 && !found {print $1; found=1} END{exit !found}'
}

dismiss_alert_with_later() {
    step "answer the input access alert with Later"
    local alert
    wait_for "the alert" alert_window
    alert=$(alert_window)
    shot alert >/dev/null
    xdotool windowfocus --sync "$alert" key --clearmodifiers Escape
    wait_for "the alert to close" bash -c "! xwininfo -id $alert 2>/dev/null | grep -q IsViewable"
}

find_tray_icon() {
    read -r icon_id icon_x icon_y icon_w icon_h < <(tray_icon_window)
    [[ -n ${icon_id:-} ]] || fail "no tray icon"
    echo "tray icon ${icon_w}x${icon_h} at $icon_x,$icon_y"
}

expect_no_embedded_icon() {
    ! tray_icon_window >/dev/null || fail "an XEmbed icon although a StatusNotifierItem host runs"
}

# xdotool's own --sync waits for a motion event, which never comes when the pointer is already
# there.
pointer_to() {
    xdotool mousemove "$1" "$2"
    sleep 0.2
}

wait_for_menu() {
    wait_for "the menu" menu_window >/dev/null
    read -r menu_id menu_x menu_y menu_w menu_h < <(menu_window)
}

open_menu_by_click() {
    pointer_to $((icon_x + icon_w / 2)) $((icon_y + icon_h / 2))
    xdotool click "$1"
    wait_for_menu
}

# A panel with a StatusNotifierItem host calls Activate on a left click and ContextMenu on a
# right click, with the pointer where the user clicked.
open_menu_through_host() {
    pointer_to 900 300
    echo "$1 900 300" >&7
    wait_for_menu
    local dx=$((menu_x - 900)) dy=$((menu_y - 300))
    [[ ${dx#-} -le 350 && ${dy#-} -le 400 ]] || fail "menu at $menu_x,$menu_y, far from the pointer"
}

open_menu() {
    if [[ $tray == xembed ]]; then open_menu_by_click 1; else open_menu_through_host activate; fi
}

close_menu() {
    xdotool key --clearmodifiers Escape
    expect_menu_closed
}

expect_menu_closed() {
    wait_for "the menu to close" bash -c "! menu_window_exists"
}
menu_window_exists() { menu_window >/dev/null; }
export -f menu_window_exists menu_window tolvane_windows
export tolvane_pid

# Keyboard choice of the n-th item counted from the bottom (1 is Quit), with the pointer off
# the menu so that no item is under it.
choose_item_from_bottom() {
    pointer_to 5 795
    local n
    for n in $(seq "$1"); do
        xdotool key --clearmodifiers Up
    done
    sleep 0.2
    xdotool key --clearmodifiers Return
}

# Quit Tolvane from its menu; it must end, and with status 0.
quit_from_menu() {
    step "quit from the menu"
    open_menu
    choose_item_from_bottom 1
    wait_for "the process to end" bash -c "! kill -0 $tolvane_pid 2>/dev/null"
    local code=0
    wait "$tolvane_pid" || code=$?
    [[ $code -eq 0 ]] || fail "tolvane ended with status $code"
    tolvane_pid=
}

# Pixels of FILE darker than a third of full brightness: text on a light panel.
count_dark() {
    convert "$1" +repage -alpha off -colorspace gray -threshold 33% -negate \
        -format '%[fx:round(mean*w*h)]' info:
}

# Pixels of FILE within FUZZ percent of COLOUR, which must not be black.
count_colour() {
    convert "$1" +repage -alpha off -fuzz "$3%" -fill black +opaque "$2" -fill white \
        -opaque "$2" -colorspace gray -format '%[fx:round(mean*w*h)]' info:
}

snap_icon() {
    local file="$work/$1.png"
    sleep 0.3
    import -window root -crop "${icon_w}x${icon_h}+${icon_x}+${icon_y}" +repage "$file"
    echo "$file"
}

# The rows are drawn: the header's blue badge, the three gauges in their own colours, text.
check_menu_rows() {
    step "check the open menu's rows"
    sleep 1 # the first sample, and the rings' 0.6 s ease
    local root menu
    root=$(shot "$1-screen")
    menu="$work/$1.png"
    convert "$root" -crop "${menu_w}x${menu_h}+${menu_x}+${menu_y}" +repage "$menu"
    echo "menu ${menu_w}x${menu_h} at $menu_x,$menu_y"
    [[ $menu_w -ge 300 && $menu_h -ge 300 ]] || fail "menu too small: ${menu_w}x${menu_h}"
    local badge cpu memory storage ink
    badge=$(count_colour "$menu" 'rgb(59,91,255)' 10)
    cpu=$(count_colour "$menu" 'rgb(110,112,255)' 12)
    memory=$(count_colour "$menu" 'rgb(47,203,147)' 15)
    storage=$(count_colour "$menu" 'rgb(247,136,54)' 15)
    ink=$(count_dark "$menu")
    echo "pixels: badge $badge, cpu $cpu, memory $memory, storage $storage, text $ink"
    [[ $badge -ge 30 ]] || fail "no header badge"
    [[ $cpu -ge 10 ]] || fail "no CPU ring"
    [[ $memory -ge 10 ]] || fail "no memory ring"
    [[ $storage -ge 10 ]] || fail "no storage ring"
    [[ $ink -ge 500 ]] || fail "too little text"
}

on_exit() {
    local status=$?
    if [[ $status -ne 0 ]]; then
        shot failure >/dev/null
        echo "--- tolvane's output:" >&2
        tail -n 40 "$work/tolvane.log" >&2 2>/dev/null || true
        cp "$log" "$work/Tolvane.log" 2>/dev/null || true
    fi
    if [[ -n ${tolvane_pid:-} ]] && kill -0 "$tolvane_pid" 2>/dev/null; then
        kill "$tolvane_pid" 2>/dev/null || true
        sleep 0.5
        kill -9 "$tolvane_pid" 2>/dev/null || true
    fi
    if [[ -n ${host_pid:-} ]]; then
        kill "$host_pid" 2>/dev/null || true
    fi
    exit $status
}
