#!/bin/bash
# Boots a stock Debian kernel under qemu with a tiny initramfs that runs the kernel-tier test
# program against real evdev and uinput, and leaves the guest's log for the per-test checks.
#
#   run-kernel-tests.sh TEST_PROGRAM WORK_DIR [PROGRAM...]
#
# The further programs, linked statically like the test program, go to /bin in the guest for
# the cases that start them (the wheel benchmark's floor and Tolvane's wheel program).
# The kernel (vmlinux, config, evdev.ko, uinput.ko) is cached outside the source tree in
# $TOLVANE_KERNEL_CACHE (default ~/.cache/tolvane-kernel). Missing host tools are installed
# with apt-get. Any failure ends with one line that says why. TOLVANE_KERNEL_FILTER, when set,
# is handed to the test program as its --gtest_filter (for work on a single case).
set -eu

program=$1
work=$2
shift 2
cache=${TOLVANE_KERNEL_CACHE:-$HOME/.cache/tolvane-kernel}
tier=kernel
# shellcheck source=guest-lib.sh
source "$(dirname "$0")/guest-lib.sh"

build_initramfs() {
    local root=$work/initramfs
    start_guest_root "$root"
    cp "$program" "$root/bin/tolvane-kernel-tests"
    local extra
    for extra in "$@"; do
        cp "$extra" "$root/bin/"
    done
    # shellcheck disable=SC2016 # expanded by the guest's shell
    write_init "$root" '/bin/tolvane-kernel-tests --gtest_color=no --gtest_filter="$(cat /filter)"
echo "TOLVANE-GUEST: result $?"'
    echo "${TOLVANE_KERNEL_FILTER:-*}" >"$root/filter"
    (cd "$root" && find . | cpio -o -H newc -R 0:0 --quiet | gzip -1 >"$work/initramfs.cpio.gz")
}

mkdir -p "$work"
exec 9>"$work/.lock"
flock 9
prepare_guest
build_initramfs "$@"
boot_guest "$work/initramfs.cpio.gz" 512 150
grep -E '^\[|^TOLVANE-|^figure:' "$work/guest.txt" || true
result=$(sed -n 's/.*TOLVANE-GUEST: result \([0-9]*\)$/\1/p' "$work/guest.txt")
[ -n "$result" ] || fail "the guest ended without a result line (see $work/guest.log)"
[ "$result" = 0 ] || fail "guest tests failed (exit $result)"
