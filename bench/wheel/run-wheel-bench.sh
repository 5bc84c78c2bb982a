#!/bin/bash
# Boots the test kernel with the wheel benchmark and prints its "wheel:" lines (see
# wheel-latency.cpp): the floor (wheel-floor), Tolvane's input layer on a plain poll loop
# (tolvane-wheel) and on Qt's loop as the application runs it (tolvane-wheel-qt), Debian's
# interception-tools (`interception -g`, Debian's name for `intercept`, piped through
# negate-wheel into `uinput -d`), and Tolvane on Qt's loop again with 8 and 32 mice plugged.
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
rounds=${4:-5}
idle=${5:-10}
cache=${TOLVANE_KERNEL_CACHE:-$HOME/.cache/tolvane-kernel}
# shellcheck disable=SC2034 # the word that starts guest-lib.sh's failure lines
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

# Copies a dynamically linked program to DIR in the guest with the loader and every library
# it loads, the downloaded ones first.
copy_with_libraries() {
    local program=$1 dir=$2 lib
    mkdir -p "$root$dir" "$root/lib64" "$root/lib/x86_64-linux-gnu"
    cp "$program" "$root$dir/"
    for lib in $(LD_LIBRARY_PATH="$tools/usr/lib/x86_64-linux-gnu" ldd "$program" |
        awk '$2 == "=>" && $3 ~ /^\// {print $3} $1 ~ /^\/lib64\// {print $1}'); do
        case $lib in
        /lib64/*) cp -L "$lib" "$root/lib64/" ;;
        *) cp -L "$lib" "$root/lib/x86_64-linux-gnu/" ;;
        esac
    done
}

build_initramfs() {
    start_guest_root "$root"
    local program
    for program in wheel-latency wheel-floor negate-wheel tolvane-wheel; do
        [ -x "$bin/$program" ] || fail "no $bin/$program: build the bench targets first"
        cp "$bin/$program" "$root/bin/"
    done
    copy_with_libraries "$bin/tolvane-wheel-qt" /bin
    copy_with_libraries "$tools/usr/bin/interception" /opt/interception
    copy_with_libraries "$tools/usr/bin/uinput" /opt/interception
    write_init "$root" "/bin/wheel-latency $frames $rounds $idle \\
    'floor 1 same exec /bin/wheel-floor \"\$BENCH_DEVICE\"' \\
    'tolvane 1 negated exec /bin/tolvane-wheel' \\
    'tolvane-qt 1 negated exec /bin/tolvane-wheel-qt' \\
    'interception-tools 1 negated /opt/interception/interception -g \"\$BENCH_DEVICE\" | /bin/negate-wheel | /opt/interception/uinput -d \"\$BENCH_DEVICE\"' \\
    'tolvane-qt 8 negated exec /bin/tolvane-wheel-qt' \\
    'tolvane-qt 32 negated exec /bin/tolvane-wheel-qt'
echo \"TOLVANE-GUEST: result \$?\""
    (cd "$root" && find . | cpio -o -H newc -R 0:0 --quiet | gzip -1 >"$work/initramfs.cpio.gz")
}

exec 9>"$work/.lock"
flock 9
prepare_guest
(
    flock 8
    fetch_interception_tools
) 8>"${cache%/}.lock"
build_initramfs
boot_guest "$work/initramfs.cpio.gz" 768 900
grep '^wheel:' "$work/guest.txt" || fail "the guest printed no figures (see $work/guest.txt)"
result=$(sed -n 's/.*TOLVANE-GUEST: result \([0-9]*\)$/\1/p' "$work/guest.txt")
[ "$result" = 0 ] || fail "not every frame came through (exit ${result:-none}, see $work/guest.txt)"
