#!/bin/bash
# Boots the test kernel with the kernel tier's test program and leaves the guest's log, from
# which each case shows in ctest as a test of its own (--case). So this step fails only when
# the guest ended without running its cases to the end.
#
#   run-kernel-tests.sh TEST_PROGRAM WORK_DIR BUS_POLICY [PROGRAM...]
#   run-kernel-tests.sh --case GUEST_LOG SUITE.NAME   (prints the case's lines; fails unless OK)
#
# The PROGRAMs go to /bin in the guest for the cases that start them. Debian's udevd runs there,
# as on every desktop, and a system bus of the guest's own with BUS_POLICY. TOLVANE_KERNEL_FILTER,
# when set, is the test program's --gtest_filter (for work on a single case).
set -eu

if [ "$1" = --case ]; then
    sed -n "/RUN      \] $3\$/,/\] $3 (/p" "$2"
    exec grep -q "OK \] $3 (" "$2"
fi
program=$1
work=$2
policy=$3
shift 3
tier=kernel
# shellcheck source=guest-lib.sh
source "$(dirname "$0")/guest-lib.sh"

prepare_guest
start_guest_root "$work/root"
for file in "$program" "$@"; do
    add_dynamic "$work/root" "$file" "/bin/${file##*/}"
done
add_udevd "$work/root"
[ -f "$policy" ] || fail "no bus policy for the input service at $policy"
add_system_bus "$work/root" "$policy"
boot_guest "$work/root" 512 150 "$start_udevd && $start_system_bus && /bin/${program##*/} \
--gtest_color=no --gtest_filter='${TOLVANE_KERNEL_FILTER:-*}'"
grep -E '^(\[|figure:)' "$work/guest.txt" || true
result=$(guest_result) || exit 1
[ "$result" = 0 ] || grep -q '^\[  FAILED  \]' "$work/guest.txt" ||
    fail "the test program ended with status $result and no failed case"
