#!/bin/bash
# Boots the test kernel with the wheel benchmark and prints its "wheel:" lines (see
# wheel-latency.cpp): the floor (wheel-floor), Tolvane's input layer as the service runs it
# (tolvane-wheel), Debian's interception-tools (`interception -g`, Debian's name for
# `intercept`, piped through negate-wheel into `uinput -d`), and Tolvane again with 8 and 32
# mice plugged. Then Debian's udevd starts, as desktops run it, and the floor and Tolvane run
# again (labels ending in -udevd): Tolvane then follows udevd's announcements, not the folder.
#
#   run-wheel-bench.sh BIN_DIR WORK_DIR [FRAMES] [ROUNDS] [IDLE_SECONDS]
#
# After the last round each subject stays idle with its mice held, IDLE_SECONDS (default 10)
# to settle and IDLE_SECONDS more over which its wake-ups are counted.
# BIN_DIR holds the programs built from bench/wheel. interception-tools and the libyaml-cpp it
# needs are downloaded once with apt-get into the kernel cache, never installed; their
# binaries, Qt's and every shared library these load go into the initramfs.
set -eu

mkdir -p "$2"
bin=$(cd "$1" && pwd)
work=$(cd "$2" && pwd)
frames=${3:-10000}
rounds=${4:-20}
idle=${5:-10}
# shellcheck disable=SC2034 # the word guest-lib.sh's failure lines name
tier="wheel bench"
# shellcheck source=../../tests/kernel/guest-lib.sh
source "$(dirname "$0")/../../tests/kernel/guest-lib.sh"
tools=$cache/interception-tools
root=$work/initramfs

# The package apt names for the first dependency of interception-tools matching PATTERN.
dependency_of_interception_tools() {
    apt-cache depends interception-tools 2>/dev/null |
        sed -n "s/^ *Depends: \($1\)$/\1/p" | head -n 1
}

fetch_interception_tools() {
    [ -x "$tools/usr/bin/interception" ] && [ -x "$tools/usr/bin/uinput" ] && return
    echo "fetching interception-tools into $tools"
    local tmp yaml deb
    tmp=$(mktemp -d "$cache/fetch.XXXXXX")
    yaml=$(dependency_of_interception_tools 'libyaml-cpp[0-9.]*')
    if [ -z "$yaml" ]; then
        apt-get update -q >"$work/apt.log" 2>&1 || true
        yaml=$(dependency_of_interception_tools 'libyaml-cpp[0-9.]*')
    fi
    [ -n "$yaml" ] || fail "interception-tools is not known to apt"
    (cd "$tmp" && apt-get download -q interception-tools "$yaml" >"$work/download.log" 2>&1) ||
        fail "cannot download interception-tools (see $work/download.log)"
    for deb in "$tmp"/*.deb; do
        dpkg-deb -x "$deb" "$tmp/root"
    done
    rm -rf "$tools"
    mv "$tmp/root" "$tools"
    rm -rf "$tmp"
}

build_root() {
    local program
    start_guest_root "$root"
    for program in wheel-latency wheel-floor negate-wheel tolvane-wheel; do
        [ -x "$bin/$program" ] || fail "no $bin/$program: build the bench targets first"
        add_dynamic "$root" "$bin/$program" "/bin/$program"
    done
    add_udevd "$root"
    for program in interception uinput; do
        LD_LIBRARY_PATH="$tools/usr/lib/x86_64-linux-gnu" \
            add_dynamic "$root" "$tools/usr/bin/$program" "/opt/interception/$program"
    done
}

prepare_guest
(
    flock 8
    fetch_interception_tools
) 8>"${cache%/}.lock"
build_root
boot_guest "$root" 768 900 "/bin/wheel-latency $frames $rounds $idle \\
    'floor 1 same exec /bin/wheel-floor \"\$BENCH_DEVICE\"' \\
    'tolvane 1 negated exec /bin/tolvane-wheel' \\
    'interception-tools 1 negated /opt/interception/interception -g \"\$BENCH_DEVICE\" | /bin/negate-wheel | /opt/interception/uinput -d \"\$BENCH_DEVICE\"' \\
    'tolvane 8 negated exec /bin/tolvane-wheel' \\
    'tolvane 32 negated exec /bin/tolvane-wheel' && $start_udevd &&
    /bin/wheel-latency $frames $rounds $idle \\
    'floor-udevd 1 same exec /bin/wheel-floor \"\$BENCH_DEVICE\"' \\
    'tolvane-udevd 1 negated exec /bin/tolvane-wheel'"
grep '^wheel:' "$work/guest.txt" || fail "the guest printed no figures (see $work/guest.txt)"
result=$(guest_result) || exit 1
[ "$result" = 0 ] || fail "not every frame came through (exit $result, see $work/guest.txt)"
